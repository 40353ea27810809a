#include "platform/linux/SystemLog.h"
#include "tests/support/SyslogSocket.h"
#include "tests/support/WaitFor.h"

#include <gtest/gtest.h>

#include <memory>
#include <thread>
#include <vector>

namespace tavril {
namespace {

QString line(int number) {
  return QStringLiteral("line %1").arg(number);
}

QByteArray textOf(int number) {
  return "<15>tavril: line " + QByteArray::number(number);
}

/// The number in "<12>tavril: Lines lost here: 7."; 0 in any other message.
int lossIn(const QByteArray &text) {
  const QByteArray head = "<12>tavril: Lines lost here: ";
  if (!text.startsWith(head) || !text.endsWith('.')) return 0;
  return text.sliced(head.size()).chopped(1).toInt();
}

/// Numbered lines from 0 on, as they come out: each must have been received or told as lost before the next.
struct Ledger {
  int received = 0;
  int lost = 0;

  bool take(const QByteArray &text) {
    if (const int loss = lossIn(text)) {
      lost += loss;
      return true;
    }
    if (text != textOf(received + lost)) return false;
    ++received;
    return true;
  }
};

class SystemLogTest : public testing::Test {
 protected:
  SyslogSocket socket;
  std::unique_ptr<SystemLog> log = std::make_unique<SystemLog>("tavril", socket.path());
};

TEST(SystemLogMessage, HasPriorityTimeIdentifierAndProcess) {
  qputenv("TZ", "UTC");
  ::tzset();
  EXPECT_EQ(
      SystemLog::message(SystemLog::Severity::Debug, 1'793'509'387, "tavril", 42, QStringLiteral("CMD=ff 4")),
      "<15>Nov  1 05:03:07 tavril[42]: CMD=ff 4");
  EXPECT_EQ(
      SystemLog::message(SystemLog::Severity::Warning, 951'782'399, "tavrilctl", 1, QStringLiteral("\u4f3a")),
      "<12>Feb 28 23:59:59 tavrilctl[1]: \xE4\xBC\xBA");
}

TEST_F(SystemLogTest, SendsTracesAsDebugMessagesAndErrorsAsWarnings) {
  log->write(QStringLiteral("CMD=%s ff"));
  log->warn(QStringLiteral("the port is gone"));
  EXPECT_EQ(socket.receiveText(), "<15>tavril: CMD=%s ff");
  EXPECT_EQ(socket.receiveText(), "<12>tavril: the port is gone");
}

TEST_F(SystemLogTest, NamesTheProcess) {
  log->write(line(1));
  const QByteArray message = socket.receive();
  EXPECT_TRUE(message.contains(" tavril[" + QByteArray::number(::getpid()) + "]: ")) << message.toStdString();
}

TEST_F(SystemLogTest, SendsEachLineOfAnEntryByItself) {
  log->write(QStringLiteral("\nInitServo=a\n\n<3>tavril: fake\u001b"));
  EXPECT_EQ(socket.receiveText(), "<15>tavril:     InitServo=a");
  EXPECT_EQ(socket.receiveText(), "<15>tavril:     <3>tavril: fake\\u001b")
      << "it does not pass for a message";
}

TEST_F(SystemLogTest, CutsALineThatIsTooLong) {
  log->write(QString(SystemLog::longestLine + 1, u'x'));
  EXPECT_EQ(socket.receiveText(), "<15>tavril: " + QByteArray(SystemLog::longestLine, 'x'));
}

TEST_F(SystemLogTest, SendsWhatWaitsBeforeItEnds) {
  for (int i = 0; i < 5; ++i) log->write(line(i));
  log.reset();
  EXPECT_EQ(socket.pendingTexts(), (QByteArrayList{textOf(0), textOf(1), textOf(2), textOf(3), textOf(4)}));
}

TEST_F(SystemLogTest, NeverWaitsForAServiceThatDoesNotRead) {
  // Far more than the socket and the log can hold.
  constexpr int count = 100'000;
  for (int i = 0; i < count; ++i) log->write(line(i));
  log.reset();  // comes back
  const QByteArrayList texts = socket.pendingTexts();
  ASSERT_FALSE(texts.isEmpty());
  Ledger ledger;
  for (const QByteArray &text : texts) ASSERT_TRUE(ledger.take(text)) << text.toStdString();
  EXPECT_LT(ledger.received, count);
}

TEST_F(SystemLogTest, TellsHowManyLinesWereLostAndWhere) {
  constexpr int count = 20'000;
  int next = 0;
  while (next < count) log->write(line(next++));
  // From here on one line is added for each message that is taken.
  Ledger ledger;
  while (ledger.received + ledger.lost <= count) {
    log->write(line(next++));
    const QByteArray text = socket.receiveText();
    ASSERT_TRUE(ledger.take(text)) << text.toStdString();
  }
  EXPECT_GT(ledger.lost, 0);
}

TEST_F(SystemLogTest, GoesOnWhenTheServiceComesBackAndTellsWhatWasLostMeanwhile) {
  Ledger ledger;
  int next = 0;
  // It depends on the threads whether a line meets the service that is away.
  ASSERT_TRUE(waitFor([&] {
    socket.close();
    log->write(line(next++));
    std::this_thread::yield();
    socket.open();
    log->write(line(next++));
    while (ledger.received + ledger.lost < next) {
      if (!ledger.take(socket.receiveText())) return true;
    }
    return ledger.lost > 0;
  }));
  EXPECT_GT(ledger.lost, 0) << "or a message was not what the ledger expected";
  EXPECT_EQ(ledger.received + ledger.lost, next);
}

TEST(SystemLogWithoutAService, LosesWhatIsWrittenAndEnds) {
  const QTemporaryDir folder;
  SystemLog log("tavril", (folder.path() + QStringLiteral("/log")).toLocal8Bit());
  for (int i = 0; i < 10; ++i) log.write(line(i));
  EXPECT_TRUE(log.isEnabled());
}

TEST_F(SystemLogTest, TakesLinesFromManyThreads) {
  std::vector<std::thread> threads;
  for (int thread = 0; thread < 4; ++thread) {
    threads.emplace_back([this] {
      for (int i = 0; i < 100; ++i) log->write(line(0));
    });
  }
  for (int i = 0; i < 400; ++i) ASSERT_EQ(socket.receiveText(), textOf(0)) << i;
  for (std::thread &thread : threads) thread.join();
}

}  // namespace
}  // namespace tavril
