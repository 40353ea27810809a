#include "platform/linux/ProgramLog.h"
#include "tests/support/SyslogSocket.h"

#include <QLoggingCategory>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <memory>
#include <mutex>
#include <vector>

namespace tavril {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

class ProgramLogTest : public testing::Test {
 protected:
  ProgramLogTest() {
    qunsetenv("TAVRIL_LOG");
    QLoggingCategory::setFilterRules({});
    printed_.clear();
    previous_ = qInstallMessageHandler([](QtMsgType, const QMessageLogContext &context, const QString &text) {
      const std::lock_guard lock(mutex_);
      if (QByteArray(context.category) == "tavril") printed_.push_back(text);
    });
  }
  ~ProgramLogTest() override {
    qInstallMessageHandler(previous_);
    qunsetenv("TAVRIL_LOG");
    QLoggingCategory::setFilterRules({});
  }

  /// A trace and an error, in a log that has ended.
  void writeBoth() {
    ProgramLog log("tavrilctl", socket.path());
    isEnabled = log.isEnabled();
    log.write(QStringLiteral("trace"));
    log.warn(QStringLiteral("error"));
  }

  SyslogSocket socket;
  bool isEnabled = false;
  static inline std::mutex mutex_;
  static inline std::vector<QString> printed_;
  QtMessageHandler previous_ = nullptr;
};

TEST_F(ProgramLogTest, GoesToTheSystemsLogAndNotToTheTerminal) {
  writeBoth();
  EXPECT_TRUE(isEnabled);
  EXPECT_EQ(socket.pendingTexts(), (QByteArrayList{"<15>tavrilctl: trace", "<12>tavrilctl: error"}));
  EXPECT_THAT(printed_, IsEmpty());
}

TEST_F(ProgramLogTest, GoesToBothWhenTheEnvironmentSaysOne) {
  qputenv("TAVRIL_LOG", "1");
  writeBoth();
  EXPECT_TRUE(isEnabled);
  EXPECT_EQ(socket.pendingTexts(), (QByteArrayList{"<15>tavrilctl: trace", "<12>tavrilctl: error"}));
  EXPECT_THAT(printed_, ElementsAre(QStringLiteral("trace"), QStringLiteral("error")));
}

TEST_F(ProgramLogTest, GoesNowhereWhenTheEnvironmentSaysZero) {
  qputenv("TAVRIL_LOG", "0");
  QLoggingCategory::setFilterRules(QStringLiteral("tavril.debug=true"));
  writeBoth();
  EXPECT_FALSE(isEnabled);
  EXPECT_THAT(socket.pendingTexts(), IsEmpty());
  EXPECT_THAT(printed_, IsEmpty());
}

TEST_F(ProgramLogTest, AnEmptyWishIsNone) {
  qputenv("TAVRIL_LOG", "");
  writeBoth();
  EXPECT_EQ(socket.pendingTexts().size(), 2);
  EXPECT_THAT(printed_, IsEmpty());
}

}  // namespace
}  // namespace tavril
