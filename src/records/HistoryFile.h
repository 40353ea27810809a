#pragma once

#include "posix/LineFile.h"
#include "records/HistoryBook.h"

#include <chrono>
#include <cstdint>
#include <string>
#include <utility>

namespace tavril::records {

/// The history of servos' settings in its file. Several programs may use it at once; one object belongs to
/// one thread at a time. Calls wait for the disk.
class HistoryFile {
 public:
  /// tavril/history.jsonl in the user's data folder.
  static std::string standardPath();

  explicit HistoryFile(std::string path) : path_(std::move(path)) {}

  /// Reads the file the first time, and later what was appended since. If there is no file, nothing was kept.
  posix::FileError refresh();

  struct Appended {
    posix::FileError error;
    LineNumber number = 0;  ///< that the line got; 0 if there was an error
  };
  /// Numbers the line and has it on the disk when it returns, or tells why not. `patience`: how long to wait
  /// for other programs that append.
  Appended append(HistoryLine line, std::chrono::milliseconds patience = std::chrono::seconds(2));

  /// As of the last refresh or append.
  const HistoryBook &book() const { return book_; }

 private:
  posix::FileError catchUp(const posix::LineFile &file);
  void startOver();

  std::string path_;
  HistoryBook book_;
  std::int64_t taken_ = 0;  ///< how many bytes of the file are in the book
  std::string lastLine_;    ///< the last of them, as far back as a line begins
};

}  // namespace tavril::records
