#include "platform/linux/PosixPrivateFiles.h"
#include "platform/linux/SettingsFile.h"
#include "tests/fuzz/FuzzInput.h"
#include "tests/fuzz/FuzzTarget.h"
#include "tests/fuzz/Invariant.h"
#include "tests/support/RecordingLog.h"

#include <QFile>
#include <QTemporaryDir>

// Any bytes as the file of preferences: whatever it says, a choice can be kept in it, is there for the next
// run, and can be forgotten again.

namespace tavril {
namespace {

/// Each input has a file of its own name, for Qt remembers what it has read of a path.
QString freshPath() {
  static const QTemporaryDir folder;
  static int number = 0;
  return folder.filePath(QString::number(number++));
}

}  // namespace
}  // namespace tavril

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size) {
  using namespace tavril;
  const QString path = freshPath();
  {
    QFile file(path);
    const QByteArray bytes = FuzzInput(data, size).rest();
    mustHold(file.open(QIODevice::WriteOnly) && file.write(bytes) == bytes.size(), "the input is written");
  }
  const QString key = QStringLiteral("language");
  const QString chosen = QStringLiteral("zh-Hant");
  RecordingLog log;
  PosixPrivateFiles files;
  SettingsFile preferences(path, files, log);
  preferences.value(key);
  mustHold(preferences.setValue(key, chosen), "a choice is kept");
  mustHold(SettingsFile(path, files, log).value(key) == chosen, "and is there for the next run");
  mustHold(preferences.remove(key), "a choice is forgotten");
  mustHold(!SettingsFile(path, files, log).value(key), "and is gone");
  QFile::remove(path);
  return 0;
}
