#pragma once

#include <QEvent>
#include <QHideEvent>
#include <QObject>
#include <QWidget>

#include <memory>

namespace Ui {
class WaitPanel;
}

namespace tavril {

class StringTable;

/// The card that says what is being waited for: its elements in their places, found by their object names,
/// and no logic. The holder of the button that gives up is hidden at first, and the doctor is offered along
/// with it.
class WaitPanel : public QWidget {
  Q_OBJECT

 public:
  explicit WaitPanel(QWidget *parent = nullptr);
  ~WaitPanel() override;

  /// Texts of what is on the panel beside the named elements. To be called again when the language has
  /// changed.
  void setTexts(const StringTable &strings);

  /// A wait begins or has ended: the button that gives up is hidden until this wait has lasted too long.
  void hideCloseButton();

 Q_SIGNALS:
  /// The user wants to know why there is no answer.
  void doctorWanted();

 protected:
  /// What goes with the button that gives up comes and goes with it.
  bool eventFilter(QObject *watched, QEvent *event) override;

 private:
  std::unique_ptr<Ui::WaitPanel> ui_;
};

}  // namespace tavril
