#pragma once

#include <QStringList>
#include <QTimer>

namespace tavril::vm {

/// A user in front of real alerts: notes what each says and closes it with its first button, unless told to
/// leave it up. Looks on from outside the program's own timers, which an alert holds. Main thread only.
class Answerer {
 public:
  Answerer();

  /// The texts of the alerts so far, each once.
  QStringList seen;
  /// Leave alerts up until this is false again.
  bool leaveUp = false;
  /// An alert is up.
  bool alertIsUp() const;

 private:
  void look();

  QTimer timer_;
  const void *noted_ = nullptr;
};

}  // namespace tavril::vm
