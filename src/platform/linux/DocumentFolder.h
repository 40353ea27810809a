#pragma once

#include <QString>
#include <QStringList>

namespace tavril {

/// Where the project's documents (README.md, docs) are: beside the program in a build tree, in the data
/// folder when installed.
struct DocumentFolder {
  /// The folders in question, the preferred first.
  static QStringList candidates();
};

}  // namespace tavril
