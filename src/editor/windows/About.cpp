#include "editor/windows/About.h"

#include "look/Style.h"
#include "platform/Desktop.h"
#include "platform/ScreenElement.h"
#include "platform/StringTable.h"

#include <utility>

namespace tavril {

About::About(AboutView &view, const Desktop &desktop, InformationDictionary information)
    : view_(view), desktop_(desktop), information_(std::move(information)) {}

void About::viewDidLoad() {
  const QString title = desktop_.strings.text(u"about");
  view_.setTitle(title);
  view_.element(u"abouttitle").setText(title);
  // Kept: C70.
  const QString version =
      information_.value(QStringLiteral("CFBundleShortVersionString"), QStringLiteral("(null)"));
  view_.element(u"versionlab").setText(QStringLiteral("Version ") + version);
  view_.element(u"aboutContent").setText(desktop_.strings.text(u"about_content"));
}

void About::viewWillLayout() {
  view_.setWindowBackground(Style::aboutGround());
}

}  // namespace tavril
