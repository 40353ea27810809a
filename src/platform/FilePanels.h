#pragma once

#include <QString>
#include <QStringList>

namespace tavril {

/// The panels in which the user chooses a file. While one is open, no queued job and no timer runs.
class FilePanels {
 public:
  static constexpr int OK = 1;
  static constexpr int Cancel = 0;

  struct Content {
    QString title;
    QStringList allowedTypes;  ///< name extensions, "txt"
  };

  struct Choice {
    int result = Cancel;
    QString url;   ///< absolute, percent-encoded: "file:///home/me/my%20keys.txt"
    QString name;  ///< of a save panel: what stood in its name field, as the user left it
  };

  virtual ~FilePanels() = default;

  virtual Choice runOpenPanel(const Content &content) = 0;
  /// The URL has the chosen folder, the name and the first type, even if the name already ends in it.
  virtual Choice runSavePanel(const Content &content) = 0;
};

}  // namespace tavril
