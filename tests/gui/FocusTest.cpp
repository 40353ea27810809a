// The keyboard alone: everything that can be used is reached by Tab in a sensible order, and shows that it
// has the focus.
#include "editor/AboutWindow.h"
#include "protocol/RegisterCatalogue.h"
#include "tests/gui/ScreenTour.h"
#include "tests/gui/TextFit.h"
#include "tests/support/ActiveWindow.h"

#include <QAccessible>
#include <QPlainTextEdit>

#include <gmock/gmock.h>

namespace tavril {
namespace {

using testing::ElementsAreArray;

/// The elements that Tab leads to, in order, from the first one round.
QStringList tabOrder(QWidget &screen, const QString &first) {
  auto *start = screen.findChild<QWidget *>(first);
  start->setFocus(Qt::TabFocusReason);
  QStringList order;
  for (int i = 0; i < 100; ++i) {
    QWidget *focus = QApplication::focusWidget();
    if (!focus || (i > 0 && focus == start)) break;
    order.append(focus->objectName());
    QTest::keyClick(focus, Qt::Key_Tab);
  }
  return order;
}

QList<QWidget *> focusable(const QWidget &screen) {
  QList<QWidget *> elements = TextFit::seen(screen);
  elements.removeIf([](const QWidget *element) {
    return !(element->focusPolicy() & Qt::TabFocus) || !element->isEnabled();
  });
  return elements;
}

class FocusTest : public GuiBench {
 protected:
  void activate(QWidget &screen) {
    ASSERT_TRUE(QTest::qWaitForWindowExposed(&screen));
    makeActive(&screen);
    ASSERT_EQ(QApplication::activeWindow(), &screen);
  }

  QImage drawn(const QWidget &element) {
    QWidget *screen = element.window();
    constexpr int around = 3;
    const QRect place(element.mapTo(screen, QPoint()), element.size());
    return screen->grab(place.adjusted(-around, -around, around, around)).toImage();
  }

