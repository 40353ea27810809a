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
  // Moves without a button held reach the screen because its widgets have mouse tracking.
}

void WindowsCtrl::windowShouldClose() {
  desktop_.log.write(QStringLiteral("OK"));
  endProcess_(0);
}

}  // namespace tavril
