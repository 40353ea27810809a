#include "platform/linux/StringTables.h"
#include "tests/support/RecordingLog.h"
#include "tests/support/TestFiles.h"

#include <QCoreApplication>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QLocale>
#include <QTemporaryDir>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <sys/stat.h>

namespace tavril {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

class StringTablesTest : public testing::Test {
 protected:
  void write(const QString &path, const QByteArray &text) { writeFile(folder_.filePath(path), text); }
  QStringList folders(const QStringList &names) const {
    QStringList paths;
    for (const QString &name : names) paths.append(folder_.filePath(name));
    return paths;
  }

  QTemporaryDir folder_;
  RecordingLog log_;
};

TEST_F(StringTablesTest, ShowsTheTextsOfTheCurrentLanguage) {
  write(QStringLiteral("a/en.strings"), "\"k\"=\"text\";");
  write(QStringLiteral("a/zh-Hant.strings"), "\"k\"=\"文字\";");
  StringTables tables(folders({QStringLiteral("a")}), log_);
  EXPECT_THAT(tables.languages(), ElementsAre(QStringLiteral("en"), QStringLiteral("zh-Hant")));
  EXPECT_EQ(tables.text(u"k"), QStringLiteral("text"));
  EXPECT_TRUE(tables.setLanguage(QStringLiteral("zh-Hant")));
  EXPECT_EQ(tables.language(), QStringLiteral("zh-Hant"));
  EXPECT_EQ(tables.text(u"k"), QStringLiteral("文字"));
  EXPECT_FALSE(tables.setLanguage(QStringLiteral("fr")));
  EXPECT_EQ(tables.text(u"k"), QStringLiteral("文字"));
  EXPECT_THAT(log_.lines(), IsEmpty());
}

TEST_F(StringTablesTest, EveryTableCanBeLookedIntoWhateverIsInUse) {
  write(QStringLiteral("a/en.strings"), "\"k\"=\"text\";");
  write(QStringLiteral("a/de.strings"), "\"k\"=\"Text\";");
  StringTables tables(folders({QStringLiteral("a")}), log_);
  EXPECT_EQ(tables.table(QStringLiteral("de")).text(u"k"), QStringLiteral("Text"));
  EXPECT_TRUE(tables.setLanguage(QStringLiteral("de")));
  EXPECT_EQ(tables.table(QStringLiteral("en")).text(u"k"), QStringLiteral("text"));
  EXPECT_EQ(tables.table(QStringLiteral("fr")).text(u"k"), QStringLiteral("k")) << "there is none";
  EXPECT_EQ(tables.bestFor({QStringLiteral("fr"), QStringLiteral("de_AT")}), QStringLiteral("de"));
}

TEST_F(StringTablesTest, AMissingKeyShowsItselfAndNotTheEnglishText) {
  write(QStringLiteral("a/en.strings"), "\"k\"=\"text\";");
  write(QStringLiteral("a/de.strings"), "\"other\"=\"\";");
  StringTables tables(folders({QStringLiteral("a")}), log_);
  EXPECT_TRUE(tables.setLanguage(QStringLiteral("de")));
  EXPECT_EQ(tables.text(u"k"), QStringLiteral("k"));
  EXPECT_EQ(tables.text(u"other"), QString());
}

TEST_F(StringTablesTest, WithoutAnyTableEveryKeyShowsItself) {
  const StringTables tables(folders({QStringLiteral("nowhere")}), log_);
  EXPECT_THAT(tables.languages(), IsEmpty());
  EXPECT_EQ(tables.text(u"k"), QStringLiteral("k"));
}

TEST_F(StringTablesTest, ALaterFolderWinsKeyByKeyAndMayAddALanguage) {
  write(QStringLiteral("a/en.strings"), "\"k\"=\"one\";\n\"l\"=\"one\";");
  write(QStringLiteral("b/en.strings"), "\"k\"=\"two\";");
  write(QStringLiteral("b/de.strings"), "\"k\"=\"zwei\";");
  StringTables tables(folders({QStringLiteral("a"), QStringLiteral("b")}), log_);
  EXPECT_THAT(tables.languages(), ElementsAre(QStringLiteral("de"), QStringLiteral("en")));
  EXPECT_EQ(tables.text(u"k"), QStringLiteral("two"));
  EXPECT_EQ(tables.text(u"l"), QStringLiteral("one"));
}

TEST_F(StringTablesTest, ReadsATableAsTheStringsConverterNamesIt) {
  write(QStringLiteral("a/de.h"), "\"k\"=\"aus .h\";\n\"l\"=\"aus .h\";");
  write(QStringLiteral("a/de.strings"), "\"k\"=\"aus .strings\";");
  StringTables tables(folders({QStringLiteral("a")}), log_);
  EXPECT_TRUE(tables.setLanguage(QStringLiteral("de")));
  EXPECT_EQ(tables.text(u"k"), QStringLiteral("aus .strings"));
  EXPECT_EQ(tables.text(u"l"), QStringLiteral("aus .h"));
}

TEST_F(StringTablesTest, ReportsWhatIsWrongWithFileAndLine) {
  write(QStringLiteral("a/en.strings"), "\"k\"=\"text\";\nnonsense\n");
  const StringTables tables(folders({QStringLiteral("a")}), log_);
  ASSERT_EQ(log_.warnings().size(), 1);
  EXPECT_TRUE(log_.warnings().first().startsWith(folder_.filePath(QStringLiteral("a/en.strings:2: "))));
  EXPECT_EQ(tables.text(u"k"), QStringLiteral("text"));
}

TEST_F(StringTablesTest, IgnoresFilesThatAreNotNamedAfterALanguage) {
  write(QStringLiteral("a/en.strings~"), "\"k\"=\"no\";");
  write(QStringLiteral("a/my texts.strings"), "\"k\"=\"no\";");
  write(QStringLiteral("a/en-.strings"), "\"k\"=\"no\";");
  const StringTables tables(folders({QStringLiteral("a")}), log_);
  EXPECT_THAT(tables.languages(), IsEmpty());
  EXPECT_EQ(log_.warnings().size(), 2);
}

TEST_F(StringTablesTest, NeitherWaitsForAPipeNorTakesWhatIsNoFile) {
  write(QStringLiteral("a/en.strings"), "\"k\"=\"text\";");
  write(QStringLiteral("real.strings"), "\"k\"=\"linked\";");
  const QString folder = folder_.filePath(QStringLiteral("a/"));
  ASSERT_EQ(::mkfifo(QFile::encodeName(folder + QStringLiteral("fr.strings")).constData(), 0600), 0);
  ASSERT_TRUE(QFile::link(folder + QStringLiteral("fr.strings"), folder + QStringLiteral("it.strings")));
  ASSERT_TRUE(QFile::link(folder_.path(), folder + QStringLiteral("es.strings")));
  ASSERT_TRUE(QFile::link(QStringLiteral("/dev/zero"), folder + QStringLiteral("pt.strings")));
  ASSERT_TRUE(
      QFile::link(folder_.filePath(QStringLiteral("nowhere")), folder + QStringLiteral("nl.strings")));
  ASSERT_TRUE(
      QFile::link(folder_.filePath(QStringLiteral("real.strings")), folder + QStringLiteral("de.strings")));
  ASSERT_TRUE(QDir().mkdir(folder + QStringLiteral("da.strings")));
  const StringTables tables(folders({QStringLiteral("a")}), log_);
  EXPECT_THAT(tables.languages(), ElementsAre(QStringLiteral("de"), QStringLiteral("en")));
}

TEST_F(StringTablesTest, RefusesAFileThatIsTooLarge) {
  write(QStringLiteral("a/en.strings"), "\"k\"=\"text\";");
  QFile file(folder_.filePath(QStringLiteral("a/en.strings")));
  ASSERT_TRUE(file.resize(qint64(1) << 40));
  const StringTables tables(folders({QStringLiteral("a")}), log_);
  EXPECT_EQ(tables.text(u"k"), QStringLiteral("k"));
  EXPECT_EQ(log_.warnings().size(), 1);
}

TEST_F(StringTablesTest, LooksForTablesBesideTheProgramAndThenInTheUsersFolder) {
  qputenv("XDG_DATA_HOME", QFile::encodeName(folder_.path()));
  const QStringList found = StringTables::standardFolders();
  qunsetenv("XDG_DATA_HOME");
  EXPECT_THAT(found, ElementsAre(QCoreApplication::applicationDirPath() + QStringLiteral("/strings"),
                                 folder_.filePath(QStringLiteral("tavril/strings"))));
}

QString choose(const QStringList &wanted) {
  return StringTables::languageFor(
      wanted, {QStringLiteral("de"), QStringLiteral("en"), QStringLiteral("pt-BR"), QStringLiteral("zh-Hans"),
               QStringLiteral("zh-Hant")});
}

TEST(StringTablesLanguage, IsTheExactOneOrItsBaseOrEnglish) {
  EXPECT_EQ(choose({QStringLiteral("pt-BR")}), QStringLiteral("pt-BR"));
  EXPECT_EQ(choose({QStringLiteral("pt_BR.UTF-8")}), QStringLiteral("pt-BR"));
  EXPECT_EQ(choose({QStringLiteral("de-AT-1996")}), QStringLiteral("de"));
  EXPECT_EQ(choose({QStringLiteral("fr-FR"), QStringLiteral("de")}), QStringLiteral("de"));
  EXPECT_EQ(choose({QStringLiteral("fr")}), QStringLiteral("en"));
  EXPECT_EQ(choose({QStringLiteral("C")}), QStringLiteral("en"));
  EXPECT_EQ(choose({}), QStringLiteral("en"));
}

TEST(StringTablesLanguage, TellsTraditionalFromSimplifiedChinese) {
  for (const char *wanted : {"zh-TW", "zh_HK", "zh-MO", "zh-Hant", "zh-Hant-CN", "zh_TW.UTF-8"}) {
    EXPECT_EQ(choose({QString::fromLatin1(wanted)}), QStringLiteral("zh-Hant")) << wanted;
  }
  for (const char *wanted : {"zh", "zh-CN", "zh-SG", "zh-Hans-TW"}) {
    EXPECT_EQ(choose({QString::fromLatin1(wanted)}), QStringLiteral("zh-Hans")) << wanted;
  }
  const QStringList noSimplified{QStringLiteral("en"), QStringLiteral("zh-Hant")};
  EXPECT_EQ(StringTables::languageFor({QStringLiteral("zh-CN")}, noSimplified), QStringLiteral("en"));
}

TEST(StringTablesLanguage, FollowsTheLocale) {
  EXPECT_EQ(choose(QLocale(QStringLiteral("zh_TW")).uiLanguages()), QStringLiteral("zh-Hant"));
  EXPECT_EQ(choose(QLocale(QStringLiteral("zh_CN")).uiLanguages()), QStringLiteral("zh-Hans"));
  EXPECT_EQ(choose(QLocale(QStringLiteral("de_CH")).uiLanguages()), QStringLiteral("de"));
  EXPECT_EQ(choose(QLocale::c().uiLanguages()), QStringLiteral("en"));
}

/// By what a locale of the system says, with the languages that the program comes with.
QString chooseForLocale(const char *locale) {
  return StringTables::languageFor(
      QLocale(QString::fromLatin1(locale)).uiLanguages(),
      {QStringLiteral("de"), QStringLiteral("en"), QStringLiteral("es"), QStringLiteral("fr"),
       QStringLiteral("ja"), QStringLiteral("ko"), QStringLiteral("zh-Hans"), QStringLiteral("zh-Hant")});
}

TEST(StringTablesLanguage, OfALocaleIsTheOneThatIsReadThere) {
  const std::pair<const char *, const char *> expected[]{
      {"zh_CN", "zh-Hans"}, {"zh_SG", "zh-Hans"}, {"zh_TW", "zh-Hant"}, {"zh_HK", "zh-Hant"},
      {"zh_MO", "zh-Hant"}, {"ja_JP", "ja"},      {"ko_KR", "ko"},      {"de_AT", "de"},
      {"de_DE", "de"},      {"fr_CA", "fr"},      {"fr_CH", "fr"},      {"es_MX", "es"},
      {"es_ES", "es"},      {"en_GB", "en"},      {"pt_BR", "en"},      {"pt_PT", "en"},
      {"it_IT", "en"},      {"C", "en"},          {"POSIX", "en"},
  };
  for (const auto &[locale, language] : expected) {
    EXPECT_EQ(chooseForLocale(locale).toStdString(), language) << locale;
  }
}

}  // namespace
}  // namespace tavril
