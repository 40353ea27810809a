#include "platform/KeyedText.h"
#include "tests/support/KeyTable.h"

#include <gtest/gtest.h>

namespace tavril {
namespace {

class KeyedTextTest : public testing::Test {
 protected:
  const KeyTable english{{{"idle", "Not linked"}, {"linked", "Linked to "}, {"empty", ""}}};
  const KeyTable german{{{"idle", "Nicht verbunden"}, {"linked", "Verbunden mit "}, {"empty", "Leer"}}};
};

TEST_F(KeyedTextTest, AKeyHasTheTextOfEachLanguage) {
  const KeyedText text(u"idle");
  EXPECT_EQ(text.in(english), "Not linked");
  EXPECT_EQ(text.in(german), "Nicht verbunden");
  EXPECT_EQ(text.in(english), "Not linked");
}

TEST_F(KeyedTextTest, WordsAreTheSameInEveryLanguageEvenIfTheyReadLikeAText) {
  for (const char *words : {"usbport-a", "Not linked", "idle"}) {
    const KeyedText text = KeyedText(u"linked") + KeyedText::words(words);
    EXPECT_EQ(text.in(english), QStringLiteral("Linked to ") + words);
    EXPECT_EQ(text.in(german), QStringLiteral("Verbunden mit ") + words);
  }
}

TEST_F(KeyedTextTest, PartsFollowEachOther) {
  KeyedText text = KeyedText::words("\n----\n1. ") + KeyedText(u"idle");
  text += KeyedText::words("\n2. ") + KeyedText(u"linked");
  EXPECT_EQ(text.in(english), "\n----\n1. Not linked\n2. Linked to ");
  EXPECT_EQ(text.in(german), "\n----\n1. Nicht verbunden\n2. Verbunden mit ");
}

TEST_F(KeyedTextTest, AKeyThatOneTableLacksHasATextInTheOther) {
  const KeyTable complete{{{"missing", "Da"}}};
  EXPECT_EQ(KeyedText(u"missing").in(english), "[missing]");
  EXPECT_EQ(KeyedText(u"missing").in(complete), "Da");
}

TEST_F(KeyedTextTest, NothingIsEmptyAndAKeyWhoseTextIsEmptyIsStillAKey) {
  EXPECT_TRUE(KeyedText().isEmpty());
  EXPECT_TRUE(KeyedText::words("").isEmpty());
  EXPECT_EQ(KeyedText().in(german), "");
  const KeyedText text(u"empty");
  EXPECT_FALSE(text.isEmpty());
  EXPECT_EQ(text.in(english), "");
  EXPECT_EQ(text.in(german), "Leer");
}

TEST_F(KeyedTextTest, TextsAreEqualWhenTheyAreMadeOfTheSameParts) {
  EXPECT_EQ(KeyedText(u"idle"), KeyedText(u"idle"));
  EXPECT_NE(KeyedText(u"idle"), KeyedText(u"linked"));
  EXPECT_NE(KeyedText(u"idle"), KeyedText::words("idle"));
  EXPECT_EQ(KeyedText(u"linked") + KeyedText::words("a"), KeyedText(u"linked") + KeyedText::words("a"));
}

}  // namespace
}  // namespace tavril
