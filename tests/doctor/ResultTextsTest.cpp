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

}  // namespace
}  // namespace tavril::doctor
