// Every command with a full disk, with readers that have gone or do not read, and with devices and pipes in
// the place of files.
#include "tests/cli/CtlProgram.h"
#include "tests/support/Pty.h"
#include "tests/support/TestFiles.h"

#include <QDir>
#include <QFile>
#include <QTemporaryDir>

#include <gtest/gtest.h>

#include <sys/stat.h>

namespace tavril {
namespace {

/// Runs a shell script in a folder of its own, with the program as "$0" and the folder as the current one.
Program::Outcome sh(const QTemporaryDir &folder, const QString &script) {
  Program program(QStringLiteral("/bin/bash"),
                  {QStringLiteral("-c"), QStringLiteral("cd '%1'; %2").arg(folder.path(), script),
                   QStringLiteral(TAVRILCTL_PROGRAM)});
  return program.outcome();
}

void writeSettings(const QTemporaryDir &folder, const char *name, const char *kp) {
  writeFile(folder.filePath(QString::fromLatin1(name)),
            QByteArray("{\"format\": \"tavril-servo-settings\", \"version\": 1, \"settings\": {\"kp\": ") +
                kp + "}}");
}

struct Printing {
  const char *name;
  const char *arguments;
};

std::ostream &operator<<(std::ostream &out, const Printing &printing) {
  return out << printing.arguments;
}

/// Whatever prints data.
class EveryCommand : public testing::TestWithParam<Printing> {
 protected:
  EveryCommand() {
    writeSettings(folder_, "a.json", "5");
    writeSettings(folder_, "b.json", "6");
    QFile script(folder_.filePath(QStringLiteral("script")));
    EXPECT_TRUE(script.open(QIODevice::WriteOnly));
    script.write("read kp\n");
  }
  QString command() const {
    return QStringLiteral("\"$0\" %1 --demo --timeout 60000").arg(QString::fromLatin1(GetParam().arguments));
  }
  QTemporaryDir folder_;
};

TEST_P(EveryCommand, SaysThatTheDiskIsFull) {
  const Program::Outcome outcome = sh(folder_, command() + QStringLiteral(" >/dev/full"));
  EXPECT_EQ(outcome.status, 6);
  EXPECT_NE(outcome.err.find("the output could not be written: No space left on device."), std::string::npos)
      << outcome.err;
}

TEST_P(EveryCommand, EndsQuietlyWhenItsReaderHasGone) {
  // The pipe has a reader only until it is open.
  const Program::Outcome outcome =
      sh(folder_, QStringLiteral("mkfifo pipe; exec 3<>pipe; exec 4>pipe; exec 3>&-; %1 >&4").arg(command()));
  EXPECT_EQ(outcome.status, 141) << outcome.err;
  // All there is to say is what has become of values.
  EXPECT_TRUE(outcome.err.find("tavrilctl: ") == std::string::npos || outcome.err.find(": changed, ") < 20)
      << outcome.err;
}

TEST_P(EveryCommand, EndsAtCtrlCAlsoWhenItsReaderDoesNotRead) {
  // A pipe that is full, and whose reader reads nothing. When the second is over, the command waits for it.
  const Program::Outcome outcome =
      sh(folder_,
         QStringLiteral("mkfifo pipe; exec 3<>pipe; dd if=/dev/zero of=pipe bs=65536 count=1 2>/dev/null; "
                        "timeout --preserve-status -s INT 1 %1 >&3")
             .arg(command()));
  EXPECT_EQ(outcome.status, 130) << outcome.err;
}

INSTANTIATE_TEST_SUITE_P(Tavrilctl, EveryCommand,
                         testing::Values(Printing{"Ports", "ports"}, Printing{"Doctor", "doctor"},
                                         Printing{"Detect", "detect"}, Printing{"Read", "read"},
                                         Printing{"Write", "write kp=441"}, Printing{"SetId", "set-id 4"},
                                         Printing{"Dump", "dump -"}, Printing{"Restore", "restore a.json"},
                                         Printing{"Diff", "diff a.json"},
                                         Printing{"DiffOfFiles", "diff a.json b.json"},
                                         Printing{"Position", "position"},
                                         Printing{"Move", "move 520 --wait"}, Printing{"Stop", "stop"},
                                         Printing{"Monitor", "monitor --count 1"},
                                         Printing{"MonitorCsv", "monitor --csv - --count 1"},
                                         Printing{"MonitorJson", "monitor --json --count 1"},
                                         Printing{"Send", "send FF0490FE"}, Printing{"Run", "run script"}),
                         [](const auto &parameter) { return std::string(parameter.param.name); });

/// Whatever writes a file or reads one. %1 stands for the file.
class EveryFile : public testing::TestWithParam<Printing> {
 protected:
  QString command(const char *file) const {
    return QStringLiteral("\"$0\" ") +
           QString::fromLatin1(GetParam().arguments).arg(QString::fromLatin1(file)) +
           QStringLiteral(" --demo --timeout 60000");
  }
  QTemporaryDir folder_;
};

using WrittenFile = EveryFile;
using ReadFile = EveryFile;

TEST_P(WrittenFile, IsNeverADeviceOrAPipe) {
  const Pty terminal;
  ASSERT_TRUE(QFile::link(terminal.path(), folder_.filePath(QStringLiteral("terminal"))));
  ASSERT_EQ(::mkfifo(qPrintable(folder_.filePath(QStringLiteral("pipe"))), 0600), 0);
  for (const char *file : {"pipe", "terminal", "/dev/full", "/dev/null"}) {
    const Program::Outcome outcome = sh(folder_, command(file));
    EXPECT_EQ(outcome.status, 6) << file << outcome.err;
    EXPECT_NE(outcome.err.find("is not a regular file, so it was left as it is"), std::string::npos)
        << outcome.err;
  }
  EXPECT_TRUE(QFileInfo(folder_.filePath(QStringLiteral("terminal"))).isSymLink());
  struct stat status {};
  ASSERT_EQ(::stat(qPrintable(folder_.filePath(QStringLiteral("pipe"))), &status), 0);
  EXPECT_TRUE(S_ISFIFO(status.st_mode));
  ASSERT_EQ(::stat("/dev/null", &status), 0);
  EXPECT_TRUE(S_ISCHR(status.st_mode));
}

// The limit would also stop what the thread sanitizer writes.
#if !defined(TAVRIL_SANITIZES_THREAD)
TEST_P(WrittenFile, MayFillTheDisk) {
  QFile old(folder_.filePath(QStringLiteral("old")));
  ASSERT_TRUE(old.open(QIODevice::WriteOnly));
  old.close();
  // No file of the program may have even one byte.
  const Program::Outcome outcome = sh(folder_, QStringLiteral("ulimit -f 0; ") + command("old"));
  EXPECT_EQ(outcome.status, 6) << outcome.err;
  EXPECT_NE(outcome.err.find("old could not be written: File too large."), std::string::npos) << outcome.err;
  EXPECT_EQ(QDir(folder_.path()).entryList(QDir::Files | QDir::Hidden), QStringList{QStringLiteral("old")});
}
#endif

INSTANTIATE_TEST_SUITE_P(Tavrilctl, WrittenFile,
                         testing::Values(Printing{"Dump", "dump %1 --force"},
                                         Printing{"Monitor", "monitor --count 1 --force --csv %1"}),
                         [](const auto &parameter) { return std::string(parameter.param.name); });

TEST_P(ReadFile, IsNeverADeviceOrAPipe) {
  ASSERT_EQ(::mkfifo(qPrintable(folder_.filePath(QStringLiteral("pipe"))), 0600), 0);
  for (const char *file : {"pipe", "/dev/zero", "/dev/null", "."}) {
    const Program::Outcome outcome = sh(folder_, command(file));
    EXPECT_EQ(outcome.status, 6) << file << outcome.err;
    EXPECT_NE(outcome.err.find("is not a regular file, so it was not read"), std::string::npos)
        << outcome.err;
  }
}

TEST_P(ReadFile, MayBeTheStandardInput) {
  for (const char *input : {"</dev/null", "<&-", "</dev/zero"}) {
    const Program::Outcome outcome = sh(folder_, command("-") + u' ' + QString::fromLatin1(input));
    const bool isScript = std::string(GetParam().name) == "Run";
    // Nothing to carry out is no failure.
    if (isScript && std::string(input) == "</dev/null") {
      EXPECT_EQ(outcome.status, 0) << outcome.err;
    } else {
      // To a script it is one line that is too long.
      const int expected = isScript && std::string(input) == "</dev/zero" ? 2 : 6;
      EXPECT_EQ(outcome.status, expected) << input << outcome.err;
    }
  }
}

INSTANTIATE_TEST_SUITE_P(Tavrilctl, ReadFile,
                         testing::Values(Printing{"Restore", "restore %1"}, Printing{"Diff", "diff %1"},
                                         Printing{"Run", "run %1"}),
                         [](const auto &parameter) { return std::string(parameter.param.name); });

TEST(StandardInput, IsRead) {
  const QTemporaryDir folder;
  writeSettings(folder, "a.json", "500");
  const Program::Outcome outcome = sh(
      folder,
      QStringLiteral("\"$0\" restore - --demo --timeout 60000 <a.json; cat a.json | \"$0\" diff - a.json"));
  EXPECT_EQ(outcome.status, 0) << outcome.err;
  EXPECT_EQ(outcome.out, "kp: 440 -> 500\n");
}

TEST(ErrorsOfTavrilctl, HaveNoControlCharactersWhateverWasTyped) {
  const QTemporaryDir folder;
  for (const char *arguments :
       {"detect --port \"$name\"", "read \"$name\"", "write kp=\"$name\"", "\"$name\"", "detect \"--$name\"",
        "detect --timeout \"$name\"", "move \"$name\"", "restore \"$name\"", "dump \"/nowhere/$name\" --demo",
        "send \"$name\"", "run \"$name\"", "restore /dev/null --except \"$name\""}) {
    const Program::Outcome outcome = sh(
        folder, QStringLiteral("name=$(printf '/\\033[2J'); \"$0\" %1").arg(QString::fromLatin1(arguments)));
    EXPECT_GT(outcome.status, 1) << arguments;
    EXPECT_EQ(outcome.err.find('\x1b'), std::string::npos) << arguments << ": " << outcome.err;
    EXPECT_EQ(outcome.out, "") << arguments;
  }
}

TEST(FileNamesOfTavrilctl, MayHaveBytesThatAreNoText) {
  const QTemporaryDir folder;
  const Program::Outcome outcome =
      sh(folder,
         QStringLiteral(
             "name=$(printf 'a\\377\\033b'); \"$0\" dump \"$name\" --demo --timeout 60000 && "
             "test -f \"$name\" && \"$0\" dump \"$name\" --demo --timeout 60000; status=$?; rm \"$name\"; "
             "exit $status"));
  EXPECT_EQ(outcome.status, 6);
  EXPECT_EQ(outcome.err,
            "tavrilctl: a\\udcff\\u001bb already exists: name another file, or replace it with --force.\n");
}

}  // namespace
}  // namespace tavril
