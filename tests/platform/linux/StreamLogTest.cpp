#include "platform/linux/StreamLog.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <thread>

namespace tavril {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

class StreamLogTest : public testing::Test {
 protected:
  StreamLogTest() {
    qunsetenv("TAVRIL_LOG");
    QLoggingCategory::setFilterRules({});
    lines_.clear();
    previous_ =
        qInstallMessageHandler([](QtMsgType type, const QMessageLogContext &context, const QString &text) {
          const std::lock_guard lock(mutex_);
          if (type == QtDebugMsg && QByteArray(context.category) == "tavril") lines_.push_back(text);
        });
  }
  ~StreamLogTest() override {
    qInstallMessageHandler(previous_);
    qunsetenv("TAVRIL_LOG");
    QLoggingCategory::setFilterRules({});
  }

  static inline std::mutex mutex_;
  static inline std::vector<QString> lines_;
  QtMessageHandler previous_ = nullptr;
};

TEST_F(StreamLogTest, IsSilentByDefault) {
  StreamLog log;
  log.write(QStringLiteral("line"));
  EXPECT_THAT(lines_, IsEmpty());
}

TEST_F(StreamLogTest, WritesWhenTheEnvironmentSaysSo) {
  qputenv("TAVRIL_LOG", "1");
  StreamLog log;
  log.write(QStringLiteral("CMD=%s \u4f3a"));
  EXPECT_THAT(lines_, ElementsAre(QStringLiteral("CMD=%s \u4f3a")));
}

TEST_F(StreamLogTest, StaysSilentWhenTheEnvironmentSaysZero) {
  qputenv("TAVRIL_LOG", "0");
  StreamLog log;
  log.write(QStringLiteral("line"));
  EXPECT_THAT(lines_, IsEmpty());
}

TEST_F(StreamLogTest, WritesWhenTheLoggingRulesSaySo) {
  QLoggingCategory::setFilterRules(QStringLiteral("tavril.debug=true"));
  StreamLog log;
  log.write(QStringLiteral("line"));
  EXPECT_THAT(lines_, ElementsAre(QStringLiteral("line")));
}

TEST_F(StreamLogTest, EscapesControlCharactersSoThatANameCannotSteerTheTerminal) {
  EXPECT_EQ(StreamLog::printable(QStringLiteral("tty\u001b[2J\r\u0007\u007f\u009b\u2028")),
            QStringLiteral("tty\\u001b[2J\\u000d\\u0007\\u007f\\u009b\\u2028"));
  EXPECT_EQ(StreamLog::printable(QStringLiteral("a\tb \u4f3a")), QStringLiteral("a\tb \u4f3a"));
}

TEST_F(StreamLogTest, IndentsLaterLinesSoThatNoneOfThemPassesForAnEntry) {
  EXPECT_EQ(StreamLog::printable(QStringLiteral("ports:\nusb\ntavril: fake")),
            QStringLiteral("ports:\n    usb\n    tavril: fake"));
}

TEST_F(StreamLogTest, TakesLinesFromManyThreads) {
  qputenv("TAVRIL_LOG", "1");
  StreamLog log;
  std::vector<std::thread> threads;
  for (int thread = 0; thread < 4; ++thread) {
    threads.emplace_back([&log] {
      for (int line = 0; line < 100; ++line) log.write(QStringLiteral("line"));
    });
  }
  for (std::thread &thread : threads) thread.join();
  EXPECT_EQ(lines_.size(), 400U);
}

}  // namespace
}  // namespace tavril
