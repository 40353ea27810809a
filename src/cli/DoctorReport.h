#pragma once

#include "cli/Failure.h"
#include "doctor/Result.h"

#include <QString>

#include <vector>

namespace tavril {
class StringTable;
}

namespace tavril::cli {

/// One check as `tavrilctl doctor` prints it: state, name and finding, and below it what to do.
QString doctorLines(const doctor::Result &result, const StringTable &strings);
QString doctorJson(const std::vector<doctor::Result> &results, const StringTable &strings);
/// Done when nothing has failed, else by what failed first: the port, the answer, or the servo.
ExitCode doctorStatus(const std::vector<doctor::Result> &results);

}  // namespace tavril::cli
