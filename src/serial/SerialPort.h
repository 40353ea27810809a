#pragma once

#include "platform/DeviceRegistry.h"
#include "platform/KeyValueObservers.h"
#include "platform/NamedDevice.h"
#include "serial/LineSettings.h"
#include "serial/PortLine.h"
#include "serial/SerialPortDelegate.h"

#include <QByteArray>
#include <QSet>
#include <QString>

#include <atomic>
#include <cstdint>
#include <functional>
#include <memory>
#include <mutex>
#include <optional>
#include <shared_mutex>
#include <thread>
#include <vector>

namespace tavril {

class LineSession;
class PortRequests;
class SerialRequest;
struct DeliveryRule;
struct SerialEnvironment;

/// One serial device: opens it, applies the line settings, reads it on a background thread, watches its pins,
/// writes to it and reports everything to one delegate on the main thread. There is one live object for each
/// path, as far as the name begins with "usb".
///
/// open(), close() and the setters belong to the main thread; close() may also come from the pin poller when
/// the device is gone. Operations return false on failure and tell the delegate why.
class SerialPort final : public NamedDevice,
                         public std::enable_shared_from_this<SerialPort>,
                         private PortLine {
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

  /// The device with this call-out or dial-in path, owned by the caller; 0 when there is none.
  static RegistryHandle deviceFromBSDPath(const SerialEnvironment &environment, const QString &path);
  static QString stringPropertyOf(const SerialEnvironment &environment, RegistryHandle device,
                                  const QString &key);
  static QString bsdCalloutPathFromDevice(const SerialEnvironment &environment, RegistryHandle device);
  static QString bsdDialinPathFromDevice(const SerialEnvironment &environment, RegistryHandle device);
  static QString baseNameFromDevice(const SerialEnvironment &environment, RegistryHandle device);
  static QString serviceTypeFromDevice(const SerialEnvironment &environment, RegistryHandle device);
  static QString modemNameFromDevice(const SerialEnvironment &environment, RegistryHandle device);
  static QString suffixFromDevice(const SerialEnvironment &environment, RegistryHandle device);
  /// The properties whose change also changes this one.
  static QSet<QString> keyPathsForValuesAffectingValueForKey(const QString &key);

  SerialPort(Token, const SerialEnvironment &environment, RegistryHandle device, const QString &path);
  ~SerialPort() override;
  SerialPort(const SerialPort &) = delete;
  SerialPort &operator=(const SerialPort &) = delete;

  /// The delegate is not owned. Thread-safe.
  std::shared_ptr<SerialPortDelegate> delegate() const;
  void setDelegate(std::weak_ptr<SerialPortDelegate> delegate);

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

  QString path() const;
  void setPath(const QString &path);
  QString name() const override;
  void setName(const QString &name);
  RegistryHandle IOKitDevice() const;
  /// Releases the old handle and retains the new one.
  void setIOKitDevice(RegistryHandle device);
  QString description() const { return name(); }
  std::size_t hash() const;
  /// Ports of the same path are equal.
  bool isEqual(const SerialPort *other) const;

  /// Line settings; on an open port they act at once. Every setBaudRate() counts as a change.
  unsigned long baudRate() const { return settings_.baudRate; }
  void setBaudRate(unsigned long baudRate);
  bool allowsNonStandardBaudRates() const { return settings_.allowsNonStandardBaudRates; }
  void setAllowsNonStandardBaudRates(bool allow) { settings_.allowsNonStandardBaudRates = allow; }
  std::uint64_t numberOfStopBits() const { return settings_.numberOfStopBits; }
  void setNumberOfStopBits(std::uint64_t count);
  bool shouldEchoReceivedData() const { return settings_.shouldEchoReceivedData; }
  void setShouldEchoReceivedData(bool echo);
  std::uint64_t parity() const { return settings_.parity; }
  /// Any value that is no SerialPortParity counts as none.
  void setParity(std::uint64_t parity);

  /// Says what becomes one delivery; none, the default, makes every read one. Acts from the next opening on,
  /// and also on what requests are given. Thread-safe.
  std::shared_ptr<const DeliveryRule> deliveryRule() const;
  void setDeliveryRule(std::shared_ptr<const DeliveryRule> rule);
  /// Whether the driver is asked, at the next opening, to hand bytes over without delay. Drivers that know no
  /// such thing are no error. Closing puts back what was there before. False by default.
  bool usesLowLatency() const { return usesLowLatency_; }
  void setUsesLowLatency(bool use) { usesLowLatency_ = use; }

  /// Flow control; changing one closes an open port and opens it again.
  bool usesRTSCTSFlowControl() const { return settings_.flowControl.rtsCts; }
  void setUsesRTSCTSFlowControl(bool use);
  bool usesDTRDSRFlowControl() const { return settings_.flowControl.dtrDsr; }
  void setUsesDTRDSRFlowControl(bool use);
  bool usesDCDOutputFlowControl() const { return settings_.flowControl.dcdOutput; }
  void setUsesDCDOutputFlowControl(bool use);

  /// Output pins as the user wants them; on an open port they act at once.
  bool RTS() const { return RTS_; }
  void setRTS(bool on);
  bool DTR() const { return DTR_; }
  void setDTR(bool on);
  /// Input pins as last polled.
  bool CTS() const { return CTS_; }
  bool DSR() const { return DSR_; }
  bool DCD() const { return DCD_; }

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
  void receiveData(const QByteArray &bytes, const std::shared_ptr<void> &place) override;
  void showPins(int pins) override;
  void notifyDelegateOfPosixError(int error, bool waitUntilDone = false,
                                  const std::shared_ptr<void> &place = nullptr) override;
  void deviceHasGone(const std::shared_ptr<LineSession> &session) override;

  void setFileDescriptor(int descriptor);
  std::shared_ptr<LineSession> session() const;
  void setSession(std::shared_ptr<LineSession> session);
  CallResult openExclusively();
  void setPortOptions();
  void applyFlowControl(bool FlowControl::*kind, bool use);
  void drivePin(std::atomic<bool> &stored, int pin, bool on);
  void takeOverPins();
  void takeLowLatency();
  void keepOriginalAttributes();
  void startLoops(const std::shared_ptr<LineSession> &running);
  void showPin(std::atomic<bool> &stored, const QString &key, bool on);
  bool closeSession(const std::shared_ptr<LineSession> &closing);
  CallResult giveUpDescriptor(const std::shared_ptr<ToldOnce> &closed);
  void awaitOlderClosing();
  void tellClosed(ToldOnce &closed);
  void tellRemoved();
  void restoreLine(int descriptor);
  CallResult releaseDescriptor();

  bool delegateRespondsTo(SerialPortCallback callback) const;
  void onMainThreadAndWait(const std::function<void()> &job);
  void changed(const QString &key, const Change &change = {});

  const SerialEnvironment &environment_;

  mutable std::mutex identityMutex_;
  QString path_;
  QString name_;
  RegistryHandle IOKitDevice_ = 0;
  std::weak_ptr<SerialPortDelegate> delegate_;

  std::shared_ptr<const DeliveryRule> deliveryRule_;  // guarded by identityMutex_

  LineSettings settings_;
  bool usesLowLatency_ = false;
  std::atomic<bool> RTS_ = false;
  std::atomic<bool> DTR_ = false;
  std::atomic<bool> CTS_ = false;
  std::atomic<bool> DSR_ = false;
  std::atomic<bool> DCD_ = false;

  /// 0 means closed. Whoever uses the descriptor holds the guard shared; it is closed under the guard, so a
  /// number that the kernel hands out again is never taken for ours.
  std::atomic<int> fileDescriptor_ = 0;
  mutable std::shared_mutex descriptorGuard_;
  std::unique_ptr<termios> originalPortAttributes_;  // nothing when they could not be read
  bool hasTakenLowLatency_ = false;                  // and it was off before
  std::shared_ptr<LineSession> session_;             // guarded by identityMutex_
  std::weak_ptr<LineSession> latestSession_;         // also when it has ended; main thread only
  Semaphore selectSemaphore_{1};                     // held by the read loop while it waits, and by close()

  /// Held from the moment in which the port counts as closed until its descriptor is given up.
  std::mutex givingUp_;
  std::atomic<std::thread::id> givesUp_;    // who holds it
  std::shared_ptr<ToldOnce> closedToTell_;  // by the last closing; guarded by identityMutex_

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
