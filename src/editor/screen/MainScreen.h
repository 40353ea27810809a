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

/// The main screen: its elements, which are found by their object names, and no program logic. Its size is
/// always 1024 x 768 points.
class MainScreen : public QWidget {
  Q_OBJECT

 public:
  explicit MainScreen(QWidget *parent = nullptr);
  ~MainScreen() override;

  /// Sets the texts of the elements that have no name, and the accessible names. Called again when the
  /// language has changed.
  void setTexts(const StringTable &strings);
  /// The events of the pointer on the screen.
  ScreenPointer &pointer() { return *pointer_; }

 Q_SIGNALS:
  /// The keys of the dial or an assistive technology request this position, 0 to 1023.
  void positionRequested(int position);

 private:
  void wireDial();
  void followPointer();
  void followPosition(const QString &entry);

  std::unique_ptr<Ui::MainScreen> ui_;
  ScreenPointer *pointer_ = nullptr;
};

}  // namespace tavril
