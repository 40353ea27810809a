#pragma once

#include "editor/windows/About.h"
#include "editor/windows/AboutView.h"
#include "look/SideWindow.h"

#include <QColor>
#include <QEvent>
#include <QString>
#include <QStringView>
#include <QWidget>

#include <functional>
#include <map>
#include <memory>

namespace Ui {
class AboutWindow;
}

namespace tavril {

struct Desktop;

/// A small window that tells what this program is, with the ways to its licence and its documents.
class AboutWindow final : public SideWindow<QWidget>, private AboutView {
  Q_OBJECT

 public:
  using OpenDocuments = std::function<void()>;

  AboutWindow(const Desktop &desktop, InformationDictionary information, OpenDocuments openDocuments,
              QWidget *parent = nullptr);
  ~AboutWindow() override;

  /// The one such window over the parent.
  static void open(QWidget &parent, const Desktop &desktop, const InformationDictionary &information,
                   const OpenDocuments &openDocuments);

 protected:
  bool event(QEvent *event) override;
  void setTexts() override;

 private:
  ScreenElement &element(QStringView name) override;
  void setTitle(const QString &title) override { setWindowTitle(title); }
  /// Whatever colours the window got by its palette or by a style sheet of its own, this one shows.
  void setWindowBackground(const QColor &color) override;
  void openLicence();

  const Desktop &desktop_;
  std::unique_ptr<Ui::AboutWindow> ui_;
  std::map<QWidget *, std::unique_ptr<ScreenElement>> elements_;
  About controller_;
};

}  // namespace tavril
