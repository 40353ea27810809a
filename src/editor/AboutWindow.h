#pragma once

#include "editor/About.h"
#include "look/SideWindow.h"

#include <QEvent>
#include <QWidget>

#include <functional>

namespace tavril {

class AboutPanel;
struct Desktop;

/// A small window that tells what this program is, with the ways to its licence and its documents.
class AboutWindow final : public SideWindow<QWidget> {
  Q_OBJECT

 public:
  using OpenDocuments = std::function<void()>;

  AboutWindow(const Desktop &desktop, InformationDictionary information, OpenDocuments openDocuments,
              QWidget *parent = nullptr);

  /// The one such window over the parent.
  static void open(QWidget &parent, const Desktop &desktop, const InformationDictionary &information,
                   const OpenDocuments &openDocuments);

 protected:
  bool event(QEvent *event) override;

  void setTexts() override;

 private:
  void openLicence();

  const Desktop &desktop_;
  AboutPanel *panel_;
  About controller_;
};

}  // namespace tavril
