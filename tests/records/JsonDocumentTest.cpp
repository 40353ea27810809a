#include "records/JsonDocument.h"

#include <gtest/gtest.h>

#include <string>
#include <string_view>

namespace tavril::records {
namespace {

using namespace std::string_view_literals;

TEST(JsonDocument, CountsCharactersAndNotBytes) {
  const JsonDocument document = readJson(R"({"°": "\"", "a": [{"b": 1}, {"b": 2}], "c": {"d": null}})");
  EXPECT_EQ(document.root.member("a")->place.column, 13);
  EXPECT_EQ(document.root.member("c")->member("d")->place.column, 46);
  EXPECT_TRUE(document.repeated.empty());
}

TEST(JsonDocument, HasTheValuesOfEveryKind) {
  const JsonDocument document = readJson(R"([null, true, -1, 2, 2.5, "a\u00e4", {}, [3]])");
  ASSERT_FALSE(document.error);
  const auto &values = document.root.members;
  ASSERT_EQ(values.size(), 8U);
  EXPECT_EQ(values[0].kind, JsonValue::Kind::Null);
  EXPECT_EQ(values[1].kind, JsonValue::Kind::Boolean);
  EXPECT_EQ(values[2].number, -1.0);
  EXPECT_EQ(values[3].number, 2.0);
  EXPECT_EQ(values[4].number, 2.5);
  EXPECT_EQ(values[5].text, "aä");
  EXPECT_EQ(values[6].kind, JsonValue::Kind::Object);
  EXPECT_EQ(values[7].members.at(0).number, 3.0);
}

TEST(JsonDocument, FindsTheBeginningOfAKeyThatHasQuotesAndBackslashes) {
  const JsonDocument document = readJson("{ \"\\\\\\\"\\\\\" : 1,\n \"\\\\\": 2}");
  ASSERT_EQ(document.root.members.size(), 2U);
  EXPECT_EQ(document.root.members[0].key, "\\\"\\");
  EXPECT_EQ(document.root.members[0].place, (TextPlace{1, 3}));
  EXPECT_EQ(document.root.members[1].key, "\\");
  EXPECT_EQ(document.root.members[1].place, (TextPlace{2, 2}));
}

TEST(JsonDocument, KeepsTheLastOfSeveralMembersWithOneKey) {
  const JsonDocument document = readJson("{\"a\": [{\"b\": 1, \"c\": {},\n\"b\": 2}],\n\"a\": 3}");
  ASSERT_EQ(document.repeated.size(), 2U);
  EXPECT_EQ(document.repeated[0].path, "a[0].b");
  EXPECT_EQ(document.repeated[0].place, (TextPlace{2, 1}));
  EXPECT_EQ(document.repeated[1].path, "a");
  ASSERT_EQ(document.root.members.size(), 1U);
  EXPECT_EQ(document.root.members[0].number, 3.0);
  EXPECT_EQ(document.root.members[0].place, (TextPlace{3, 1}));
}

TEST(JsonDocument, KeepsTheEscapesOfHalvesAndCountsThemAsTheyStand) {
  const JsonDocument document = readJson(R"({"\uD83D": "\ud83d\ude00", "\\ud83d\udE00x": 1, "b": 2})");
  ASSERT_FALSE(document.error) << document.error->reason;
  const auto &members = document.root.members;
  ASSERT_EQ(members.size(), 3U);
  EXPECT_EQ(members[0].key, "\\uD83D");
  EXPECT_EQ(members[0].text, "\U0001F600");
  EXPECT_EQ(members[1].key, "\\ud83d\\udE00x");
  EXPECT_EQ(members[1].place.column, 28);
  EXPECT_EQ(members[2].place.column, 49);
}

TEST(JsonDocument, SaysWhereAndWhyItIsWrong) {
  const auto errorOf = [](std::string_view text) {
    const auto error = readJson(text).error;
    if (!error) return std::string();
    return std::to_string(error->place.line) + ':' + std::to_string(error->place.column) + ' ' +
           error->reason;
  };
  EXPECT_EQ(errorOf(""), "1:1 unexpected end of input; expected '[', '{', or a literal");
  EXPECT_EQ(errorOf("{\n\"a\": tavril\n}"), "2:7 invalid literal");
  EXPECT_EQ(errorOf("{\"°\" 1}"), "1:6 unexpected number literal; expected ':'");
  EXPECT_EQ(errorOf("{} x"), "1:4 invalid literal");
  EXPECT_EQ(errorOf("{}\n\0"sv), "2:1 unexpected zero byte");
  EXPECT_EQ(errorOf("{\"\xFF\": 1}"), "1:3 invalid string: ill-formed UTF-8 byte");
  EXPECT_EQ(errorOf("[\"a\nb\"]"),
            "1:4 invalid string: control character U+000A (LF) must be escaped to \\u000A or \\n");
  EXPECT_EQ(errorOf("[1e400]"), "1:6 a number is too large");
}

TEST(JsonDocument, EndsAtATooDeepLevel) {
  const auto nested = [](std::size_t levels) { return std::string(levels, '[') + std::string(levels, ']'); };
  EXPECT_FALSE(readJson(nested(1000)).error);
  ASSERT_TRUE(readJson(nested(1001)).error);
  EXPECT_EQ(readJson(nested(1001)).error->place.column, 1001);
}

}  // namespace
}  // namespace tavril::records
