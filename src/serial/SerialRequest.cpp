#include "serial/SerialRequest.h"

#include <QUuid>

#include <utility>

namespace tavril {

namespace {

/// What the caller's tag says of itself, as far as its type is one that can.
QString text(const std::any &tag) {
  if (!tag.has_value()) return QStringLiteral("(null)");
  if (const auto *string = std::any_cast<QString>(&tag)) return *string;
  if (const auto *string = std::any_cast<const char *>(&tag)) return QString::fromUtf8(*string);
  if (const auto *number = std::any_cast<int>(&tag)) return QString::number(*number);
  return QStringLiteral("(object)");
}

}  // namespace

std::shared_ptr<SerialRequest> SerialRequest::requestWithDataToSend(QByteArray dataToSend, std::any userInfo,
                                                                    double timeoutInterval_s,
                                                                    ResponseEvaluator responseEvaluator) {
  return std::make_shared<SerialRequest>(std::move(dataToSend), std::move(userInfo), timeoutInterval_s,
                                         std::move(responseEvaluator));
}

SerialRequest::SerialRequest(QByteArray dataToSend, std::any userInfo, double timeoutInterval_s,
                             ResponseEvaluator responseEvaluator)
    : dataToSend_(std::move(dataToSend)),
      userInfo_(std::move(userInfo)),
      timeoutInterval_s_(timeoutInterval_s),
      responseEvaluator_(std::move(responseEvaluator)),
      UUIDString_(QUuid::createUuid().toString(QUuid::WithoutBraces).toUpper()) {}

bool SerialRequest::dataIsValidResponse(const QByteArray &bytes) const {
  return !responseEvaluator_ || responseEvaluator_(bytes);
}

QString SerialRequest::description() const {
  return QStringLiteral("<SerialRequest> data: <%1> userInfo: %2 timeout interval: %3")
      .arg(QString::fromLatin1(dataToSend_.toHex()), text(userInfo_),
           QString::number(timeoutInterval_s_, 'f', 6));
}

}  // namespace tavril
