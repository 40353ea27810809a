#include "platform/linux/ProcProcesses.h"
#include "tests/support/Pty.h"
#include "tests/support/TestFiles.h"

#include <QDir>
#include <QFile>
#include <QTemporaryDir>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <unistd.h>

namespace tavril {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

/// A /proc of the test's own.
class ProcProcessesTest : public testing::Test {
 protected:
  ProcProcessesTest() {
    writeFile(path(QStringLiteral("tty")), {});
    writeFile(path(QStringLiteral("other")), {});
    add(QStringLiteral("345"), "bash", {path(QStringLiteral("other")), QStringLiteral("socket:[17]")});
    add(QStringLiteral("12"), "ModemManager", {tty_});
    add(QStringLiteral("self"), "never", {tty_});
  }

  QString path(const QString &name) const { return folder_.filePath(name); }
  void add(const QString &id, const QByteArray &name, const QStringList &open) const {
    const QString process = QStringLiteral("proc/") + id;
    EXPECT_TRUE(QDir(folder_.path()).mkpath(process + QStringLiteral("/fd")));
    EXPECT_TRUE(QDir(folder_.path()).mkpath(process + QStringLiteral("/fdinfo")));
    writeFile(path(process + QStringLiteral("/comm")), name + '\n');
    for (qsizetype i = 0; i < open.size(); ++i) {
      EXPECT_TRUE(QFile::link(open[i], path(process + QStringLiteral("/fd/%1").arg(i))));
    }
  }
  ProcProcesses processes() const { return ProcProcesses(path(QStringLiteral("proc"))); }

  QTemporaryDir folder_;
  QString tty_ = path(QStringLiteral("tty"));
};

TEST_F(ProcProcessesTest, NamesWhoHasTheFileOpen) {
  EXPECT_THAT(processes().holding(tty_), ElementsAre(RunningProcess{12, QStringLiteral("ModemManager")}));
  EXPECT_EQ(processes().holding(tty_).front().label(), QStringLiteral("ModemManager (12)"));
  EXPECT_THAT(processes().holding(path(QStringLiteral("nothing"))), IsEmpty());
}

TEST_F(ProcProcessesTest, SeesThroughALink) {
  ASSERT_TRUE(QFile::link(tty_, path(QStringLiteral("by-id"))));
  EXPECT_THAT(processes().holding(path(QStringLiteral("by-id"))),
              ElementsAre(RunningProcess{12, QStringLiteral("ModemManager")}));
}

TEST_F(ProcProcessesTest, FindsProgramsByTheirNames) {
  EXPECT_THAT(processes().named({QStringLiteral("brltty"), QStringLiteral("ModemManager")}),
              ElementsAre(RunningProcess{12, QStringLiteral("ModemManager")}));
  EXPECT_THAT(processes().named({QStringLiteral("brltty")}), IsEmpty());
}

TEST_F(ProcProcessesTest, DoesNotLetAProgramsNameSteerTheTerminal) {
  add(QStringLiteral("9"), "\x1b[2Jx", {tty_});
  EXPECT_EQ(processes().holding(tty_).front().name, QStringLiteral("?[2Jx"));
}

TEST(ProcProcesses, DoesNotCountWhoServesTheOtherEndOfAPseudoTerminal) {
  const Pty served;
  const Pty other;
  EXPECT_THAT(ProcProcesses().holding(served.path()), IsEmpty());
  // This program has the end that it serves open in the first place only.
  const int again = ::open(served.path().toLocal8Bit().constData(), O_RDWR | O_NOCTTY | O_CLOEXEC);
  EXPECT_THAT(ProcProcesses().holding(served.path()), IsEmpty());
  ::close(again);
  EXPECT_EQ(ProcProcesses().own(), ::getpid());
}

TEST(ProcProcesses, SeesThisProgram) {
  const QTemporaryDir folder;
  QFile file(folder.filePath(QStringLiteral("open")));
  ASSERT_TRUE(file.open(QIODevice::WriteOnly));
  const auto holders = ProcProcesses().holding(file.fileName());
  ASSERT_EQ(holders.size(), 1U);
  EXPECT_EQ(holders.front().id, ::getpid());
  EXPECT_EQ(ProcProcesses().seesAll(), ::geteuid() == 0);
}

}  // namespace
}  // namespace tavril
