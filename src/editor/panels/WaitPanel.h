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

/// The card that says what the program waits for. It has only the elements, which are found by their object
/// names, and no logic. The container of the button that gives up is hidden at first; the button that opens
/// the doctor is shown and hidden with it.
class WaitPanel : public QWidget {
  Q_OBJECT

 public:
  explicit WaitPanel(QWidget *parent = nullptr);
  ~WaitPanel() override;

  /// Sets the texts of the elements that have no name. Called again when the language has changed.
  void setTexts(const StringTable &strings);

  /// Called when a wait begins or has ended. The button that gives up is hidden until the wait has lasted too
  /// long.
  void hideCloseButton();

 Q_SIGNALS:
  /// The user wants to know why there is no answer.
  void doctorWanted();

 protected:
  /// Shows and hides the offer of the doctor together with the button that gives up.
  bool eventFilter(QObject *watched, QEvent *event) override;

 private:
  std::unique_ptr<Ui::WaitPanel> ui_;
};

}  // namespace tavril
