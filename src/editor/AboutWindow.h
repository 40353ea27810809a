#pragma once

#include "editor/About.h"
#include "editor/LicenceWindow.h"

#include <QEvent>
#include <QKeyEvent>
#include <QPointer>
#include <QWidget>

#include <functional>

namespace tavril {

class AboutPanel;

/// A small window of its own that tells what this program is, with the ways to its licence and its documents.
/// Escape closes it. Main thread only; owns nothing it is given.
class AboutWindow final : public QWidget {
  Q_OBJECT

 public:
  using OpenDocuments = std::function<void()>;

  AboutWindow(const Desktop &desktop, InformationDictionary information, OpenDocuments openDocuments,
              QWidget *parent = nullptr);
  ~AboutWindow() override;

  /// Shows the one such window over the parent, which owns it: raises the one that is open, or makes it. It
  /// goes when it is closed.
  static AboutWindow &open(QWidget &parent, const Desktop &desktop, const InformationDictionary &information,
                           const OpenDocuments &openDocuments);

 protected:
  bool event(QEvent *event) override;
  void keyPressEvent(QKeyEvent *event) override;

 private:
  void setTexts();
  void openLicence();

  const Desktop &desktop_;
  AboutPanel *panel_;
  About controller_;
  QPointer<LicenceWindow> licence_;
};

}  // namespace tavril
