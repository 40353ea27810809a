#pragma once

#include <QWidget>

#include <memory>

namespace Ui {
class MsgPanel;
}

namespace tavril {

class StringTable;

/// The card that asks a question. It has only the elements, which are found by their object names, and no
/// logic.
class MsgPanel : public QWidget {
  Q_OBJECT

 public:
  explicit MsgPanel(QWidget *parent = nullptr);
  ~MsgPanel() override;

  /// Sets the texts of the elements that have no name. Called again when the language has changed.
  void setTexts(const StringTable &strings);

 private:
  std::unique_ptr<Ui::MsgPanel> ui_;
};

}  // namespace tavril
