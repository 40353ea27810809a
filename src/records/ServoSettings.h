#pragma once

#include "records/JsonDocument.h"
#include "servo/Changes.h"
#include "wire/Registers.h"

#include <string>
#include <string_view>
#include <vector>

namespace tavril::records {

using servo::Settings;

inline constexpr std::string_view settingsFormat = "tavril-servo-settings";
inline constexpr int settingsVersion = 1;

/// The settings as a JSON document, each with its unit and its range.
std::string settingsText(const Settings &settings);

/// What is wrong with a member of a document, or odd.
struct SettingsFinding {
  enum class Kind {
    NotJson,
    NotAnObject,
    Missing,
    OtherFormat,
    OtherVersion,
    UnknownKey,
    Repeated,
    NoSettings,
    NotASetting,
    Measured,
    NoValue,
    NotANumber,
    NotWhole,
    OutOfRange,
    SameSetting,  ///< the setting is there under another spelling of its name
    // odd, and does no harm
    OtherUnit,
    OtherRange,
  };

  Kind kind;
  TextPlace place;
  std::string path;                     ///< "settings.kp.value"; empty for the whole document
  const wire::Register *row = nullptr;  ///< what the member is about; none if that is not known
  int value = 0;                        ///< of OutOfRange
  std::string reason = {};              ///< of NotJson
};

/// What was found in a document, in the order of the places.
struct CheckedSettings {
  Settings settings;  ///< nothing if there are problems
  std::vector<SettingsFinding> problems;
  std::vector<SettingsFinding> remarks;  ///< what is odd

  /// There are problems, and all are values out of range.
  bool onlyRanges() const;
};

/// Checks a whole document: syntax, keys, types, ranges.
CheckedSettings checkSettings(std::string_view document);

}  // namespace tavril::records
