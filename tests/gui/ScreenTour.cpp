#include "tests/gui/ScreenTour.h"

#include "editor/windows/AboutWindow.h"
#include "editor/windows/DoctorWindow.h"
#include "platform/linux/QtModalAlert.h"
#include "protocol/StatusLists.h"
#include "tests/support/ActiveWindow.h"
#include "tools/ConverterWindow.h"
#include "tools/FileListWindow.h"

#include <QIcon>
#include <QMenu>
#include <QMenuBar>
#include <QPlainTextEdit>
#include <QScrollArea>
#include <QScrollBar>
#include <QTimer>
#include <QToolTip>

namespace tavril {

void ScreenTour::tour(Visit visit) {
  visit_ = std::move(visit);
  show(QStringLiteral("not-connected"), *window);
  visitMenus();
  visitAbout();
  visitDoctor();
  visitConverter();
  visitConnecting();
  visitNotices();
  visitToolTip();
  visitQuestions();
  visitAlerts();
  visitFailure();
}

void ScreenTour::show(const QString &name, QWidget &screen) {
  ++number_;
  visit_(QStringLiteral("%1-%2").arg(number_, 2, 10, QChar(u'0')).arg(name), screen);
}

void ScreenTour::visitMenus() {
  int place = 0;
  const auto titles = window->menuBar()->actions();
  ASSERT_FALSE(titles.isEmpty());
  for (QAction *title : titles) {
    QMenu *menu = title->menu();
    ASSERT_NE(menu, nullptr);
    menu->popup(window->mapToGlobal(QPoint(40, 30)));
    ASSERT_TRUE(QTest::qWaitForWindowExposed(menu));
    show(QStringLiteral("menu-%1").arg(++place), *menu);
    for (QAction *item : menu->actions()) {
      if (!item->menu()) continue;
      item->menu()->popup(window->mapToGlobal(QPoint(40, 30)));
      ASSERT_TRUE(QTest::qWaitForWindowExposed(item->menu()));
      show(QStringLiteral("menu-%1-languages").arg(place), *item->menu());
      item->menu()->close();
    }
    menu->close();
  }
}

void ScreenTour::visitAbout() {
  choose(strings.text(u"about_tavril"));
  auto *about = window->findChild<AboutWindow *>();
  ASSERT_NE(about, nullptr);
  // It comes up with the bar that the text needs before the window has its size.
  const auto *bar = about->findChild<QPlainTextEdit *>(QStringLiteral("aboutContent"))->verticalScrollBar();
  ASSERT_TRUE(waitFor([&] { return !bar->isVisible(); }));
  show(QStringLiteral("about"), *about);
  about->close();
}

void ScreenTour::visitDoctor() {
  // As for somebody who may not use the port: the longest of what there is to say.
  DeviceNode &node = machine.node(servo.path());
  node.mayUse = false;
  node.group = QStringLiteral("dialout");
  machine.programs.running = {{812, QStringLiteral("ModemManager")}, {933, QStringLiteral("brltty")}};
  machine.programs.all = false;
  shortcut(Qt::Key_D, Qt::ControlModifier | Qt::ShiftModifier);
  auto *doctor = window->findChild<DoctorWindow *>();
  ASSERT_NE(doctor, nullptr);
  // Large enough for all of it, on a large screen.
  doctor->resize(680, 1100);
  auto *again = doctor->findChild<QWidget *>(QStringLiteral("again"));
  ASSERT_TRUE(waitFor([&] { return again->isEnabled(); }));
  const auto laidOut = [&] {
    const auto *bar = doctor->findChild<QScrollArea *>()->verticalScrollBar();
    return waitFor([&] { return bar->maximum() == 0; });
  };
  ASSERT_TRUE(laidOut());
  show(QStringLiteral("doctor-trouble"), *doctor);
  machine.node(servo.path());
  machine.programs.running.clear();
  machine.programs.all = true;
  press(again);
  ASSERT_TRUE(waitFor([&] { return again->isEnabled(); }));
  ASSERT_TRUE(laidOut());
  show(QStringLiteral("doctor-well"), *doctor);
  doctor->close();
}

void ScreenTour::visitConverter() {
  const QString folder = QStringLiteral("/home/anna/tables");
  preferences.values[QStringLiteral("stringTableFolder")] = folder;
  choose(strings.text(u"strings_converter"));
  auto *merging = window->findChild<ConverterWindow *>();
  ASSERT_NE(merging, nullptr);
  ASSERT_TRUE(QTest::qWaitForWindowExposed(merging));
  show(QStringLiteral("converter"), *merging);
  delete merging;
  choose(strings.text(u"string_tables"));
  auto *list = window->findChild<FileListWindow *>();
  ASSERT_NE(list, nullptr);
  ASSERT_TRUE(QTest::qWaitForWindowExposed(list));
  show(QStringLiteral("tables-empty"), *list);
  for (const char *name : {"/cs.strings.h", "/nl.strings.h", "/pt-BR.strings.h"}) {
    userFiles.put(folder + QString::fromLatin1(name), {});
  }
  choose(strings.text(u"string_tables"));
  show(QStringLiteral("tables"), *list);
  delete list;
}

void ScreenTour::visitConnecting() {
  shortcut(Qt::Key_P, Qt::ControlModifier);
  ASSERT_NE(dialog, nullptr);
  ASSERT_TRUE(QTest::qWaitForWindowExposed(dialog));
  makeActive(dialog);
  show(QStringLiteral("port-dialog"), *dialog);
  bool shown = false;
  wait.during = [&] {
    if (wait.waits.size() == 2 && !std::exchange(shown, true)) show(QStringLiteral("waiting"), *window);
  };
  press(dialog->findChild<QWidget *>(QStringLiteral("doneBT")));
  ASSERT_TRUE(waitFor([this] { return find<QWidget>("sID_value")->isEnabled(); }));
  ASSERT_TRUE(waitFor([this] { return !textOf("PresentLoad_value").isEmpty(); }));
  wait.during = nullptr;
  EXPECT_TRUE(shown);
  press("capture");
  ASSERT_TRUE(waitFor([this] { return !textOf("angle").isEmpty(); }));
  controller().Colorreset();
  makeActive(window);
  show(QStringLiteral("connected"), *window);
}

void ScreenTour::visitNotices() {
  auto *notice = find<QPlainTextEdit>("MsgView");
  notice->setPlainText(strings.text(u"NoticeMsg_ki"));
  find<QWidget>("Ki_value")->setFocus(Qt::TabFocusReason);
  show(QStringLiteral("notice"), *window);
  notice->setPlainText(strings.text(u"NoticeMsg_status_error") +
                       statusErrorList(4, desktop.log).text.in(strings));
  show(QStringLiteral("notice-with-list"), *window);
  notice->setPlainText(QString());
}

void ScreenTour::visitToolTip() {
  auto *field = find<QWidget>("ACK_value");
  ASSERT_FALSE(field->toolTip().isEmpty());
  QToolTip::showText(field->mapToGlobal(QPoint(4, 4)), field->toolTip(), field);
  QWidget *tip = nullptr;
  for (QWidget *candidate : QApplication::topLevelWidgets()) {
    if (candidate->inherits("QTipLabel") && candidate->isVisible()) tip = candidate;
  }
  ASSERT_NE(tip, nullptr);
  show(QStringLiteral("tool-tip"), *tip);
  QToolTip::hideText();
}

void ScreenTour::visitQuestions() {
  const std::pair<Qt::Key, const char *> questions[]{{Qt::Key_R, "reboot"}, {Qt::Key_Delete, "reset"}};
  for (const auto &[key, name] : questions) {
    shortcut(key, Qt::ControlModifier | Qt::ShiftModifier);
    ASSERT_TRUE(waitFor([this] { return find<QWidget>("ContrainerView_MsgView")->isVisible(); })) << name;
    ASSERT_EQ(textOf("MsgContent"), strings.text(QString::fromLatin1(name)));
    show(QString::fromLatin1(name), *window);
    press("cancel_lab");
  }
}

void ScreenTour::visitAlerts() {
  const auto text = [this](QStringView key) { return strings.text(key); };
  const QString ok = QStringLiteral("OK");
  const std::pair<const char *, AlertContent> alerts[]{
      {"alert-not-connected", {text(u"Error"), text(u"Not_connect"), {text(u"Confirm")}}},
      {"alert-no-servo", {text(u"Error"), text(u"no_servo"), {ok}}},
      {"alert-out-of-range",
       {text(u"Error"),
        text(u"Setting_value_is_out_of_range") + QStringLiteral("0~32766"),
        {text(u"Confirm")}}},
      {"alert-set", {text(u"SetOK"), QString(), {ok}}},
      {"alert-quit",
       {text(u"Could not save changes while quitting. Quit anyway?"),
        text(u"Quitting now will lose any changes you have made since the last successful save"),
        {text(u"Quit anyway"), text(u"Cancel")}}}};
  // As the installed program has it, whose alerts show it.
  QApplication::setWindowIcon(QIcon(QStringLiteral(TAVRIL_ICONS "/tavril-48.png")));
  ASSERT_FALSE(QApplication::windowIcon().availableSizes().isEmpty());
  QtModalAlert real(mainQueue);
  for (const auto &[name, content] : alerts) {
    bool shown = false;
    QTimer::singleShot(0, window, [&, label = QString::fromLatin1(name)] {
      QAbstractButton *button = alertButton();
      ASSERT_NE(button, nullptr);
      show(label, *button->window());
      shown = true;
      button->click();
    });
    real.run(content);
    ASSERT_TRUE(shown) << name;
  }
  QApplication::setWindowIcon({});
}

void ScreenTour::visitFailure() {
  // A device that does not answer: thirty seconds later.
  servo.withOptions([](simulator::Options &options) { options.mute = true; });
  application->serialFormat();
  makeActive(window);
  state.ObjectDictionaryArray.element(u"ContrainerView_WaitView").setHidden(false);
  for (int second = 0; second < 30; ++second) controller().ConnectTimeout();
  show(QStringLiteral("wait-failed"), *window);
  press("CloseButton");
  ASSERT_TRUE(waitFor([this] { return !find<QWidget>("sID_value")->isEnabled(); }));
  find<QWidget>("angle")->setFocus(Qt::OtherFocusReason);
  show(QStringLiteral("failed"), *window);
}

}  // namespace tavril
