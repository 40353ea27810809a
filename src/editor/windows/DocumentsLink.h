#pragma once

#include <QString>
#include <QStringList>

#include <functional>

namespace tavril {

struct Desktop;

/// The way to the project's documents: opens the folder that has them. Where there is none, or nothing that
/// could show it, an alert says where the documents belong. Main thread only.
class DocumentsLink {
 public:
  /// Shows a folder to the user; false when there is nothing to show it with.
  using ShowFolder = std::function<bool(const QString &folder)>;

  /// `candidates`: folders that may have the documents, the preferred first.
  DocumentsLink(QStringList candidates, ShowFolder showFolder, const Desktop &desktop);

  void open() const;

 private:
  QStringList candidates_;
  ShowFolder showFolder_;
  const Desktop &desktop_;
};

}  // namespace tavril
