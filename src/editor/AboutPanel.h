#pragma once

#include "editor/AboutView.h"

#include <QColor>
#include <QString>
#include <QStringView>
#include <QWidget>

#include <map>
#include <memory>

namespace Ui {
class AboutPanel;
}

namespace tavril {

class StringTable;

/// The About panel as a view: its elements, two buttons below them, and no logic. Main thread only.
class AboutPanel final : public QWidget, public AboutView {
  Q_OBJECT

 public:
  explicit AboutPanel(QWidget *parent = nullptr);
  ~AboutPanel() override;

  /// Texts of what is on the panel beside the named elements. To be called again when the language has
  /// changed.
  void setTexts(const StringTable &strings);

  /// Puts the keyboard's focus on what comes first.
  void focusFirst();

  ScreenElement &element(QStringView name) override;
  void setTitle(const QString &title) override;
  /// Whatever colours the window got by its palette or by a style sheet of its own, this one shows.
  void setWindowBackground(const QColor &color) override;

 Q_SIGNALS:
  void licenceWanted();
  void documentsWanted();

 private:
  std::unique_ptr<Ui::AboutPanel> ui_;
  std::map<QWidget *, std::unique_ptr<ScreenElement>> elements_;
};

}  // namespace tavril
