#include "doctor/Heard.h"
#include "doctor/ResultTexts.h"
#include "doctor/ShellWord.h"
#include "tests/support/KeyTable.h"

#include <QSet>

#include <gtest/gtest.h>

namespace tavril::doctor {
namespace {

TEST(Filled, PutsTheValuesInTheirPlaces) {
  const QStringList values{QStringLiteral("a"), QStringLiteral("b")};
  EXPECT_EQ(filled(QStringLiteral("%2$@ before %1$@"), values), QStringLiteral("b before a"));
  EXPECT_EQ(filled(QStringLiteral("100 % and %3$@."), values), QStringLiteral("100 % and ."));
  EXPECT_EQ(filled(QStringLiteral("%1$"), values), QStringLiteral("%1$"));
}

TEST(Filled, TakesNoValueForAPlace) {
  EXPECT_EQ(filled(QStringLiteral("%1$@ %2$@"), {QStringLiteral("%2$@"), QStringLiteral("b")}),
            QStringLiteral("%2$@ b"));
}

TEST(ResultTexts, AreThoseOfTheTable) {
  const Result result{CheckId::Node,
                      State::Failed,
                      QStringLiteral("none"),
                      {QStringLiteral("x")},
                      QStringLiteral("replug"),
                      {}};
  const KeyTable table({{QStringLiteral("none"), QStringLiteral("no %1$@")}});
  const ResultTexts texts = ResultTexts::of(result, table);
  EXPECT_EQ(texts.title, QStringLiteral("[doctor_check_node]"));
  EXPECT_EQ(texts.finding, QStringLiteral("no x"));
  EXPECT_EQ(texts.advice, QStringLiteral("[replug]"));
}

TEST(Names, OfTheChecksAreAllDifferent) {
  QSet<QString> names;
  for (const CheckId check : allChecks) names.insert(nameOf(check));
  EXPECT_EQ(names.size(), static_cast<qsizetype>(allChecks.size()));
}

TEST(ShellWord, IsQuotedWhereItHasToBe) {
  EXPECT_EQ(shellWord(QStringLiteral("/dev/serial/by-id/usb-FTDI_FT232R-if00")),
            QStringLiteral("/dev/serial/by-id/usb-FTDI_FT232R-if00"));
  EXPECT_EQ(shellWord(QStringLiteral("a b")), QStringLiteral("'a b'"));
  EXPECT_EQ(shellWord(QStringLiteral("$(reboot)")), QStringLiteral("'$(reboot)'"));
  EXPECT_EQ(shellWord(QStringLiteral("it's; x")), QStringLiteral("'it'\\''s; x'"));
  EXPECT_EQ(shellWord(QStringLiteral("-x")), QStringLiteral("'-x'"));
  EXPECT_EQ(shellWord(QString()), QStringLiteral("''"));
}

TEST(Heard, TakesNoSlowBridgeForANoisyOne) {
  const QByteArray reply("\xFF\x05\x90\x01\xFE", 5);
  // It greets after it was asked, and the end of its second answer is not there yet.
  const Heard heard = Heard::in("Bridge 1.2 ready\r\n" + reply + reply.first(3));
  EXPECT_EQ(heard.noise, 0);
  EXPECT_TRUE(heard.isFrame && heard.isUnfinished);
  EXPECT_EQ(heard.servos, 1);
  for (qsizetype size = 1; size < reply.size(); ++size) {
    const Heard beginning = Heard::in(reply.first(size));
    EXPECT_TRUE(beginning.isUnfinished && !beginning.isFrame) << size;
    EXPECT_EQ(beginning.noise, 0) << size;
  }
  EXPECT_FALSE(Heard::in(QByteArray("\xFF\x06\x90\x01\xFE", 5)).isUnfinished);
}

TEST(Heard, TellsFramesFromNoise) {
  const Heard heard = Heard::in(QByteArray("\xFF\x00", 2) + QByteArray("\xFF\x05\x90\x02\xFE", 5) + "hi");
  EXPECT_EQ(heard.bytes, 9);
  EXPECT_EQ(heard.noise, 4);
  EXPECT_TRUE(heard.isFrame);
  EXPECT_EQ(heard.servos, 2);
  EXPECT_EQ(heard.error, std::nullopt);
  EXPECT_FALSE(Heard::in("hello").isFrame);
  EXPECT_EQ(Heard::in({}).bytes, 0);
  EXPECT_EQ(Heard::in(QByteArray(100, 'x')).beginning.size(), 16);
}

TEST(Heard, TakesNoReplyOfAnotherLengthThanItsCodeHas) {
  EXPECT_FALSE(Heard::in(QByteArray("\xFF\x04\x90\xFE", 4)).isFrame);
  EXPECT_FALSE(Heard::in(QByteArray("\xFF\x04\xF9\xFE", 4)).isFrame);
  EXPECT_FALSE(Heard::in(QByteArray("\xFF\x06\x90\x01\x00\xFE", 6)).isFrame);
}

}  // namespace
}  // namespace tavril::doctor
