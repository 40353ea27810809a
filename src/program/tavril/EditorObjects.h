#pragma once

#include "serial/LinkOpener.h"
#include "tools/StringsConverter.h"

#include <QString>
#include <QStringList>
#include <QUrl>

#include <chrono>
#include <functional>
#include <memory>

namespace tavril {

class AppObjects;
class EditorWindow;
class FilePanels;
class UserFiles;

/// What the windows need beside the AppServices.
struct EditorServices {
  FilePanels &filePanels;
  UserFiles &userFiles;
  std::function<QStringList()> documentFolders;   ///< where the documents may be, the preferred first
  std::function<bool(const QUrl &)> openOutside;  ///< by another program; false when there is none
  std::function<void(int status)> endProcess;
};

/// The main window with all that its menus open.
class EditorObjects final : private LinkOpener {
 public:
  /// Makes the window and launches the application.
  EditorObjects(AppObjects &objects, EditorServices services);
  ~EditorObjects() override;
  EditorObjects(const EditorObjects &) = delete;
  EditorObjects &operator=(const EditorObjects &) = delete;

  EditorWindow &window() { return *window_; }

  /// Opens the port dialog over the window, or raises the one that is open. It lives until it is closed.
  void openPortSetting();
  /// As if the port dialog had been opened and confirmed.
  void confirmPort();
  /// Brings the window to the front, and what it waits for over it. `token`: the permission that a desktop
  /// has given to whoever asks for this, which under Wayland it wants to see.
  void bringToFront(const QString &token);

  /// What is done, once, when the window can first be seen.
  std::function<void()> whenSeen;
  /// How long the doctor waits for the bridge: as long as the link does.
  std::chrono::milliseconds doctorWait;

 private:
  void serialFormat() override;
  void openDoctor();
  void quit();
  void openAbout();
  void openDocuments();
  void openGuide();

  AppObjects &objects_;
  const EditorServices services_;
  StringsConverter converter_;
  std::unique_ptr<EditorWindow> window_;
};

}  // namespace tavril
