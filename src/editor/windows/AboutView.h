#pragma once

#include <QString>
#include <QStringView>

class QColor;

namespace tavril {

class ScreenElement;

/// The About panel as its controller sees it. Main thread only; the elements live as long as the view.
class AboutView {
 public:
  virtual ~AboutView() = default;

  /// The element of this name: "abouttitle", "versionlab" or "aboutContent".
  virtual ScreenElement &element(QStringView name) = 0;
  virtual void setTitle(const QString &title) = 0;
  /// The background of the window that the panel stands in.
  virtual void setWindowBackground(const QColor &color) = 0;
};

}  // namespace tavril
