#pragma once

#include "posix/Descriptor.h"

#include <cstddef>
#include <string>
#include <string_view>

#include <sys/types.h>

namespace tavril::posix {

// Files in folders where anything may stand: opening one neither waits for a pipe nor takes a terminal. What
// returns a number returns 0, or the error number. May be used from any thread.

/// The step at which a file could not be used, and why.
struct FileError {
  enum class Step { None, MakeFolder, Open, Lock, Read, Write, Sync };

  Step step = Step::None;
  int number = 0;    ///< as in errno
  std::string path;  ///< of the file, or of the folder that could not be made

  bool happened() const { return step != Step::None; }
  bool operator==(const FileError &) const = default;
};

/// Opens the file as open() does; not open, with errno, when that failed. `mode`: of a new file.
Descriptor openFile(const std::string &path, int flags, mode_t mode = 0);

/// The same for a file that must be a regular one: EISDIR for a folder, EINVAL for anything else.
int openRegularFile(const std::string &path, int flags, Descriptor &file, mode_t mode = 0);

enum class Links { Followed, Refused };

/// Reads a whole regular file. A device is not even opened, because it may act on that. EISDIR and EINVAL as
/// above, EFBIG when there are more than `largest` bytes, ELOOP for a link that is refused.
int readRegularFile(const std::string &path, Links links, std::size_t largest, std::string &bytes);

/// Reads to the end; EFBIG as above.
int readAll(int descriptor, std::size_t largest, std::string &bytes);
int writeAll(int descriptor, std::string_view bytes);

/// The path of the folder in which a path's last component stands.
std::string folderOf(const std::string &path);

/// Has the folder's list of files on the disk itself. Not every file system can do it, so an error is
/// ignored.
void syncFolder(const std::string &path);

/// Makes a folder for the user alone, and those above it that are missing, and syncs each to the disk.
FileError makeFolders(const std::string &path);

/// The folder in which programs keep data for the user: $XDG_DATA_HOME, or .local/share in the home folder.
std::string userDataFolder();

/// A new file that takes the place of another once it is complete: until then it is ".NAME.XXXXXX" beside it,
/// with any characters for the X. If it does not get that far, it is removed again.
class ReplacementFile {
 public:
  static constexpr std::size_t randomPart = 6;

  /// `mode`: as far as the user's mask allows.
  ReplacementFile(std::string target, mode_t mode);
  ~ReplacementFile();
  ReplacementFile(const ReplacementFile &) = delete;
  ReplacementFile &operator=(const ReplacementFile &) = delete;

  /// Why it could not be made, or 0.
  int error() const { return error_; }
  int descriptor() const { return file_.get(); }
  /// Writes the whole content to the disk itself.
  int write(std::string_view bytes);
  /// The last step: a crash leaves either the old file or this one. A link at the target is replaced.
  int takePlace();

 private:
  const std::string target_;
  std::string name_;  ///< empty when there is nothing to remove
  Descriptor file_;
  int error_ = 0;
};

}  // namespace tavril::posix
