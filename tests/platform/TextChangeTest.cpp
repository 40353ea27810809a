#include "platform/TextChange.h"
#include "tests/support/KeyTable.h"

#include <gtest/gtest.h>

namespace tavril {
namespace {

const QStringList keys{"idle", "linked", "linkedFast", "empty", "two lines"};

class TextChangeTest : public testing::Test {
 protected:
  KeyTable english{{{"idle", "Not linked"},
                    {"linked", "Linked to "},
                    {"linkedFast", "Linked to fast "},
                    {"empty", ""},
                    {"two lines", "One\nand two"}}};
  KeyTable german{{{"idle", "Nicht verbunden"},
                   {"linked", "Verbunden mit "},
                   {"linkedFast", "Schnell verbunden mit "},
                   {"empty", "Leer"},
                   {"two lines", "Eins und zwei"}}};
  TextChange change{english, german};
};

TEST_F(TextChangeTest, AWholeTextBecomesTheTextOfTheSameKey) {
  EXPECT_EQ(change.whole("Not linked", keys), "Nicht verbunden");
  EXPECT_EQ(change.whole("One\nand two", keys), "Eins und zwei");
}

TEST_F(TextChangeTest, ATextOfNoKeyStaysAsItIs) {
  EXPECT_EQ(change.whole("Packet CMD Error", keys), "Packet CMD Error");
  EXPECT_EQ(change.whole("Not linked at all", keys), "Not linked at all");
  EXPECT_EQ(change.whole("not linked", keys), "not linked");
  EXPECT_EQ(change.beginning("Linke", keys), "Linke");
}

TEST_F(TextChangeTest, OnlyTheKeysThatAreNamedCount) {
  EXPECT_EQ(change.whole("Not linked", {"linked"}), "Not linked");
  EXPECT_EQ(change.whole("Not linked", {}), "Not linked");
}

TEST_F(TextChangeTest, AnEmptyTextIsNobodysText) {
  EXPECT_EQ(change.whole("", keys), "");
  EXPECT_EQ(change.beginning("", keys), "");
  EXPECT_EQ(change.beginning("port", keys), "port");
  EXPECT_EQ(change.numbered("", keys), "");
}

TEST_F(TextChangeTest, WhatFollowsTheBeginningIsKept) {
  EXPECT_EQ(change.beginning("Linked to usbport-a", keys), "Verbunden mit usbport-a");
  EXPECT_EQ(change.beginning("Linked to ", keys), "Verbunden mit ");
  EXPECT_EQ(change.beginning("Linked to Linked to ", keys), "Verbunden mit Linked to ");
}

TEST_F(TextChangeTest, TheLongestBeginningCountsWhateverTheOrderOfTheKeys) {
  EXPECT_EQ(change.beginning("Linked to fast port", keys), "Schnell verbunden mit port");
  EXPECT_EQ(change.beginning("Linked to fast port", {"linkedFast", "linked"}), "Schnell verbunden mit port");
}

TEST_F(TextChangeTest, AKeyThatTheOldTableLacksStandsForItself) {
  EXPECT_EQ(change.whole("[missing]", {"missing"}), "[missing]") << "and in the new table too";
  german.texts.insert("missing", "Da");
  EXPECT_EQ(change.whole("[missing]", {"missing"}), "Da");
}

TEST_F(TextChangeTest, EveryNumberedLineIsChangedAndAllElseKept) {
  EXPECT_EQ(change.numbered("\n----\n1. Not linked\n2. One\nand two\n3. unknown\n12. Not linked\n", keys),
            "\n----\n1. Nicht verbunden\n2. Eins und zwei\n3. unknown\n12. Nicht verbunden\n");
  EXPECT_EQ(change.numbered("1. Not linked", keys), "1. Nicht verbunden");
}

TEST_F(TextChangeTest, ALineThatOnlyBeginsWithATextIsNotThatText) {
  EXPECT_EQ(change.numbered("1. Not linked yet\n", keys), "1. Not linked yet\n");
  EXPECT_EQ(change.numbered("Not linked\nx 1. Not linked\n", keys), "Not linked\nx 1. Not linked\n");
}

TEST_F(TextChangeTest, ThereAndBackAgainIsTheSameText) {
  const TextChange back(german, english);
  for (const QString text : {"Not linked", "Linked to x", "Linked to fast x"}) {
    EXPECT_EQ(back.beginning(change.beginning(text, keys), keys), text);
  }
}

}  // namespace
}  // namespace tavril
