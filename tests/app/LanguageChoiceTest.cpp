#include "app/LanguageChoice.h"
#include "platform/Languages.h"
#include "platform/NotificationCenter.h"
#include "tests/support/KeyTable.h"
#include "tests/support/MemoryPreferences.h"
#include "tests/support/RecordingLog.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <map>

namespace tavril {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

/// Tables that are just a table; the best for a user is the first wanted that is there.
class MemoryLanguages final : public Languages {
 public:
  QStringList languages() const override {
    QStringList codes;
    for (const auto &[code, texts] : tables) codes.append(code);
    return codes;
  }
  QString language() const override { return current; }
  bool setLanguage(const QString &language) override {
    if (!tables.contains(language)) return false;
    current = language;
    return true;
  }
  const StringTable &table(const QString &language) const override { return tables.at(language); }
  QString bestFor(const QStringList &wanted) const override {
    for (const QString &code : wanted) {
      if (tables.contains(code)) return code;
    }
    return QStringLiteral("en");
  }

  std::map<QString, KeyTable> tables;
  QString current = QStringLiteral("en");
};

class LanguageChoiceTest : public testing::Test {
 protected:
  LanguageChoiceTest() {
    languages.tables.emplace("de", KeyTable({{"language_name", "Deutsch"}, {"hello", "Hallo"}}));
    languages.tables.emplace("en", KeyTable({{"language_name", "English"}, {"hello", "Hello"}}));
    languages.tables.emplace("ja", KeyTable({{"language_name", "日本語"}}));
    notifications.addObserver(
        this, QString::fromUtf16(LanguageDidChangeNotification), [this](const Notification &) {
          told.append(languages.current + u' ' + languages.table(languages.current).text(u"hello"));
        });
  }

  /// A new run of the program, on what the runs before have left.
  LanguageChoice run(const QStringList &system = {"ja"}) {
    languages.current = QStringLiteral("en");
    return {languages, preferences, notifications, log, system};
  }

  MemoryLanguages languages;
  MemoryPreferences preferences;
  NotificationCenter notifications;
  RecordingLog log;
  QStringList told;
};

TEST_F(LanguageChoiceTest, TheCommandLineComesBeforeAllElseAndIsNotRemembered) {
  preferences.values["language"] = "de";
  LanguageChoice choice = run();
  EXPECT_TRUE(choice.begin("en"));
  EXPECT_EQ(languages.current, "en");
  EXPECT_FALSE(choice.followsSystem());
  EXPECT_EQ(preferences.values["language"], "de");

  LanguageChoice next = run();
  EXPECT_TRUE(next.begin(""));
  EXPECT_EQ(languages.current, "de");
}

TEST_F(LanguageChoiceTest, WhatIsRememberedComesBeforeTheSystem) {
  preferences.values["language"] = "de";
  LanguageChoice choice = run();
  EXPECT_TRUE(choice.begin(""));
  EXPECT_EQ(choice.language(), "de");
  EXPECT_FALSE(choice.followsSystem());
}

TEST_F(LanguageChoiceTest, TheSystemComesBeforeEnglish) {
  LanguageChoice choice = run({"xx", "ja", "de"});
  EXPECT_TRUE(choice.begin(""));
  EXPECT_EQ(choice.language(), "ja");
  EXPECT_TRUE(choice.followsSystem());
}

TEST_F(LanguageChoiceTest, EnglishIsTheLastResort) {
  LanguageChoice choice = run({"xx"});
  EXPECT_TRUE(choice.begin(""));
  EXPECT_EQ(choice.language(), "en");
}

TEST_F(LanguageChoiceTest, ALanguageOfTheCommandLineThatIsNotThereIsRefused) {
  preferences.values["language"] = "de";
  LanguageChoice choice = run();
  EXPECT_FALSE(choice.begin("xx"));
  EXPECT_EQ(languages.current, "en");
}

TEST_F(LanguageChoiceTest, ARememberedLanguageThatIsNotThereAnyMoreFallsBackToTheSystemWithALogLine) {
  preferences.values["language"] = "xx";
  LanguageChoice choice = run();
  EXPECT_TRUE(choice.begin(""));
  EXPECT_EQ(choice.language(), "ja");
  EXPECT_TRUE(choice.followsSystem());
  ASSERT_EQ(log.warnings().size(), 1);
  EXPECT_TRUE(log.warnings().first().contains("\"xx\""));
  EXPECT_EQ(preferences.values["language"], "xx") << "the table may come back";
}

TEST_F(LanguageChoiceTest, StartingTellsNobody) {
  preferences.values["language"] = "de";
  LanguageChoice choice = run();
  choice.begin("");
  EXPECT_THAT(told, IsEmpty());
}

TEST_F(LanguageChoiceTest, AChoiceHoldsAtOnceAndInTheNextRun) {
  LanguageChoice choice = run({"en"});
  choice.begin("");
  EXPECT_TRUE(choice.choose("de"));
  EXPECT_EQ(choice.language(), "de");
  EXPECT_FALSE(choice.followsSystem());
  EXPECT_THAT(told, ElementsAre("de Hallo"));

  LanguageChoice next = run();
  next.begin("");
  EXPECT_EQ(next.language(), "de");
}

TEST_F(LanguageChoiceTest, AChoiceInARunWithALanguageOnTheCommandLineIsRememberedToo) {
  LanguageChoice choice = run();
  choice.begin("en");
  choice.choose("de");
  EXPECT_EQ(preferences.values["language"], "de");
}

TEST_F(LanguageChoiceTest, ChoosingTheLanguageThatTheSystemHasChangesNoTextButIsRemembered) {
  LanguageChoice choice = run({"de"});
  choice.begin("");
  EXPECT_TRUE(choice.choose("de"));
  EXPECT_THAT(told, IsEmpty());
  EXPECT_FALSE(choice.followsSystem());
  EXPECT_EQ(preferences.values["language"], "de");
}

TEST_F(LanguageChoiceTest, AChoiceThatIsNotThereChangesNothing) {
  LanguageChoice choice = run();
  choice.begin("");
  EXPECT_FALSE(choice.choose("xx"));
  EXPECT_EQ(choice.language(), "ja");
  EXPECT_TRUE(choice.followsSystem());
  EXPECT_THAT(preferences.values, IsEmpty());
  EXPECT_THAT(told, IsEmpty());
}

TEST_F(LanguageChoiceTest, FollowingTheSystemForgetsTheChoice) {
  preferences.values["language"] = "en";
  LanguageChoice choice = run({"de"});
  choice.begin("");
  choice.followSystem();
  EXPECT_THAT(told, ElementsAre("de Hallo"));
  EXPECT_TRUE(choice.followsSystem());
  EXPECT_THAT(preferences.values, IsEmpty());
}

TEST_F(LanguageChoiceTest, AChoiceThatCannotBeRememberedHoldsForThisRun) {
  preferences.isBroken = true;
  LanguageChoice choice = run({"en"});
  choice.begin("");
  EXPECT_TRUE(choice.choose("de"));
  EXPECT_EQ(choice.language(), "de");
}

TEST_F(LanguageChoiceTest, OffersEachLanguageByItsOwnNameOrByItsCode) {
  languages.tables.emplace("xx", KeyTable({{"language_name", ""}}));
  languages.tables.emplace("yy", KeyTable({{"language_name", "language_name"}}));
  QStringList offers;
  for (const auto &offer : run().offers()) offers.append(offer.language + u'=' + offer.name);
  EXPECT_THAT(offers, ElementsAre("de=Deutsch", "en=English", "ja=日本語", "xx=xx", "yy=yy"));
}

}  // namespace
}  // namespace tavril
