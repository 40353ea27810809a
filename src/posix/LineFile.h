#pragma once

#include "posix/Descriptor.h"
#include "posix/Files.h"

#include <chrono>
#include <cstdint>
#include <string>
#include <string_view>
#include <utility>

namespace tavril::posix {

/// An opened file that only grows, by whole lines. Several programs may append to it at once. A link in the
/// place of the file is refused.
class LineFile {
 public:
  explicit LineFile(std::string path) : path_(std::move(path)) {}

  FileError openToRead();
  /// Makes the file if it is missing, with its folders, for the user alone. Nobody else can append until this
  /// object is gone. Waits at most `patience` for others who append; after that the error is EWOULDBLOCK.
  FileError openToAppend(std::chrono::milliseconds patience);

  /// Nothing if the file is shorter.
  FileError readFrom(std::int64_t offset, std::string &bytes) const;
  /// Writes the lines and syncs them. After an error the file is as before, as far as the disk allows: at
  /// worst its last line is torn.
  FileError append(std::string_view lines) const;

 private:
  FileError open(int flags);
  FileError lock(std::chrono::milliseconds patience) const;
  FileError failed(FileError::Step step, int number) const;

  std::string path_;
  Descriptor file_;
  std::int64_t size_ = 0;  ///< when it was opened to append
};

}  // namespace tavril::posix
