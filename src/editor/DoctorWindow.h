#pragma once

#include "doctor/Consultation.h"
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

/// A window with all checks from the plug to the servo, which fills in as they are made. Begins when it is
/// opened; the user may have it begin again.
class DoctorWindow final : public SideWindow<QWidget> {
  Q_OBJECT

 public:
  /// What is to be examined, asked anew each time.
  using MakeRequest = std::function<doctor::Request()>;

  DoctorWindow(const Desktop &desktop, const doctor::Surroundings &surroundings, Background &background,
               MakeRequest makeRequest, QWidget *parent = nullptr);

  /// The one such window over the parent. It begins again, unless it is at work.
  static void open(QWidget &parent, const Desktop &desktop, const doctor::Surroundings &surroundings,
                   Background &background, const MakeRequest &makeRequest);
  /// What to examine in the editor: the port that the link has open, or would open.
  static doctor::Request requestFor(const AppDelegate &link, std::chrono::milliseconds bootWait);

  void begin();
  /// Lets go of the port, which somebody else needs.
  void stop();

 protected:
  void setTexts() override;
  void keyPressEvent(QKeyEvent *event) override;
  /// Keeps the list as high as its texts need in the width that there is.
  bool eventFilter(QObject *watched, QEvent *event) override;

 private:
  bool isAtWork() const;
  void build();
  void showOutcome();
  DoctorRow &row(doctor::CheckId check) { return *rows_.at(check); }

  const Desktop &desktop_;
  const doctor::Surroundings surroundings_;
  Background &background_;
  const MakeRequest makeRequest_;
  std::map<doctor::CheckId, DoctorRow *> rows_;
  QLabel *intro_;
  QScrollArea *scroll_;
  QLabel *outcome_;
  QPushButton *again_;
  QPushButton *close_;
  bool isDone_ = false;
  std::unique_ptr<doctor::Consultation> consultation_;
};

}  // namespace tavril
