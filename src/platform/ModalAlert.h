#pragma once

#include <QString>
#include <QStringList>

namespace tavril {

/// What an alert shows, as plain text. Without buttons it has one, "OK".
struct AlertContent {
  QString messageText;
  QString informativeText;
  QStringList buttons;
};

/// A modal alert. Until it is answered, no queued job and no timer runs.
class ModalAlert {
 public:
  static constexpr int firstButton = 1000;
  static constexpr int secondButton = 1001;

  virtual ~ModalAlert() = default;

  /// Shows the alert and waits for the answer: 1000 for the first button, 1001 for the second, and so on.
  virtual int run(const AlertContent &content) = 0;
};

}  // namespace tavril
