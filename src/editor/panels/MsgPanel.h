#pragma once

#include <QWidget>

#include <memory>

namespace Ui {
class MsgPanel;
}

namespace tavril {

class StringTable;

/// The card that asks a question: its elements in their places, found by their object names, and no logic.
class MsgPanel : public QWidget {
  Q_OBJECT

 public:
  explicit MsgPanel(QWidget *parent = nullptr);
  ~MsgPanel() override;

  /// Texts of what is on the panel beside the named elements. To be called again when the language has
  /// changed.
  void setTexts(const StringTable &strings);

 private:
  std::unique_ptr<Ui::MsgPanel> ui_;
};

}  // namespace tavril
