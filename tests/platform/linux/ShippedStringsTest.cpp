#include "platform/StringTableFile.h"
#include "platform/linux/StringTables.h"
#include "tests/support/RecordingLog.h"

#include <QCoreApplication>
#include <QDir>
#include <QFile>
#include <QRegularExpression>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace tavril {
namespace {

using testing::Contains;

/// The tables that came with the program, by language.
QHash<QString, StringTableFile> shippedTables() {
  QHash<QString, StringTableFile> tables;
  const QDir folder(QCoreApplication::applicationDirPath() + QStringLiteral("/strings"));
  for (const QString &name : folder.entryList({QStringLiteral("*.strings")}, QDir::Files)) {
    QFile file(folder.filePath(name));
    EXPECT_TRUE(file.open(QIODevice::ReadOnly)) << qPrintable(name);
    tables.insert(name.section(u'.', 0, 0), StringTableFile::parse(file.readAll()));
  }
  return tables;
}

QStringList sortedKeys(const StringTableFile &table) {
  QStringList keys = table.entries().keys();
  keys.sort();
  return keys;
}

QStringList formatSpecifiers(const QString &text) {
  static const QRegularExpression specifier(QStringLiteral("%[0-9$.-]*[@A-Za-z%]"));
  QStringList found;
  for (auto matches = specifier.globalMatch(text); matches.hasNext();)
    found.append(matches.next().captured());
  return found;
}

TEST(ShippedStrings, AreThereInEnglishAndTraditionalChinese) {
  const QStringList languages = shippedTables().keys();
  EXPECT_THAT(languages, Contains(QStringLiteral("en")));
  EXPECT_THAT(languages, Contains(QStringLiteral("zh-Hant")));
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

TEST(ShippedStrings, AreFoundByTheProgram) {
  RecordingLog log;
  StringTables tables(StringTables::standardFolders().mid(0, 1), log);
  EXPECT_EQ(tables.text(u"COM_Connect_P1"), QStringLiteral("Connected to "));
  ASSERT_TRUE(tables.setLanguage(QStringLiteral("zh-Hant")));
  EXPECT_EQ(tables.text(u"Error"), QStringLiteral("\u932f\u8aa4"));
}

}  // namespace
}  // namespace tavril
