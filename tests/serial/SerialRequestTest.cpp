#include "serial/SerialRequest.h"

#include <QRegularExpression>
#include <QSet>

#include <gtest/gtest.h>

namespace tavril {
namespace {

std::shared_ptr<SerialRequest> request(const std::any &userInfo = {}, double timeout_s = 0,
                                       ResponseEvaluator evaluator = {}) {
  return SerialRequest::requestWithDataToSend(QByteArray::fromHex("FF0490FE"), userInfo, timeout_s,
                                              std::move(evaluator));
}

TEST(SerialRequest, KeepsWhatItIsMadeWith) {
  const auto tag = std::make_shared<int>(7);
  const auto made = request(tag, 2.5, [](const QByteArray &bytes) { return bytes == "ok"; });
  EXPECT_EQ(made->dataToSend(), QByteArray::fromHex("FF0490FE"));
  EXPECT_EQ(std::any_cast<std::shared_ptr<int>>(made->userInfo()), tag);
  EXPECT_EQ(made->timeoutInterval(), 2.5);
  EXPECT_TRUE(made->responseEvaluator()("ok"));
}

TEST(SerialRequest, HasAUuidOfItsOwnInUpperCaseHexadecimalWithHyphens) {
  const QRegularExpression form(
      QStringLiteral("^[0-9A-F]{8}-[0-9A-F]{4}-[1-8][0-9A-F]{3}-[89AB][0-9A-F]{3}-[0-9A-F]{12}$"));
  QSet<QString> seen;
  for (int i = 0; i < 200; ++i) {
    const QString uuid = request()->UUIDString();
    EXPECT_TRUE(form.match(uuid).hasMatch()) << uuid.toStdString();
    seen.insert(uuid);
  }
  EXPECT_EQ(seen.size(), 200);
}

TEST(SerialRequest, WithoutAnEvaluatorTakesAnythingForAResponse) {
  EXPECT_TRUE(request()->dataIsValidResponse("whatever"));
  EXPECT_TRUE(request()->dataIsValidResponse({}));
}

TEST(SerialRequest, LetsItsEvaluatorDecide) {
  const auto made = request({}, 0, [](const QByteArray &bytes) { return bytes.endsWith('!'); });
  EXPECT_TRUE(made->dataIsValidResponse("done!"));
  EXPECT_FALSE(made->dataIsValidResponse("done"));
  EXPECT_FALSE(made->dataIsValidResponse({}));
}

TEST(SerialRequest, KeepsACopyOfTheEvaluator) {
  ResponseEvaluator evaluator = [](const QByteArray &bytes) { return bytes == "first"; };
  const auto made = request({}, 0, evaluator);
  evaluator = [](const QByteArray &) { return false; };
  EXPECT_TRUE(made->dataIsValidResponse("first"));
}

TEST(SerialRequest, TheDescriptionOfARequestWithTimeOut1500msEndsInTheTimeOutWithSixDecimals) {
  EXPECT_TRUE(request({}, 1.5)->description().endsWith("timeout interval: 1.500000"));
}

TEST(SerialRequest, DescribesItself) {
  EXPECT_EQ(request(QStringLiteral("tag"), 0.25)->description(),
            "<SerialRequest> data: <ff0490fe> userInfo: tag timeout interval: 0.250000");
}

TEST(SerialRequest, DescribesTagsThatCanBeTold) {
  const auto tagOf = [](const std::any &userInfo) {
    return request(userInfo)->description().section(" userInfo: ", 1).section(" timeout", 0, 0);
  };
  EXPECT_EQ(tagOf({}), "(null)");
  EXPECT_EQ(tagOf(QStringLiteral("%1 %2")), "%1 %2") << "a text is not filled in again";
  EXPECT_EQ(tagOf("literal"), "literal");
  EXPECT_EQ(tagOf(-3), "-3");
  EXPECT_EQ(tagOf(std::make_shared<int>(1)), "(object)");
}

}  // namespace
}  // namespace tavril
