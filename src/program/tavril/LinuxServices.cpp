#include "program/tavril/LinuxServices.h"

#include "platform/Log.h"
#include "platform/ModalAlert.h"
#include "platform/linux/QtModalAlert.h"

#include <QLocale>
#include <QString>

#include <memory>

namespace tavril {

namespace {

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

}  // namespace

LinuxServices::LinuxServices(bool interactive)
    : blockingWait(paintPendingWidgets),
      alert(interactive ? std::unique_ptr<ModalAlert>(std::make_unique<QtModalAlert>(mainQueue))
                        : std::make_unique<LoggingAlert>(log)),
      terminal(linesTo(log), anyThreadPause(mainQueue, blockingWait)) {}

AppServices LinuxServices::services() {
  return {log,
          mainQueue,
          timers,
          blockingWait,
          *alert,
          strings,
          QLocale().uiLanguages(),
          files,
          preferences,
          &userNotifications,
          terminal,
          devices,
          bus,
          nodes,
          processes};
}

}  // namespace tavril
