#include "editor/windows/DocumentsLink.h"

#include "platform/Desktop.h"
#include "platform/ModalAlert.h"
#include "platform/StringTable.h"

#include <QDir>

#include <algorithm>
#include <utility>

namespace tavril {

DocumentsLink::DocumentsLink(QStringList candidates, ShowFolder showFolder, const Desktop &desktop)
    : candidates_(std::move(candidates)), showFolder_(std::move(showFolder)), desktop_(desktop) {}

void DocumentsLink::open() const {
  const auto found = std::ranges::find_if(
      candidates_, [](const QString &folder) { return QDir(folder).exists(QStringLiteral("README.md")); });
  const bool isThere = found != candidates_.end();
  if (isThere && showFolder_(*found)) return;
  const QString folder = isThere ? *found : candidates_.value(0);
  desktop_.alert.run({desktop_.strings.text(u"Error"),
                      desktop_.strings.text(u"documents_not_opened").replace(QStringLiteral("%@"), folder),
                      {desktop_.strings.text(u"OK")}});
}

}  // namespace tavril
