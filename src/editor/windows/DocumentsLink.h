#pragma once

#include <QString>
#include <QStringList>

#include <functional>

namespace tavril {

struct Desktop;

/// Opens the folder with the project's documents. If there is none, or it cannot be shown, an alert says
/// where the documents belong.
class DocumentsLink {
 public:
  /// Shows a folder to the user. Returns false if no program can show it.
  using ShowFolder = std::function<bool(const QString &folder)>;

  /// `candidates`: where the documents may be, the preferred first.
  DocumentsLink(QStringList candidates, ShowFolder showFolder, const Desktop &desktop);

  void open() const;

 private:
  QStringList candidates_;
  ShowFolder showFolder_;
  const Desktop &desktop_;
};

}  // namespace tavril
