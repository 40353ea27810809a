#pragma once

#include <QString>

#include <functional>

namespace tavril {

class EditorView;
struct Desktop;

/// The controller of the main window. It sets the title, and closing the window ends the program.
class WindowsCtrl {
 public:
  using EndProcess = std::function<void(int status)>;

  /// `endProcess` ends the program at once with this status.
  WindowsCtrl(EditorView &view, const Desktop &desktop, EndProcess endProcess);

  void windowDidLoad();
  /// Ends the program with status 0. Kept: C69.
  void windowShouldClose();

 private:
  EditorView &view_;
  const Desktop &desktop_;
  EndProcess endProcess_;
};

}  // namespace tavril
