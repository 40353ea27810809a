// Completion scripts and manual page, as the program makes them and as their shells and man read them.
#include "cli/CommandLine.h"
#include "cli/RegisterFacts.h"
#include "tests/cli/CtlProgram.h"

#include <QFile>
#include <QTemporaryDir>

#include <gtest/gtest.h>

#include <regex>

namespace tavril::cli {
namespace {

QString generated(const char *kind) {
  CtlProgram program({QStringLiteral("--generate"), QString::fromLatin1(kind)});
  const Program::Outcome &outcome = program.outcome();
  EXPECT_EQ(outcome.status, 0) << outcome.err;
  EXPECT_EQ(outcome.err, "");
  return QString::fromStdString(outcome.out);
}

struct Script {
  explicit Script(const char *kind) : text(generated(kind)) {
    QFile file(path);
    EXPECT_TRUE(file.open(QIODevice::WriteOnly));
    file.write(text.toUtf8());
  }
  QTemporaryDir folder;
  QString path = folder.filePath(QStringLiteral("script"));
  QString text;
};

/// What the command prints, with an empty text for its errors.
std::string outputOf(const QString &command, const QStringList &arguments) {
  Program program(command, arguments);
  const Program::Outcome &outcome = program.outcome();
  EXPECT_EQ(outcome.status, 0) << command.toStdString() << ": " << outcome.err;
  EXPECT_EQ(outcome.err, "");
  return outcome.out;
}

void expectEverythingIn(const QString &text, const std::function<QString(const QString &)> &written) {
  const CommandBook book = CommandLine::book(QStringLiteral(TAVRIL_VERSION));
  const auto expectOptions = [&](const std::vector<OptionEntry> &options) {
    for (const OptionEntry &option : options) {
      for (const QString &name : option.names) {
        EXPECT_TRUE(text.contains(written(name))) << name.toStdString();
      }
    }
  };
  expectOptions(book.commonOptions);
  for (const CommandEntry &command : book.commands) {
    const QString inTroff = QString(command.name).replace(u'-', QStringLiteral("\\-"));
    EXPECT_TRUE(text.contains(command.name) || text.contains(inTroff)) << command.name.toStdString();
    expectOptions(command.options);
  }
  for (const wire::Register &row : wire::registers) EXPECT_TRUE(text.contains(keyOf(row)));
}

QString asItIs(const QString &name) {
  return name;
}

/// What bash would offer behind these words.
QStringList offered(const Script &script, const QString &words) {
  const QString line =
      QStringLiteral(
          "shopt -s extglob; . '%1'; COMP_WORDS=(%2); COMP_CWORD=$((${#COMP_WORDS[@]} - 1)); "
          "compopt() { :; }; named() { echo usbserial-ttyUSB7; }; _tavrilctl; printf '%s\\n' "
          "\"${COMPREPLY[@]}\"")
          .arg(script.path, words);
  return QString::fromStdString(outputOf(QStringLiteral("bash"), {QStringLiteral("-c"), line}))
      .split(u'\n', Qt::SkipEmptyParts);
}

TEST(BashCompletion, IsReadByBashAndHasEveryOption) {
  const Script script("bash");
  expectEverythingIn(script.text, asItIs);
  outputOf(QStringLiteral("bash"), {QStringLiteral("-n"), script.path});
}

TEST(BashCompletion, OffersCommandsOptionsAndRegisters) {
  const Script script("bash");
  EXPECT_EQ(offered(script, QStringLiteral("tavrilctl re")),
            (QStringList{QStringLiteral("read"), QStringLiteral("restore"), QStringLiteral("release"),
                         QStringLiteral("reboot"), QStringLiteral("reset")}));
  EXPECT_EQ(offered(script, QStringLiteral("tavrilctl --demo read k")),
            (QStringList{QStringLiteral("kp"), QStringLiteral("ki"), QStringLiteral("kd")}));
  EXPECT_EQ(offered(script, QStringLiteral("tavrilctl write kp")), QStringList{QStringLiteral("kp=")});
  EXPECT_EQ(offered(script, QStringLiteral("tavrilctl reset --y")), QStringList{QStringLiteral("--yes")});
  EXPECT_EQ(offered(script, QStringLiteral("tavrilctl --timeout ''")), QStringList());
}

TEST(ZshCompletion, IsReadByZshAndHasEveryOption) {
  const Script script("zsh");
  expectEverythingIn(script.text, asItIs);
  outputOf(QStringLiteral("zsh"), {QStringLiteral("-f"), QStringLiteral("-n"), script.path});
}

TEST(FishCompletion, IsReadByFishAndHasEveryOption) {
  const Script script("fish");
  expectEverythingIn(script.text, [](const QString &name) {
    return name.startsWith(u"--") ? QStringLiteral("-l ") + name.mid(2) : QStringLiteral("-s ") + name.mid(1);
  });
  outputOf(QStringLiteral("fish"), {QStringLiteral("-n"), script.path});
}

TEST(FishCompletion, OffersCommandsAndRegisters) {
  const Script script("fish");
  const auto completed = [&](const char *line) {
    return outputOf(
        QStringLiteral("fish"),
        {QStringLiteral("-N"), QStringLiteral("-c"),
         QStringLiteral("source '%1'; complete -C '%2'").arg(script.path, QString::fromLatin1(line))});
  };
  EXPECT_EQ(completed("tavrilctl rel"), "release\tSwitch the torque off.\n");
  EXPECT_EQ(completed("tavrilctl read max_l"), "max_load\n");
  EXPECT_EQ(completed("tavrilctl write sid"), "sid=\n");
}

TEST(Document, HasEveryCommandEveryOptionAndTheListOfRegisters) {
  QFile file(QStringLiteral(TAVRILCTL_DOCUMENT));
  ASSERT_TRUE(file.open(QIODevice::ReadOnly));
  const QString text = QString::fromUtf8(file.readAll());
  const auto expectNames = [&](const OptionEntry &option) {
    for (const QString &name : option.names) {
      // A short one is also the beginning or the end of many other words.
      const QString asWritten = name.startsWith(u"--") ? name : u'`' + name + u'`';
      EXPECT_TRUE(text.contains(asWritten) || (!option.value.isEmpty() && text.contains(u'`' + name + u' ')))
          << name.toStdString();
    }
  };
  EXPECT_TRUE(text.contains(generated("registers"))) << generated("registers").toStdString();
  const CommandBook book = CommandLine::book(QStringLiteral(TAVRIL_VERSION));
  for (const CommandEntry &command : book.commands) {
    EXPECT_TRUE(text.contains(u'`' + command.name)) << command.name.toStdString();
    for (const OptionEntry &option : command.options) {
      expectNames(option);
    }
  }
  for (const OptionEntry &option : book.commonOptions) expectNames(option);
}

TEST(BashCompletion, OffersNoRegisterTwiceAndThePorts) {
  const Script script("bash");
  EXPECT_EQ(offered(script, QStringLiteral("tavrilctl read kp k")),
            (QStringList{QStringLiteral("ki"), QStringLiteral("kd")}));
  EXPECT_EQ(offered(script, QStringLiteral("tavrilctl write kp=5 k")),
            (QStringList{QStringLiteral("ki="), QStringLiteral("kd=")}));
  EXPECT_EQ(offered(script, QStringLiteral("tavrilctl restore f --except si")),
            QStringList{QStringLiteral("sid")});
  // Whatever "ports --names" prints is offered.
  EXPECT_EQ(offered(script, QStringLiteral("named --port usbserial-tty")),
            QStringList{QStringLiteral("usbserial-ttyUSB7")});
}

TEST(FishCompletion, OffersNoRegisterTwice) {
  const Script script("fish");
  EXPECT_EQ(outputOf(QStringLiteral("fish"),
                     {QStringLiteral("-N"), QStringLiteral("-c"),
                      QStringLiteral("source '%1'; complete -C 'tavrilctl write kp=5 k'").arg(script.path)}),
            "kd=\nki=\n");
}

TEST(ManPage, IsReadByManWithoutAWordOfWarningAndHasEveryOption) {
  const Script script("man");
  expectEverythingIn(script.text, [](QString name) { return name.replace(u'-', QStringLiteral("\\-")); });
  const std::string printed = outputOf(
      QStringLiteral("man"), {QStringLiteral("--warnings"), QStringLiteral("-E"), QStringLiteral("UTF-8"),
                              QStringLiteral("-l"), QStringLiteral("-Tutf8"), script.path});
  // Without the backspaces by which a letter is printed on top of itself, or what a newer groff makes bold
  // with.
  const std::string shown = std::regex_replace(printed, std::regex(".\b|\x1b\\[[0-9;]*m"), "");
  EXPECT_NE(shown.find("--boot-wait"), std::string::npos) << shown;
  for (const char *heading : {"EXIT STATUS", "WRITING", "SEVERAL COMMANDS", "JSON", "FILES"}) {
    EXPECT_NE(shown.find(std::string("\n") + heading + "\n"), std::string::npos) << heading;
  }
  const std::string inOneLine = std::regex_replace(shown, std::regex("\\s+"), " ");
  EXPECT_NE(inOneLine.find("default of the virtual servo: 440"), std::string::npos) << shown;
  EXPECT_NE(shown.find("tavrilctl write kp=440 over_load=300ms"), std::string::npos);
}

}  // namespace
}  // namespace tavril::cli
