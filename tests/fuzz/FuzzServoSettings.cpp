#include "cli/SettingsFile.h"
#include "tests/fuzz/FuzzInput.h"
#include "tests/fuzz/FuzzTarget.h"
#include "tests/fuzz/Invariant.h"

#include <QRegularExpression>

// Any bytes as a file of a servo's settings: it is refused, with the place of each problem, or its settings
// are known, in range, and read back the same when they are written.

namespace tavril::cli {
namespace {

void checkRefusal(const records::CheckedSettings &checked) {
  static const QRegularExpression withPlace(QStringLiteral("^[1-9][0-9]*:[1-9][0-9]*: ."));
  mustHold(checked.settings.empty(), "a refused file has no settings");
  for (const QString &problem : linesOf(checked.problems)) {
    mustHold(withPlace.match(problem).hasMatch(), "a problem has a place and words");
  }
}

void checkSettingsInRange(const Settings &settings) {
  for (const auto &[number, value] : settings) {
    bool known = false;
    for (const wire::Register &row : wire::settingRegisters) {
      if (row.number != number) continue;
      known = true;
      mustHold(row.range.contains(value), "a setting is in its range");
    }
    mustHold(known, "a setting is one of the fifteen");
  }
}

}  // namespace
}  // namespace tavril::cli

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size) {
  using namespace tavril;
  using namespace tavril::cli;
  const records::CheckedSettings checked = records::checkSettings(FuzzInput(data, size).rest().toStdString());
  if (!checked.problems.empty()) {
    checkRefusal(checked);
    return 0;
  }
  checkSettingsInRange(checked.settings);
  const records::CheckedSettings again = records::checkSettings(records::settingsText(checked.settings));
  mustHold(again.problems.empty(), "what was written has no problems");
  mustHold(again.settings == checked.settings, "and reads back the same");
  return 0;
}
