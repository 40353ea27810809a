#pragma once

#include <QString>
#include <QWidget>

#include <memory>

namespace Ui {
class MainScreen;
}

namespace tavril {

class ScreenPointer;
class StringTable;

/// The main screen as a view: all its elements in their places, found by their object names, and none of the
/// program's logic. 1024 x 768 points, never another size.
class MainScreen : public QWidget {
  Q_OBJECT

 public:
  explicit MainScreen(QWidget *parent = nullptr);
  ~MainScreen() override;

  /// Texts of what is on the screen beside the named elements: the product, accessible names. To
  /// be called again when the language has changed.
  void setTexts(const StringTable &strings);
  /// What the pointer does on the screen.
  ScreenPointer &pointer() { return *pointer_; }

 Q_SIGNALS:
  /// The keys of the dial, or who stands in for them, ask for this position, 0 to 1023.
  void positionRequested(int position);

 private:
  void wireDial();
  void followPointer();
  void followPosition(const QString &entry);

  std::unique_ptr<Ui::MainScreen> ui_;
  ScreenPointer *pointer_ = nullptr;
};

}  // namespace tavril
