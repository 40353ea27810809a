#pragma once

#include <QHash>
#include <QString>
#include <QStringView>

class QColor;

namespace tavril {

class ScreenElement;
struct Desktop;

/// What the application says of itself, by key. The version is under "CFBundleShortVersionString".
using InformationDictionary = QHash<QString, QString>;

/// The About panel as its controller sees it. The elements live as long as the view.
class AboutView {
 public:
  virtual ~AboutView() = default;

  /// The element of this name: "abouttitle", "versionlab" or "aboutContent".
  virtual ScreenElement &element(QStringView name) = 0;
  virtual void setTitle(const QString &title) = 0;
  virtual void setWindowBackground(const QColor &color) = 0;
};

/// The controller of the About panel: it fills the panel and keeps its window black.
class About {
 public:
  About(AboutView &view, const Desktop &desktop, InformationDictionary information);

  /// Fills the panel. Called again when the language has changed.
  void viewDidLoad();
  /// Called on every layout pass.
  void viewWillLayout();

 private:
  AboutView &view_;
  const Desktop &desktop_;
  InformationDictionary information_;
};

}  // namespace tavril
