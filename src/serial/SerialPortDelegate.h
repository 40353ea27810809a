#pragma once

#include <QByteArray>

#include <memory>

namespace tavril {

class SerialPort;
class SerialRequest;
struct Error;

/// The callbacks that a delegate may leave out.
enum class SerialPortCallback {
  DidReceiveData,
  DidReceiveResponse,
  RequestDidTimeout,
  DidEncounterError,
  WasOpened,
  WasClosed,
};

/// Hears everything that happens to a port. All callbacks come on the main thread.
class SerialPortDelegate {
 public:
  using Port = std::shared_ptr<SerialPort>;

  virtual ~SerialPortDelegate() = default;

  /// Whether this delegate wants the callback; asked each time, on any thread, so it must not change state.
  /// Where it says no the port also leaves out what belongs to the callback.
  virtual bool respondsTo(SerialPortCallback callback) const = 0;

  /// The device is gone. The port closes itself once this returns.
  virtual void serialPortWasRemovedFromSystem(const Port &port) = 0;

  /// What one read brought, at most 1024 bytes.
  virtual void didReceiveData(const Port &, const QByteArray &) {}
  virtual void didReceiveResponse(const Port &, const QByteArray &, const std::shared_ptr<SerialRequest> &) {}
  virtual void requestDidTimeout(const Port &, const std::shared_ptr<SerialRequest> &) {}
  virtual void didEncounterError(const Port &, const Error &) {}
  virtual void serialPortWasOpened(const Port &) {}
  virtual void serialPortWasClosed(const Port &) {}
};

}  // namespace tavril
