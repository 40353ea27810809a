#include "records/HistoryFile.h"

#include "posix/Files.h"

#include <cerrno>
#include <cstddef>
#include <cstdint>
#include <string_view>
#include <utility>
#include <variant>

namespace tavril::records {

using posix::FileError;
using posix::LineFile;

std::string HistoryFile::standardPath() {
  return posix::userDataFolder() + "/tavril/history.jsonl";
}

FileError HistoryFile::refresh() {
  LineFile file(path_);
  const FileError error = file.openToRead();
  if (error.step == FileError::Step::Open && error.number == ENOENT) {
    startOver();
    return {};
  }
  return error.happened() ? error : catchUp(file);
}

HistoryFile::Appended HistoryFile::append(HistoryLine line, std::chrono::milliseconds patience) {
  LineFile file(path_);
  if (auto error = file.openToAppend(patience); error.happened()) return {error, 0};
  // The number is above those that other programs gave meanwhile.
  if (auto error = catchUp(file); error.happened()) return {error, 0};
  const LineNumber number = book_.nextNumber();
  std::visit([number](auto &known) { known.number = number; }, line);
  std::string text = textOf(line);
  // What could not be read back, such as the end of no plan, is not written.
  if (!lineFrom(text).line) return {{FileError::Step::Write, EINVAL, path_}, 0};
  text += '\n';
  if (book_.endsTorn()) text.insert(0, 1, '\n');
  if (auto error = file.append(text); error.happened()) return {error, 0};
  // The line is kept, whether or not it can be read just now.
  (void)catchUp(file);
  return {{}, number};
}

FileError HistoryFile::catchUp(const LineFile &file) {
  std::string bytes;
  const auto known = static_cast<std::int64_t>(lastLine_.size());
  if (auto error = file.readFrom(taken_ - known, bytes); error.happened()) return error;
  if (!bytes.starts_with(lastLine_)) {
    // Somebody has put another file in its place, or another content in the file.
    startOver();
    if (auto error = file.readFrom(0, bytes); error.happened()) return error;
  }
  const std::size_t fresh = book_.take(std::string_view(bytes).substr(lastLine_.size()));
  if (fresh == 0) return {};
  bytes.resize(lastLine_.size() + fresh);
  taken_ += static_cast<std::int64_t>(fresh);
  lastLine_ = bytes.substr(std::string_view(bytes).substr(0, bytes.size() - 1).rfind('\n') + 1);
  return {};
}

void HistoryFile::startOver() {
  book_ = {};
  taken_ = 0;
  lastLine_.clear();
}

}  // namespace tavril::records
