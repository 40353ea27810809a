#include "records/ServoSettings.h"

#include <algorithm>
#include <cmath>
#include <filesystem>
#include <initializer_list>
#include <map>
#include <optional>
#include <utility>

namespace tavril::records {

namespace {

using Found = SettingsFinding::Kind;
using Kind = JsonValue::Kind;

/// A path is the one class of the standard library that converts the texts of the register table.
std::string utf8(std::u16string_view text) {
  return std::filesystem::path(text).string();
}

/// For texts in which nothing has to be escaped.
std::string inQuotes(std::string_view text) {
  return '"' + std::string(text) + '"';
}

/// Of a member of the settings. A program makes the files, so that only the keys themselves are names.
const wire::Register *registerNamed(const std::string &name) {
  static const auto named = [] {
    std::map<std::string, const wire::Register *> rows;
    for (const wire::Register &row : wire::registers) {
      rows[utf8(row.keys.name)] = &row;
      if (!row.correctName.empty()) rows[utf8(row.correctName)] = &row;
    }
    return rows;
  }();
  const auto found = named.find(name);
  return found == named.end() ? nullptr : found->second;
}

bool isNumber(const JsonValue &value, int number) {
  return value.kind == Kind::Number && value.number == number;
}

bool isText(const JsonValue &value, std::string_view text) {
  return value.kind == Kind::String && value.text == text;
}

bool isRange(const JsonValue &value, const wire::Range &range) {
  return value.kind == Kind::Array && value.members.size() == 2 &&
         isNumber(value.members[0], range.minimum) && isNumber(value.members[1], range.maximum);
}

std::optional<int> integerOf(double number) {
  constexpr double limit = 2147483647.0;
  if (number != std::floor(number) || std::abs(number) > limit) return std::nullopt;
  return static_cast<int>(number);
}

/// One pass over one document.
class Checker {
 public:
  CheckedSettings check(const JsonDocument &document) {
    if (document.error) {
      complain({Found::NotJson, document.error->place, {}, nullptr, 0, document.error->reason});
    } else {
      for (const auto &[place, path] : document.repeated) complain({Found::Repeated, place, path});
      checkWhole(document.root);
    }
    std::ranges::stable_sort(result_.problems, {}, &SettingsFinding::place);
    std::ranges::stable_sort(result_.remarks, {}, &SettingsFinding::place);
    if (!result_.problems.empty()) result_.settings.clear();
    return std::move(result_);
  }

 private:
  void checkWhole(const JsonValue &whole) {
    if (whole.kind != Kind::Object) {
      complain({Found::NotAnObject, whole.place, {}});
      return;
    }
    expectKeys(whole, {}, {"format", "version", "settings"});
    if (const JsonValue *format = required(whole, "format"); format && !isText(*format, settingsFormat)) {
      complain({Found::OtherFormat, format->place, format->key});
    }
    if (const JsonValue *version = required(whole, "version");
        version && !isNumber(*version, settingsVersion)) {
      complain({Found::OtherVersion, version->place, version->key});
    }
    if (const JsonValue *settings = required(whole, "settings")) checkSettingsObject(*settings);
  }

  void checkSettingsObject(const JsonValue &settings) {
    if (settings.kind != Kind::Object) {
      complain({Found::NotAnObject, settings.place, settings.key});
      return;
    }
    if (settings.members.empty()) complain({Found::NoSettings, settings.place, settings.key});
    for (const JsonValue &member : settings.members) {
      const std::string path = settings.key + '.' + member.key;
      const wire::Register *row = registerNamed(member.key);
      if (!row) {
        complain({Found::NotASetting, member.place, path});
      } else if (!row->isSetting()) {
        complain({Found::Measured, member.place, path, row});
      } else {
        checkSetting(*row, path, member);
      }
    }
  }

  void checkSetting(const wire::Register &row, const std::string &path, const JsonValue &setting) {
    if (setting.kind != Kind::Object) {
      checkValue(row, path, setting);
      return;
    }
    expectKeys(setting, path + '.', {"value", "unit", "range"});
    if (const JsonValue *value = setting.member("value")) {
      checkValue(row, path + ".value", *value);
    } else {
      complain({Found::NoValue, setting.place, path, &row});
    }
    // For people to read. An older Tavril may have known less; the value is what counts.
    if (const JsonValue *unit = setting.member("unit"); unit && !isText(*unit, utf8(row.unit.step))) {
      result_.remarks.push_back({Found::OtherUnit, unit->place, path + ".unit", &row});
    }
    if (const JsonValue *range = setting.member("range"); range && !isRange(*range, row.range)) {
      result_.remarks.push_back({Found::OtherRange, range->place, path + ".range", &row});
    }
  }

  void checkValue(const wire::Register &row, const std::string &path, const JsonValue &value) {
    const std::optional<int> number = integerOf(value.number);
    if (value.kind != Kind::Number) {
      complain({Found::NotANumber, value.place, path, &row});
    } else if (!number) {
      complain({Found::NotWhole, value.place, path, &row});
    } else if (!row.range.contains(*number)) {
      complain({Found::OutOfRange, value.place, path, &row, *number});
    } else if (!result_.settings.emplace(row.number, *number).second) {
      complain({Found::SameSetting, value.place, path, &row});
    }
  }

  void expectKeys(const JsonValue &object, const std::string &prefix,
                  std::initializer_list<std::string_view> known) {
    for (const JsonValue &member : object.members) {
      if (std::ranges::find(known, member.key) != known.end()) continue;
      complain({Found::UnknownKey, member.place, prefix + member.key});
    }
  }

  const JsonValue *required(const JsonValue &whole, const char *key) {
    const JsonValue *member = whole.member(key);
    if (!member) complain({Found::Missing, whole.place, key});
    return member;
  }

  void complain(SettingsFinding problem) { result_.problems.push_back(std::move(problem)); }

  CheckedSettings result_;
};

}  // namespace

bool CheckedSettings::onlyRanges() const {
  return !problems.empty() &&
         std::ranges::all_of(
             problems, [](Found kind) { return kind == Found::OutOfRange; }, &SettingsFinding::kind);
}

std::string settingsText(const Settings &settings) {
  std::string rows;
  for (const auto &[number, value] : settings) {
    const wire::Register &row = *wire::findRegister(number);
    if (!rows.empty()) rows += ",\n";
    rows += "    " + inQuotes(utf8(row.keys.name)) + ": {\"value\": " + std::to_string(value) +
            ", \"unit\": " + inQuotes(utf8(row.unit.step)) + ", \"range\": [" +
            std::to_string(row.range.minimum) + ", " + std::to_string(row.range.maximum) + "]}";
  }
  return "{\n  \"format\": " + inQuotes(settingsFormat) +
         ",\n  \"version\": " + std::to_string(settingsVersion) + ",\n  \"settings\": {\n" + rows +
         "\n  }\n}\n";
}

CheckedSettings checkSettings(std::string_view document) {
  return Checker().check(readJson(document));
}

}  // namespace tavril::records
