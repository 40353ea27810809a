#pragma once

#include "editor/GuideBrowser.h"

#include <QKeyEvent>
#include <QString>
#include <QStringList>
#include <QWidget>

namespace tavril {

struct Desktop;

/// The window with the user guide, which comes with the program and needs no network. Escape closes it. Main
/// thread only; owns nothing it is given.
class GuideWindow final : public QWidget {
  Q_OBJECT

 public:
  GuideWindow(const Desktop &desktop, const QString &guide, GuideBrowser::OpenOutside openOutside,
              QWidget *parent = nullptr);
  ~GuideWindow() override;

  /// Shows the one such window over the parent, which owns it: raises the one that is open, or makes it.
  /// `folders`: where the documents may be, the preferred first. Nullptr when none has the guide; an alert
  /// has said so.
  static GuideWindow *open(QWidget &parent, const Desktop &desktop, const QStringList &folders,
                           const GuideBrowser::OpenOutside &openOutside);

  GuideBrowser &browser() { return *browser_; }

 protected:
  void keyPressEvent(QKeyEvent *event) override;

 private:
  void setTexts();

  const Desktop &desktop_;
  GuideBrowser *browser_;
};

}  // namespace tavril
