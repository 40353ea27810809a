#pragma once

#include <QHash>
#include <QString>

namespace tavril {

class AboutView;
struct Desktop;

/// What the application says of itself, by key. The version stands under "CFBundleShortVersionString".
using InformationDictionary = QHash<QString, QString>;

/// The controller of the About panel: it fills the panel and keeps its window black. Main thread only.
class About {
 public:
  About(AboutView &view, const Desktop &desktop, InformationDictionary information);

  /// Fills the panel, also when the language has changed.
  void viewDidLoad();
  /// On every layout pass.
  void viewWillLayout();

 private:
  AboutView &view_;
  const Desktop &desktop_;
  InformationDictionary information_;
};

}  // namespace tavril
