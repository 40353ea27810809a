#pragma once

#include <compare>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace tavril::records {

/// Where something stands in a text, both counted from 1.
struct TextPlace {
  int line = 1;
  int column = 1;  ///< in characters

  // clang-tidy takes the 0 in what the compiler makes of this for a pointer.
  // NOLINTNEXTLINE(modernize-use-nullptr)
  auto operator<=>(const TextPlace &other) const = default;
};

struct JsonValue {
  enum class Kind { Null, Boolean, Number, String, Array, Object };

  std::string key;  ///< of a member of an object; "[0]" and so on in an array
  TextPlace place;  ///< of the member's key
  Kind kind = Kind::Null;
  double number = 0.0;
  std::string text;
  std::vector<JsonValue> members;  ///< of an object or an array, in their order

  const JsonValue *member(std::string_view name) const;
};

/// A JSON document that a person may have edited. All texts are in UTF-8. Half of a character in a text, such
/// as the escape \ud83d alone, is kept as the six letters of its escape.
struct JsonDocument {
  struct Error {
    TextPlace place;
    std::string reason;
  };
  struct Repeated {
    TextPlace place;
    std::string path;  ///< "settings.kp.value"
  };

  JsonValue root;
  std::optional<Error> error;      ///< if there is one, the rest says nothing
  std::vector<Repeated> repeated;  ///< members that were there before; the last one counts
};

JsonDocument readJson(std::string_view text);

}  // namespace tavril::records
