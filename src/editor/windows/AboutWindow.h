#pragma once

#include "editor/windows/About.h"
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

/// A small window that says what this program is. It has links to the licence and the documents.
class AboutWindow final : public SideWindow<QWidget>, private AboutView {
  Q_OBJECT

 public:
  using OpenDocuments = std::function<void()>;

  AboutWindow(const Desktop &desktop, InformationDictionary information, OpenDocuments openDocuments,
              QWidget *parent = nullptr);
  ~AboutWindow() override;

  /// Opens the window, of which the parent has at most one.
  static void open(QWidget &parent, const Desktop &desktop, const InformationDictionary &information,
                   const OpenDocuments &openDocuments);

 protected:
  bool event(QEvent *event) override;
  void setTexts() override;

 private:
  ScreenElement &element(QStringView name) override;
  void setTitle(const QString &title) override { setWindowTitle(title); }
  /// This colour takes precedence over the palette and the style sheet.
  void setWindowBackground(const QColor &color) override;
  void openLicence();

  const Desktop &desktop_;
  std::unique_ptr<Ui::AboutWindow> ui_;
  std::map<QWidget *, std::unique_ptr<ScreenElement>> elements_;
  About controller_;
};

}  // namespace tavril
