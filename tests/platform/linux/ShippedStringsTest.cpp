#include "platform/StringTableFile.h"
#include "platform/linux/StringTables.h"
#include "tests/support/RecordingLog.h"
#include "tests/support/ShippedLanguages.h"

#include <QFile>
#include <QRegularExpression>
#include <QSet>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <vector>

namespace tavril {
namespace {

using testing::Contains;
using testing::UnorderedElementsAre;

/// The tables that came with the program, by language.
QHash<QString, StringTableFile> shippedTables() {
  QHash<QString, StringTableFile> tables;
  for (const QString &language : shippedLanguages()) {
    QFile file(QStringLiteral("%1/%2.strings").arg(stringsFolder(), language));
    EXPECT_TRUE(file.open(QIODevice::ReadOnly)) << qPrintable(language);
    tables.insert(language, StringTableFile::parse(file.readAll()));
  }
  return tables;
}

QStringList sortedKeys(const StringTableFile &table) {
  QStringList keys = table.entries().keys();
  keys.sort();
  return keys;
}

/// In no order: those with numbers may stand as the language wants them.
QStringList formatSpecifiers(const QString &text) {
  static const QRegularExpression specifier(QStringLiteral("%[0-9$.-]*[@A-Za-z%]"));
  QStringList found;
  for (auto matches = specifier.globalMatch(text); matches.hasNext();)
    found.append(matches.next().captured());
  found.sort();
  return found;
}

TEST(ShippedStrings, AreThereInEightLanguages) {
  EXPECT_THAT(shippedLanguages(),
              UnorderedElementsAre(QStringLiteral("de"), QStringLiteral("en"), QStringLiteral("es"),
                                   QStringLiteral("fr"), QStringLiteral("ja"), QStringLiteral("ko"),
                                   QStringLiteral("zh-Hans"), QStringLiteral("zh-Hant")));
}

TEST(ShippedStrings, AreWithoutAProblem) {
  const auto tables = shippedTables();
  ASSERT_FALSE(tables.isEmpty());
  for (auto table = tables.cbegin(); table != tables.cend(); ++table) {
    for (const StringTableFile::Problem &problem : table->problems()) {
      ADD_FAILURE() << qPrintable(table.key()) << ':' << problem.line << ": " << qPrintable(problem.what);
    }
  }
}

TEST(ShippedStrings, HaveTheSameKeysInEveryLanguage) {
  const auto tables = shippedTables();
  const QStringList keys = sortedKeys(tables.value(QStringLiteral("en")));
  EXPECT_THAT(keys, Contains(QStringLiteral("COM_Connect_P1")));
  for (auto table = tables.cbegin(); table != tables.cend(); ++table) {
    EXPECT_EQ(sortedKeys(*table), keys) << qPrintable(table.key());
  }
}

TEST(ShippedStrings, HaveATextForEveryKeyWithTheFormatSpecifiersOfTheEnglishText) {
  const auto tables = shippedTables();
  ASSERT_FALSE(tables.isEmpty());
  const QHash<QString, QString> english = tables.value(QStringLiteral("en")).entries();
  for (auto table = tables.cbegin(); table != tables.cend(); ++table) {
    const QHash<QString, QString> &entries = table->entries();
    for (auto entry = entries.cbegin(); entry != entries.cend(); ++entry) {
      EXPECT_FALSE(entry->isEmpty()) << qPrintable(table.key() + u' ' + entry.key());
      EXPECT_EQ(formatSpecifiers(*entry), formatSpecifiers(english.value(entry.key())))
          << qPrintable(table.key() + u' ' + entry.key());
      // A key that is a format itself names the arguments that its text is filled with.
      if (entry.key().contains(u'%')) {
        EXPECT_EQ(formatSpecifiers(*entry), formatSpecifiers(entry.key())) << qPrintable(entry.key());
      }
    }
  }
}

/// What a careful reader of the language would mark in the text; empty when there is nothing. The terms are
/// those of docs/translating.md.
QString mistakeIn(const QString &language, const QString &text) {
  struct Rule {
    QStringList languages;
    QString mistake;  ///< a regular expression
  };
  const QStringList withNoBreakSpaceBeforeUnits{QStringLiteral("de"), QStringLiteral("es"),
                                                QStringLiteral("fr")};
  const QStringList chinese{QStringLiteral("zh-Hans"), QStringLiteral("zh-Hant")};
  const QStringList japanese{QStringLiteral("ja")};
  static const std::vector<Rule> rules{
      {withNoBreakSpaceBeforeUnits, QStringLiteral("[0-9@] (ms|s|°C)\\b")},
      {{QStringLiteral("de")}, QStringLiteral("[^\u00A0]…")},
      {{QStringLiteral("fr")}, QStringLiteral("[^\u00A0]:|[^\u202F][;?!»]|«[^\u202F]|'")},
      {japanese,
       QStringLiteral("[\u3040-\u30FF\u4E00-\u9FFF] [A-Za-z0-9%]|[A-Za-z0-9@] [\u3040-\u30FF\u4E00-\u9FFF]")},
      {japanese + chinese, QStringLiteral("[,;:?!]")},
      {chinese, QStringLiteral("[\u4E00-\u9FFF][A-Za-z0-9%]|[A-Za-z0-9@][\u4E00-\u9FFF]")},
      {japanese, QStringLiteral(
                     "(アダプタ|モータ|フォルダ|パラメータ|コンバータ|ドライバ|サーバ)(?!ー)|パケット|回線")},
      {{QStringLiteral("ko")}, QStringLiteral("패킷|회선|차단 설정")},
      {{QStringLiteral("zh-Hans")}, QStringLiteral("网桥|端口|转接器|数据包")},
      {{QStringLiteral("zh-Hant")}, QStringLiteral("網橋|通訊埠|適配器|纜線|(?<!USB )連接埠")},
  };
  for (const Rule &rule : rules) {
    if (!rule.languages.contains(language)) continue;
    const QRegularExpressionMatch match = QRegularExpression(rule.mistake).match(text);
    if (match.hasMatch()) return match.captured();
  }
  return {};
}

TEST(ShippedStrings, KeepToTheTermsAndTheTypographyOfTheirLanguage) {
  const auto tables = shippedTables();
  ASSERT_FALSE(tables.isEmpty());
  for (auto table = tables.cbegin(); table != tables.cend(); ++table) {
    const QHash<QString, QString> &entries = table->entries();
    for (auto entry = entries.cbegin(); entry != entries.cend(); ++entry) {
      const QString error = mistakeIn(table.key(), *entry);
      EXPECT_TRUE(error.isEmpty()) << qPrintable(table.key() + u' ' + entry.key()) << ": \""
                                   << qPrintable(error) << '"';
    }
  }
}

// Where one or several can stand, no word of the sentence has to agree with it.
TEST(ShippedStrings, PutCountsAndListsBehindAColon) {
  static const QRegularExpression behindAColon(QStringLiteral("[:：][ \\x{A0}]?%1\\$@[.。]"));
  const auto tables = shippedTables();
  ASSERT_FALSE(tables.isEmpty());
  for (auto table = tables.cbegin(); table != tables.cend(); ++table) {
    for (const QString &key :
         {QStringLiteral("doctor_reply"), QStringLiteral("doctor_frame_noise"),
          QStringLiteral("doctor_daemon_modem"), QStringLiteral("doctor_daemon_braille")}) {
      const QString text = table->entries().value(key);
      EXPECT_TRUE(behindAColon.match(text).hasMatch()) << qPrintable(table.key() + u' ' + text);
    }
  }
}

TEST(MistakesInTexts, AreFound) {
  EXPECT_EQ(mistakeIn(QStringLiteral("fr"), QStringLiteral("Prêt ?")), QStringLiteral(" ?"));
  EXPECT_EQ(mistakeIn(QStringLiteral("fr"), QStringLiteral("Port\u00A0: l’autre")), QString());
  EXPECT_EQ(mistakeIn(QStringLiteral("de"), QStringLiteral("in 10 ms")), QStringLiteral("0 ms"));
  EXPECT_EQ(mistakeIn(QStringLiteral("ja"), QStringLiteral("次の USB")), QStringLiteral("の U"));
  EXPECT_EQ(mistakeIn(QStringLiteral("ja"), QStringLiteral("次: 1")), QStringLiteral(":"));
  EXPECT_EQ(mistakeIn(QStringLiteral("zh-Hant"), QStringLiteral("舵機ID")), QStringLiteral("機I"));
  EXPECT_EQ(mistakeIn(QStringLiteral("ja"), QStringLiteral("アダプタを挿す")), QStringLiteral("アダプタ"));
  EXPECT_EQ(mistakeIn(QStringLiteral("ja"), QStringLiteral("アダプターを挿す")), QString());
  EXPECT_EQ(mistakeIn(QStringLiteral("ko"), QStringLiteral("포트: 1")), QString());
}

TEST(ShippedStrings, NameTheirLanguageInItselfAndGiveALabelSize) {
  const auto tables = shippedTables();
  ASSERT_FALSE(tables.isEmpty());
  QStringList names;
  for (auto table = tables.cbegin(); table != tables.cend(); ++table) {
    names.append(table->entries().value(QStringLiteral("language_name")));
    const int size = table->entries().value(QStringLiteral("fontsize")).toInt();
    EXPECT_TRUE(size >= 11 && size <= 16) << qPrintable(table.key()) << ": " << size;
  }
  EXPECT_THAT(names, UnorderedElementsAre(QStringLiteral("Deutsch"), QStringLiteral("English"),
                                          QStringLiteral("Español"), QStringLiteral("Français"),
                                          QStringLiteral("日本語"), QStringLiteral("한국어"),
                                          QStringLiteral("简体中文"), QStringLiteral("繁體中文")));
}

// The connection line and the question's answer are told by comparing texts.
TEST(ShippedStrings, KeepApartWhatTheProgramTellsByItsText) {
  const auto tables = shippedTables();
  ASSERT_FALSE(tables.isEmpty());
  for (auto table = tables.cbegin(); table != tables.cend(); ++table) {
    const QHash<QString, QString> &entries = table->entries();
    const QString connected = entries.value(QStringLiteral("COM_Connect_P1"));
    for (const QString &key :
         {QStringLiteral("Not_connect"), QStringLiteral("Serial_port_start_initialization")}) {
      EXPECT_FALSE(entries.value(key).startsWith(connected)) << qPrintable(table.key() + u' ' + key);
    }
    const QStringList texts{entries.value(QStringLiteral("reboot")), entries.value(QStringLiteral("reset")),
                            entries.value(QStringLiteral("no_servo")),
                            entries.value(QStringLiteral("there_are_more_than_one_servo"))};
    EXPECT_EQ(QSet<QString>(texts.begin(), texts.end()).size(), texts.size()) << qPrintable(table.key());
  }
}

TEST(ShippedStrings, AreFoundByTheProgram) {
  RecordingLog log;
  StringTables tables(StringTables::standardFolders().mid(0, 1), log);
  EXPECT_EQ(tables.text(u"COM_Connect_P1"), QStringLiteral("Connected to "));
  ASSERT_TRUE(tables.setLanguage(QStringLiteral("zh-Hant")));
  EXPECT_EQ(tables.text(u"Error"), QStringLiteral("\u932f\u8aa4"));
}

}  // namespace
}  // namespace tavril
