#include "editor/windows/WindowsCtrl.h"

#include "editor/screen/EditorView.h"
#include "platform/Desktop.h"
#include "platform/Log.h"
#include "platform/StringTable.h"

#include <utility>

namespace tavril {

WindowsCtrl::WindowsCtrl(EditorView &view, const Desktop &desktop, EndProcess endProcess)
    : view_(view), desktop_(desktop), endProcess_(std::move(endProcess)) {}

void WindowsCtrl::windowDidLoad() {
  view_.setTitle(desktop_.strings.text(u"tavril"));
  // Pointer moves reach the screen without a button held; that is a property of its widgets.
}

void WindowsCtrl::windowShouldClose() {
  desktop_.log.write(QStringLiteral("OK"));
  endProcess_(0);
}

}  // namespace tavril
