#pragma once

#include "tests/gui/GuiBench.h"
#include "tests/support/ShippedLanguages.h"

#include <functional>

namespace tavril {

/// Leads through everything that the program can show, in one language: the window in each of its states,
/// its menus, dialogs, panels and alerts. Whoever is led looks at each with eyes of their own.
class ScreenTour : public GuiBench, public testing::WithParamInterface<std::string> {
 protected:
  /// `screen` is the window on top; names are in the order of the tour, "07-reboot".
  using Visit = std::function<void(const QString &name, QWidget &screen)>;

  ScreenTour() : GuiBench(QString::fromStdString(GetParam())) {}

  QString language() const { return QString::fromStdString(GetParam()); }
  /// All of it. Fatal failures of the visits end the tour.
  void tour(Visit visit);

 private:
  void show(const QString &name, QWidget &screen);
  void visitMenus();
  void visitAbout();
  void visitDoctor();
  void visitConverter();
  void visitConnecting();
  void visitNotices();
  void visitQuestions();
  void visitAlerts();
  void visitFailure();
  void visitToolTip();

  Visit visit_;
  int number_ = 0;
};

}  // namespace tavril
