#pragma once

#include "platform/TerminalCalls.h"
#include "serial/Semaphore.h"

#include <QByteArray>

#include <functional>
#include <memory>

namespace tavril {

class LineSession;

/// What the threads of an opening see of their port. They hold it weakly but for one round at a time.
class PortLine {
 public:
  virtual ~PortLine() = default;

  /// Makes the call with the open descriptor, which is not closed meanwhile; EBADF when there is none.
  virtual CallResult withDescriptor(const std::function<CallResult(int)> &call) const = 0;
  /// Held while somebody waits for input, and while the port is closed.
  virtual Semaphore &selectSemaphore() = 0;
  /// `place` is kept until the bytes have been told, or dropped.
  virtual void receiveData(const QByteArray &bytes, const std::shared_ptr<void> &place) = 0;
  virtual void showPins(int pins) = 0;
  virtual void notifyDelegateOfPosixError(int error, bool waitUntilDone = false,
                                          const std::shared_ptr<void> &place = nullptr) = 0;
  /// Tells the delegate, waiting until it has heard, unless somebody has told it already or the port was
  /// opened anew; and closes the port unless the session has ended by then.
  virtual void deviceHasGone(const std::shared_ptr<LineSession> &session) = 0;
};

}  // namespace tavril
