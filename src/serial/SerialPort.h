#pragma once

#include "platform/DeviceRegistry.h"
#include "platform/KeyValueObservers.h"
#include "serial/DelegateCalls.h"
#include "serial/LineControl.h"
#include "serial/PortIdentity.h"
#include "serial/SerialPortDelegate.h"

#include <QByteArray>
#include <QSet>
#include <QString>

#include <atomic>
#include <functional>
#include <memory>
#include <mutex>
#include <optional>
#include <shared_mutex>
#include <thread>
#include <utility>
#include <vector>

namespace tavril {

class LineSession;
class PortRequests;
class SerialRequest;
struct DeliveryRule;
struct SerialEnvironment;

/// One serial device: opens it, reads it on a background thread, watches its pins, writes to it and reports
/// everything to one delegate on the main thread. Its bases say which device it is, and keep the settings of
/// its line. There is one live object for each path, as far as the name begins with "usb".
///
/// open(), close() and the setters belong to the main thread; close() may also come from the pin poller when
/// the device is gone. Operations return false on failure and tell the delegate why.
class SerialPort final : public PortIdentity,
                         public LineControl,
                         public std::enable_shared_from_this<SerialPort> {
  struct Token {};
  using ToldOnce = std::atomic<bool>;

 public:
  using Ptr = std::shared_ptr<SerialPort>;

  /// The port of the device whose call-out or dial-in node is at this path; nothing when there is none.
  static Ptr initWithPath(const SerialEnvironment &environment, const QString &path);
  static Ptr serialPortWithPath(const SerialEnvironment &environment, const QString &path);
  /// The port of the device: the live one of the same path, or a new one. Nothing for device 0.
  static Ptr initWithDevice(const SerialEnvironment &environment, RegistryHandle device);
  static Ptr serialPortWithDevice(const SerialEnvironment &environment, RegistryHandle device);
  /// Reports the misuse to the log and yields nothing: a port needs a path.
  static Ptr init(const SerialEnvironment &environment);

  /// The properties whose change also changes this one.
  static QSet<QString> keyPathsForValuesAffectingValueForKey(const QString &key);

  SerialPort(Token, const SerialEnvironment &environment, RegistryHandle device, const QString &path);
  ~SerialPort() override;
  SerialPort(const SerialPort &) = delete;
  SerialPort &operator=(const SerialPort &) = delete;

  /// The delegate is not owned. Thread-safe.
  std::shared_ptr<SerialPortDelegate> delegate() const { return delegate_.delegate(); }
  void setDelegate(std::weak_ptr<SerialPortDelegate> delegate) { delegate_.setDelegate(std::move(delegate)); }
  /// The delegate, if it wants this callback now. Thread-safe.
  std::shared_ptr<SerialPortDelegate> whoHears(SerialPortCallback callback) const {
    return delegate_.whoHears(callback);
  }

  /// True when the port is open afterwards. Waits for a closing on another thread to give up its descriptor,
  /// and tells the delegate of that closing first if it has not heard yet.
  bool open();
  /// True when the port is closed afterwards, at once when it was.
  bool close();
  bool isOpen() const { return fileDescriptor_ != 0; }
  /// Writes all bytes, blocking. False when closed or when a write failed. Thread-safe.
  bool sendData(const QByteArray &bytes);
  /// Tells the delegate that the device is gone, then closes.
  void cleanupAfterSystemRemoval();
  /// Deprecated; logs a warning and does what cleanupAfterSystemRemoval() does. Kept: C53.
  void cleanup();
  /// For whoever watches the devices. This port's device has come, maybe as another one at the same path.
  void deviceWasPublished(RegistryHandle device);
  /// It has gone: as cleanupAfterSystemRemoval(), but a delegate that has heard of this removal from the pin
  /// poller is not told again, and a port that was opened anew since then stays open.
  void deviceWasTerminated();

  /// Says what becomes one delivery; none, the default, makes every read one. Acts from the next opening on,
  /// and also on what requests are given. Thread-safe.
  std::shared_ptr<const DeliveryRule> deliveryRule() const;
  void setDeliveryRule(std::shared_ptr<const DeliveryRule> rule);

  /// Sends the request, or has it wait behind those that were sent before it. Waits until the bytes are
  /// written; must not be called on the request queue, as from a request's evaluator. False when sending
  /// failed: the request is pending all the same. Thread-safe. The delegate hears of its response or
  /// time-out.
  bool sendRequest(const std::shared_ptr<SerialRequest> &request);
  /// The request whose response is awaited, or nothing. Setting it only stores it: nothing is sent.
  /// Thread-safe.
  std::shared_ptr<SerialRequest> pendingRequest() const;
  void setPendingRequest(std::shared_ptr<SerialRequest> request);
  /// A copy of the requests that wait to be sent. Its observers are told on the request queue. Thread-safe.
  std::vector<std::shared_ptr<SerialRequest>> queuedRequests() const;

  /// Observes a property by name, such as "isOpen", "CTS" or "queuedRequests".
  [[nodiscard]] KeyValueObservers::Token observe(const QString &key, KeyValueObservers::Handler handler);

 private:
  CallResult withDescriptor(const std::function<CallResult(int)> &call) const override;
  Semaphore &selectSemaphore() override { return selectSemaphore_; }
  void receiveData(const QByteArray &bytes, const BackpressureSlot &slot) override;
  void notifyDelegateOfPosixError(int error, bool waitUntilDone = false,
                                  const BackpressureSlot &slot = nullptr) override;
  void deviceHasGone(const std::shared_ptr<LineSession> &session) override;
  void whileClosed(const std::function<void()> &change) override;
  void pinChanged(const QString &key) override { changed(key); }

  void setFileDescriptor(int descriptor);
  std::shared_ptr<LineSession> session() const;
  void setSession(std::shared_ptr<LineSession> session);
  void startLoops(const std::shared_ptr<LineSession> &running);
  bool closeSession(const std::shared_ptr<LineSession> &closing);
  CallResult giveUpDescriptor(const std::shared_ptr<ToldOnce> &closed);
  void awaitOlderClosing();
  void tellClosed(ToldOnce &closed);
  void tellRemoved();
  CallResult releaseDescriptor();
  void changed(const QString &key, const Change &change = {});

  const SerialEnvironment &environment_;

  DelegateCalls delegate_;

  mutable std::mutex mutex_;
  std::shared_ptr<const DeliveryRule> deliveryRule_;  // guarded by mutex_

  /// 0 means closed. Whoever uses the descriptor holds the guard shared; it is closed under the guard, so a
  /// number that the kernel hands out again is never taken for ours.
  std::atomic<int> fileDescriptor_ = 0;
  mutable std::shared_mutex descriptorGuard_;
  std::shared_ptr<LineSession> session_;      // guarded by mutex_
  std::weak_ptr<LineSession> latestSession_;  // also when it has ended; main thread only
  Semaphore selectSemaphore_{1};              // held by the read loop while it waits, and by close()

  /// Held from the moment in which the port counts as closed until its descriptor is given up.
  std::mutex givingUp_;
  std::atomic<std::thread::id> givesUp_;    // who holds it
  std::shared_ptr<ToldOnce> closedToTell_;  // by the last closing; guarded by mutex_

  /// A removal that the pin poller has told and the registry has yet to tell of. Main thread only.
  struct PolledRemoval {
    std::weak_ptr<SerialPortDelegate> heardBy;
    std::weak_ptr<LineSession> session;
  };
  std::optional<PolledRemoval> polledRemoval_;

  KeyValueObservers observers_;
  const std::unique_ptr<PortRequests> requests_;
};

}  // namespace tavril
