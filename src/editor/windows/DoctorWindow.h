#pragma once

#include "doctor/DiagnosisRun.h"
#include "look/SideWindow.h"

#include <QEvent>
#include <QKeyEvent>
#include <QObject>
#include <QWidget>

#include <chrono>
#include <functional>
#include <map>
#include <memory>

class QLabel;
class QPushButton;
class QScrollArea;

namespace tavril {

class AppDelegate;
class Background;
class DoctorRow;
struct Desktop;

/// A window with all checks from the plug to the servo, and their results as they come. The checks begin when
/// the window opens, and the user may repeat them.
class DoctorWindow final : public SideWindow<QWidget> {
  Q_OBJECT

 public:
  /// Returns what to examine. Called before each run.
  using MakeRequest = std::function<doctor::Request()>;

  DoctorWindow(const Desktop &desktop, const doctor::Services &services, Background &background,
               MakeRequest makeRequest, QWidget *parent = nullptr);

  /// Opens the window, of which the parent has at most one, and begins the checks unless they run already.
  static void open(QWidget &parent, const Desktop &desktop, const doctor::Services &services,
                   Background &background, const MakeRequest &makeRequest);
  /// What to examine in the editor: the port that the link has open, or would open.
  static doctor::Request requestFor(const AppDelegate &link, std::chrono::milliseconds bootWait);

  void begin();
  /// Releases the port for another part of the program.
  void stop();

 protected:
  void setTexts() override;
  void keyPressEvent(QKeyEvent *event) override;
  /// Adjusts the list to the height that its texts need in the available width.
  bool eventFilter(QObject *watched, QEvent *event) override;

 private:
  bool isAtWork() const;
  void build();
  void showOutcome();
  DoctorRow &row(doctor::CheckId check) { return *rows_.at(check); }

  const Desktop &desktop_;
  const doctor::Services services_;
  Background &background_;
  const MakeRequest makeRequest_;
  std::map<doctor::CheckId, DoctorRow *> rows_;
  QLabel *intro_;
  QScrollArea *scroll_;
  QLabel *outcome_;
  QPushButton *again_;
  QPushButton *close_;
  bool isDone_ = false;
  std::unique_ptr<doctor::DiagnosisRun> run_;
};

}  // namespace tavril