  /// Each element that can have the focus, drawn with it and without it.
  int checkThatFocusShows(QWidget &screen) {
    activate(screen);
    int count = 0;
    for (QWidget *element : focusable(screen)) {
      // Another of its kind takes the focus away.
      for (QWidget *other : focusable(screen)) {
        if (other != element) other->setFocus(Qt::TabFocusReason);
      }
      const QImage without = drawn(*element);
      element->setFocus(Qt::TabFocusReason);
      EXPECT_TRUE(element->hasFocus()) << element->objectName().toStdString();
      EXPECT_NE(drawn(*element), without) << element->objectName().toStdString();
      ++count;
    }
    return count;
  }
};

TEST_F(FocusTest, TabGoesDownTheRowsThenToTheButtonsThenRight) {
  connectToServo();
  activate(*window);
  QStringList expected;
  for (const RegisterRow &row : settingRegisters()) expected.append(row.valueKey.toString());
  expected += {"read", "detail_set"};
  if (find<QWidget>("imageView")->focusPolicy() & Qt::TabFocus) expected.append("imageView");
  expected += {"angle", "motor_set", "relax", "capture", "MsgView", "TXcmd", "RXcmd"};
  EXPECT_THAT(tabOrder(*window, "sID_value"), ElementsAreArray(expected));
}

TEST_F(FocusTest, BeforeTheConnectionTheFocusIsWhereSomethingCanBeEntered) {
  EXPECT_EQ(QApplication::focusWidget(), find<QWidget>("angle"));
}

TEST_F(FocusTest, TabInThePortDialogGoesFromThePortToTheButtons) {
  shortcut(Qt::Key_P, Qt::ControlModifier);
  activate(*dialog);
  EXPECT_THAT(tabOrder(*dialog, "portCombo"), ElementsAreArray({"portCombo", "cancel", "doneBT"}));
}

TEST_F(FocusTest, ThePortDialogOpensWithTheFocusOnThePort) {
  shortcut(Qt::Key_P, Qt::ControlModifier);
  activate(*dialog);
  ASSERT_NE(QApplication::focusWidget(), nullptr);
  EXPECT_EQ(QApplication::focusWidget()->objectName(), QStringLiteral("portCombo"));
  QTest::keyClick(dialog, Qt::Key_Return);
  EXPECT_TRUE(waitFor([this] { return dialog.isNull(); })) << "Return confirms";
}

TEST_F(FocusTest, TheFieldThatTabReachesShowsItsNotice) {
  connectToServo();
  activate(*window);
  const auto notice = [this] { return find<QPlainTextEdit>("MsgView")->toPlainText(); };
  find<QWidget>("capture")->setFocus();
  find<QWidget>(qPrintable(settingRegisters().front().valueKey.toString()))->setFocus(Qt::TabFocusReason);
  for (const RegisterRow &row : settingRegisters()) {
    EXPECT_EQ(QApplication::focusWidget()->objectName(), row.valueKey.toString());
    EXPECT_EQ(notice(), strings.text(row.noticeKey())) << row.number;
    QTest::keyClick(QApplication::focusWidget(), Qt::Key_Tab);
  }
  const QString last = notice();
  QTest::keyClick(QApplication::focusWidget(), Qt::Key_Tab);
  EXPECT_EQ(notice(), last) << "what has no notice leaves the last one";
}

TEST_F(FocusTest, AWindowThatBecomesActiveAgainLeavesTheNotice) {
  connectToServo();
  activate(*window);
  find<QWidget>("Kp_value")->setFocus(Qt::TabFocusReason);
  controller().mouseMoved({500, 630});
  const QString hovered = strings.text(u"NoticeMsg_sid");
  QWidget other;
  other.show();
  activate(other);
  activate(*window);
  ASSERT_TRUE(find<QWidget>("Kp_value")->hasFocus());
  EXPECT_EQ(find<QPlainTextEdit>("MsgView")->toPlainText(), hovered);
}

TEST_F(FocusTest, APanelThatGoesLeavesTheNotice) {
  connectToServo();
  activate(*window);
  find<QWidget>("Kp_value")->setFocus(Qt::TabFocusReason);
  controller().mouseMoved({500, 630});
  const QString hovered = strings.text(u"NoticeMsg_sid");
  auto *panel = find<QWidget>("ContrainerView_WaitView");
  panel->show();
  ASSERT_FALSE(find<QWidget>("Kp_value")->hasFocus());
  panel->hide();
  ASSERT_TRUE(find<QWidget>("Kp_value")->hasFocus());
  EXPECT_EQ(find<QPlainTextEdit>("MsgView")->toPlainText(), hovered);
}

TEST_F(FocusTest, ShowsOnEveryElementOfTheWindow) {
  connectToServo();
  EXPECT_GE(checkThatFocusShows(*window), 24);
}

TEST_F(FocusTest, ShowsOnEveryElementOfThePanelsAndTheDialog) {
  shortcut(Qt::Key_P, Qt::ControlModifier);
  EXPECT_EQ(checkThatFocusShows(*dialog), 3);
  dialog->reject();
  find<QWidget>("ContrainerView_WaitView")->show();
  find<QWidget>("CloseButtonView")->show();
  EXPECT_EQ(checkThatFocusShows(*window), 3);
  find<QWidget>("ContrainerView_WaitView")->hide();
  find<QWidget>("ContrainerView_MsgView")->show();
  EXPECT_EQ(checkThatFocusShows(*window), 3);
}

TEST_F(FocusTest, ShowsOnEveryElementOfAbout) {
  choose(strings.text(u"about_tavril"));
  auto *about = window->findChild<AboutWindow *>();
  ASSERT_NE(about, nullptr);
  EXPECT_EQ(checkThatFocusShows(*about), 5);
}

class NamesTest : public ScreenTour {};

TEST_P(NamesTest, EverythingThatCanHaveTheFocusHasANameOfItsOwn) {
  int count = 0;
  tour([&](const QString &screenName, QWidget &screen) {
    QSet<QString> names;
    for (QWidget *element : focusable(screen)) {
      QAccessibleInterface *interface = QAccessible::queryAccessibleInterface(element);
      ASSERT_NE(interface, nullptr);
      QString name = interface->text(QAccessible::Name);
      // A menu is named by its item in the bar, a combo box by what it shows and, through a relation, its
      // caption.
      for (const auto &[other, relation] : interface->relations(QAccessible::Label)) {
        if (name.isEmpty() || interface->role() == QAccessible::ComboBox)
          name = other->text(QAccessible::Name);
      }
      EXPECT_FALSE(name.isEmpty()) << screenName.toStdString() << ' ' << element->objectName().toStdString();
      EXPECT_FALSE(names.contains(name)) << screenName.toStdString() << ' ' << name.toStdString();
      names.insert(name);
      ++count;
    }
  });
  EXPECT_GT(count, 80);
}

INSTANTIATE_TEST_SUITE_P(Languages, NamesTest, testing::ValuesIn(languageParameters()), languageTestName);

}  // namespace
}  // namespace tavril
