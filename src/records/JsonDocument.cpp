#include "records/JsonDocument.h"

#include <algorithm>
#include <charconv>
#include <cstddef>
#include <map>
#include <nlohmann/json.hpp>
#include <set>
#include <sstream>
#include <utility>

namespace tavril::records {

namespace {

using nlohmann::json;

/// More levels than any file of ours has, and few enough for functions that call themselves.
constexpr std::size_t mostLevels = 1000;
constexpr std::size_t escapeLength = 6;

/// The number in an escape such as \ud83d; 0 if none begins here.
unsigned escapedUnit(std::string_view text) {
  if (text.size() < escapeLength || !text.starts_with("\\u")) return 0;
  unsigned unit = 0;
  const char *const last = text.data() + escapeLength;
  return std::from_chars(text.data() + 2, last, unit, 16).ptr == last ? unit : 0;
}

bool isHighHalf(unsigned unit) {
  return unit >= 0xD800 && unit <= 0xDBFF;
}

bool isLowHalf(unsigned unit) {
  return unit >= 0xDC00 && unit <= 0xDFFF;
}

/// What the parser says behind the place and before it quotes the document.
std::string reasonOf(const json::exception &error) {
  const std::string text = error.what();
  const std::size_t before = text.find(" - ");
  if (before == std::string::npos) return "a number is too large";
  const std::size_t begin = before + 3;
  return text.substr(begin, text.find("; last read: ") - begin);
}

/// Takes what the parser finds, and asks the stream how far it has come.
class Reader final : public nlohmann::json_sax<json> {
 public:
  explicit Reader(std::string_view text) { fillStream(text); }

  JsonDocument read() {
    const bool isRead = json::sax_parse(stream_, this);
    // The parser takes a zero byte for the end.
    const std::size_t zero = stream_.view().find('\0');
    if (isRead && zero != std::string_view::npos) fail(zero, "unexpected zero byte");
    return std::move(document_);
  }

  bool null() override { return add(JsonValue::Kind::Null); }
  bool boolean(bool) override { return add(JsonValue::Kind::Boolean); }
  bool number_integer(number_integer_t number) override {
    return add(JsonValue::Kind::Number, static_cast<double>(number));
  }
  bool number_unsigned(number_unsigned_t number) override {
    return add(JsonValue::Kind::Number, static_cast<double>(number));
  }
  bool number_float(number_float_t number, const string_t &) override {
    return add(JsonValue::Kind::Number, number);
  }
  bool string(string_t &text) override { return add(JsonValue::Kind::String, 0.0, std::move(text)); }
  bool binary(binary_t &) override { return false; }
  bool start_object(std::size_t) override { return begin(JsonValue::Kind::Object); }
  bool start_array(std::size_t) override { return begin(JsonValue::Kind::Array); }
  bool end_object() override { return end(); }
  bool end_array() override { return end(); }

  bool key(string_t &name) override {
    Level &object = levels_.back();
    std::vector<JsonValue> &members = object.value->members;
    const TextPlace place = placeOf(beginOfString());
    const auto [found, isNew] = object.indices.emplace(name, members.size());
    object.current = found->second;
    if (isNew) members.emplace_back();
    JsonValue &member = members[object.current];
    member = {};
    member.key = std::move(name);
    member.place = place;
    if (!isNew) document_.repeated.push_back({place, path()});
    return true;
  }

  bool parse_error(std::size_t count, const std::string &, const json::exception &error) override {
    return fail(count - 1, reasonOf(error));
  }

 private:
  /// An object or an array that has begun.
  struct Level {
    JsonValue *value;
    std::size_t current = 0;                       ///< the member that is being read
    std::map<std::string, std::size_t> indices{};  ///< of the members by their keys
  };

  /// The parser refuses half of a character. One more backslash makes its escape a text as any other.
  void fillStream(std::string_view text) {
    std::string taken;
    while (!text.empty()) {
      const unsigned unit = escapedUnit(text);
      std::size_t length = text.front() == '\\' ? 2 : 1;
      if (isHighHalf(unit) && isLowHalf(escapedUnit(text.substr(escapeLength)))) {
        length = 2 * escapeLength;
      } else if (isHighHalf(unit) || isLowHalf(unit)) {
        added_.insert(taken.size());
        taken += '\\';
        length = escapeLength;
      }
      taken += text.substr(0, length);
      text.remove_prefix(std::min(length, text.size()));
    }
    stream_.str(std::move(taken));
  }

  /// The value that comes now: the whole document, the member whose key was read, or one more in an array.
  JsonValue &next() {
    if (levels_.empty()) return document_.root;
    Level &level = levels_.back();
    std::vector<JsonValue> &members = level.value->members;
    if (level.value->kind == JsonValue::Kind::Array) {
      level.current = members.size();
      members.emplace_back().key = '[' + std::to_string(level.current) + ']';
    }
    return members[level.current];
  }

  bool add(JsonValue::Kind kind, double number = 0.0, std::string text = {}) {
    JsonValue &value = next();
    value.kind = kind;
    value.number = number;
    value.text = std::move(text);
    return true;
  }

  bool begin(JsonValue::Kind kind) {
    if (levels_.size() == mostLevels) return fail(offset() - 1, "too many levels");
    JsonValue &value = next();
    value.kind = kind;
    levels_.push_back({&value});
    return true;
  }

  bool end() {
    levels_.pop_back();
    return true;
  }

  bool fail(std::size_t offset, std::string reason) {
    document_.error = {placeOf(offset), std::move(reason)};
    return false;
  }

  /// Of the member that is being read.
  std::string path() const {
    std::string path;
    for (const Level &level : levels_) {
      if (!path.empty() && level.value->kind == JsonValue::Kind::Object) path += '.';
      path += level.value->members[level.current].key;
    }
    return path;
  }

  std::size_t offset() { return static_cast<std::size_t>(std::streamoff{stream_.tellg()}); }

  /// The opening quote of the string that was read just now: the only one that has no backslash before it.
  std::size_t beginOfString() {
    const std::string_view text = stream_.view();
    std::size_t quote = offset() - 1;
    do quote = text.rfind('"', quote - 1);
    while (text[quote - 1] == '\\');
    return quote;
  }

  /// For places one behind the other.
  TextPlace placeOf(std::size_t offset) {
    const std::string_view text = stream_.view();
    for (; counted_ < std::min(offset, text.size()); ++counted_) {
      const auto byte = static_cast<unsigned char>(text[counted_]);
      const bool continuesCharacter = (byte & 0xC0) == 0x80;
      if (byte == '\n') {
        ++place_.line;
        place_.column = 1;
      } else if (!continuesCharacter && !added_.contains(counted_)) {
        ++place_.column;
      }
    }
    return place_;
  }

  std::istringstream stream_;
  std::set<std::size_t> added_;  ///< where backslashes were added
  std::size_t counted_ = 0;      ///< the bytes before `place_`
  TextPlace place_;
  std::vector<Level> levels_;
  JsonDocument document_;
};

}  // namespace

const JsonValue *JsonValue::member(std::string_view name) const {
  const auto found = std::ranges::find(members, name, &JsonValue::key);
  return found == members.end() ? nullptr : &*found;
}

JsonDocument readJson(std::string_view text) {
  return Reader(text).read();
}

}  // namespace tavril::records
