#pragma once

#include "editor/windows/GuideBrowser.h"
#include "look/SideWindow.h"

#include <QString>
#include <QStringList>
#include <QWidget>

namespace tavril {

struct Desktop;

/// The window with the user guide, which comes with the program and needs no network.
class GuideWindow final : public SideWindow<QWidget> {
  Q_OBJECT

 public:
  GuideWindow(const Desktop &desktop, const QString &guide, GuideBrowser::OpenOutside openOutside,
              QWidget *parent = nullptr);

  /// Opens the window, of which the parent has at most one. `folders`: where the documents may be, the
  /// preferred first. If none has the guide, an alert says so.
  static void open(QWidget &parent, const Desktop &desktop, const QStringList &folders,
                   const GuideBrowser::OpenOutside &openOutside);

  GuideBrowser &browser() { return *browser_; }

 protected:
  void setTexts() override;

 private:
  GuideBrowser *browser_;
};

}  // namespace tavril
