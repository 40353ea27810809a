#pragma once

#include "platform/Error.h"
#include "serial/SerialPort.h"
#include "serial/SerialPortDelegate.h"

#include <QStringList>

#include <functional>
#include <memory>
#include <set>
#include <utility>
#include <vector>

namespace tavril {

/// Notes every callback as a word, in order. Used on the test's own thread only, but for respondsTo().
class RecordingDelegate final : public SerialPortDelegate {
 public:
  explicit RecordingDelegate(std::set<SerialPortCallback> leftOut = {}) : leftOut_(std::move(leftOut)) {}

  bool respondsTo(SerialPortCallback callback) const override { return !leftOut_.contains(callback); }

  void serialPortWasRemovedFromSystem(const Port &port) override { note(QStringLiteral("removed"), port); }
  void didReceiveData(const Port &port, const QByteArray &bytes) override {
    received += bytes;
    deliveries.push_back(bytes);
    if (atEvent) atEvent(QStringLiteral("data"), port);
  }
  void didReceiveResponse(const Port &port, const QByteArray &bytes,
                          const std::shared_ptr<SerialRequest> &request) override {
    responses.emplace_back(request, bytes);
    note(QStringLiteral("response"), port);
  }
  void requestDidTimeout(const Port &port, const std::shared_ptr<SerialRequest> &request) override {
    timeouts.push_back(request);
    note(QStringLiteral("timeout"), port);
  }
  void didEncounterError(const Port &port, const Error &error) override {
    errors.push_back(error);
    note(QStringLiteral("error ") + QString::number(error.code), port);
  }
  void serialPortWasOpened(const Port &port) override { note(QStringLiteral("opened"), port); }
  void serialPortWasClosed(const Port &port) override { note(QStringLiteral("closed"), port); }

  QStringList events;
  std::vector<Error> errors;
  QByteArray received;
  std::vector<QByteArray> deliveries;
  std::vector<std::pair<std::shared_ptr<SerialRequest>, QByteArray>> responses;
  std::vector<std::shared_ptr<SerialRequest>> timeouts;
  std::function<void(const QString &event, const Port &port)> atEvent;

 private:
  void note(const QString &event, const Port &port) {
    events.append(event);
    if (atEvent) atEvent(event, port);
  }

  const std::set<SerialPortCallback> leftOut_;
};

}  // namespace tavril
