#pragma once

#include "platform/Log.h"
#include "platform/ModalAlert.h"

#include <QString>

namespace tavril {

/// The alert of a program without a screen. It is written to the log and answered with the first button.
class LoggingAlert final : public ModalAlert {
 public:
  explicit LoggingAlert(Log &log) : log_(log) {}

  int run(const AlertContent &content) override {
    log_.write(QStringLiteral("Alert: %1 / %2").arg(content.messageText, content.informativeText));
    return firstButton;
  }

 private:
  Log &log_;
};

}  // namespace tavril
