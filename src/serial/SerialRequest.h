#pragma once

#include <QByteArray>
#include <QString>

#include <any>
#include <functional>
#include <memory>

namespace tavril {

/// Whether these bytes are a complete, valid response. Called on the port's request queue, with everything
/// that was received since the request was sent; must not throw, send a request or wait for the main thread.
using ResponseEvaluator = std::function<bool(const QByteArray &)>;

/// A block of bytes to send, with a rule that recognises its response and a time-out. Immutable, so that
/// threads may share it; the last one to let go of it destroys what `userInfo` holds.
class SerialRequest {
 public:
  /// `timeoutInterval_s`: 0 or less means none. Without an evaluator any response will do, also an empty one.
  static std::shared_ptr<SerialRequest> requestWithDataToSend(QByteArray dataToSend, std::any userInfo,
                                                              double timeoutInterval_s,
                                                              ResponseEvaluator responseEvaluator);
  SerialRequest(QByteArray dataToSend, std::any userInfo, double timeoutInterval_s,
                ResponseEvaluator responseEvaluator);

  const QByteArray &dataToSend() const { return dataToSend_; }
  /// The caller's own, carried unchanged.
  const std::any &userInfo() const { return userInfo_; }
  /// In seconds.
  double timeoutInterval() const { return timeoutInterval_s_; }
  /// Unique to this request: RFC 4122, upper-case hexadecimal digits with hyphens.
  const QString &UUIDString() const { return UUIDString_; }
  const ResponseEvaluator &responseEvaluator() const { return responseEvaluator_; }

  bool dataIsValidResponse(const QByteArray &bytes) const;
  QString description() const;

 private:
  const QByteArray dataToSend_;
  const std::any userInfo_;
  const double timeoutInterval_s_;
  const ResponseEvaluator responseEvaluator_;
  const QString UUIDString_;
};

}  // namespace tavril
