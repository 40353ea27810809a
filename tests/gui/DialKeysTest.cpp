#include "tests/gui/DialBench.h"

#include <QAccessible>

#include <private/qguiapplication_p.h>
#include <qpa/qplatformaccessibility.h>
#include <qpa/qplatformintegration.h>

namespace tavril {
namespace {

class DialKeys : public DialBench {
 protected:
  ~DialKeys() override {
    QAccessible::installUpdateHandler(nullptr);
    announced().clear();
  }

  void key(Qt::Key key, Qt::KeyboardModifiers modifiers = {}) { QTest::keyClick(dialView(), key, modifiers); }
  QAccessibleInterface *accessible() { return QAccessible::queryAccessibleInterface(dialView()); }

  /// Values that were announced; a handler of Qt's has nothing to carry along.
  static QList<QVariant> &announced() {
    static QList<QVariant> values;
    return values;
  }
  static void announce(QAccessibleEvent *event) {
    if (event->type() != QAccessible::ValueChanged) return;
    if (!qobject_cast<DialView *>(event->object())) return;
    announced().append(static_cast<QAccessibleValueChangeEvent *>(event)->value());
  }
};

TEST_F(DialKeys, TabReachesTheDialAndTheFocusIsVisible) {
  movePointer(100, 100);
  entry()->setText(QStringLiteral("300"));
  entry()->setFocus();
  const QImage dialBefore = dialView()->grab().toImage();
  const QImage knobBefore = find<QWidget>("MotorPoint")->grab().toImage();
  QTest::keyClick(window, Qt::Key_Backtab, Qt::ShiftModifier);
  EXPECT_TRUE(dialView()->hasFocus());
  EXPECT_NE(dialView()->grab().toImage(), dialBefore);
  EXPECT_NE(find<QWidget>("MotorPoint")->grab().toImage(), knobBefore);
  QTest::keyClick(window, Qt::Key_Tab);
  EXPECT_TRUE(entry()->hasFocus());
  EXPECT_EQ(dialView()->grab().toImage(), dialBefore);
}

TEST_F(DialKeys, EveryKeyStepsThePositionAndSendsIt) {
  connectAndForget();
  dialView()->setFocus();
  clickPointer(850, 539);
  key(Qt::Key_Up);
  EXPECT_EQ(textOf("angle"), QStringLiteral("205"));
  EXPECT_EQ(state.limitFlag, QString());
  key(Qt::Key_Right);
  key(Qt::Key_Down);
  key(Qt::Key_Left);
  EXPECT_EQ(textOf("angle"), QStringLiteral("204"));
  key(Qt::Key_PageUp);
  key(Qt::Key_PageDown);
  key(Qt::Key_PageDown);
  key(Qt::Key_Home);
  EXPECT_EQ(knobFrame().topLeft(), QPoint(839, 768 - 471 - 22));
  key(Qt::Key_End);
  EXPECT_EQ(knobFrame().topLeft(), QPoint(773, 768 - 471 - 22));
  EXPECT_EQ(dialView()->position(), 1023);
  EXPECT_TRUE(
      receivesExactly({"FF 06 96 00 CC FE", "FF 06 96 00 CD FE", "FF 06 96 00 CE FE", "FF 06 96 00 CD FE",
                       "FF 06 96 00 CC FE", "FF 06 96 00 D6 FE", "FF 06 96 00 CC FE", "FF 06 96 00 C2 FE",
                       "FF 06 96 00 00 FE", "FF 06 96 03 FF FE"}));
}

TEST_F(DialKeys, StepsAreClampedAtTheEndsAndSentAllTheSame) {
  connectAndForget();
  key(Qt::Key_Home);
  key(Qt::Key_Left);
  key(Qt::Key_PageDown);
  key(Qt::Key_End);
  key(Qt::Key_Up);
  key(Qt::Key_PageUp);
  EXPECT_TRUE(receivesExactly({"FF 06 96 00 00 FE", "FF 06 96 00 00 FE", "FF 06 96 00 00 FE",
                               "FF 06 96 03 FF FE", "FF 06 96 03 FF FE", "FF 06 96 03 FF FE"}));
}

TEST_F(DialKeys, WhileNoPositionIsKnownTheFirstStepStartsWhereTheKnobStands) {
  EXPECT_EQ(dialView()->position(), std::nullopt);
  const QRect knob = knobFrame();
  key(Qt::Key_Up);
  EXPECT_EQ(textOf("angle"), QStringLiteral("512"));
  EXPECT_LE((knobFrame().topLeft() - knob.topLeft()).manhattanLength(), 2);
}

TEST_F(DialKeys, AStepAfterATypedPositionStartsThere) {
  entry()->setFocus();
  QTest::keyClicks(entry(), QStringLiteral("300"));
  key(Qt::Key_Up);
  EXPECT_EQ(textOf("angle"), QStringLiteral("301"));
}

TEST_F(DialKeys, KeysWithControlAreNotTheDials) {
  entry()->setText(QStringLiteral("300"));
  key(Qt::Key_Up, Qt::ControlModifier);
  key(Qt::Key_End, Qt::AltModifier);
  key(Qt::Key_5);
  EXPECT_EQ(textOf("angle"), QStringLiteral("300"));
  key(Qt::Key_Up, Qt::KeypadModifier);
  EXPECT_EQ(textOf("angle"), QStringLiteral("301"));
}

TEST_F(DialKeys, AssistiveTechnologiesFindADialWithAValue) {
  ASSERT_NE(accessible(), nullptr);
  EXPECT_EQ(accessible()->role(), QAccessible::Dial);
  EXPECT_EQ(accessible()->text(QAccessible::Name), strings.text(u"dial"));
  EXPECT_EQ(accessible()->text(QAccessible::Description), strings.text(u"dial_help"));
  EXPECT_EQ(accessible()->text(QAccessible::Value), QStringLiteral("\u2013"));
  EXPECT_TRUE(accessible()->state().focusable);
  QAccessibleValueInterface *value = accessible()->valueInterface();
  ASSERT_NE(value, nullptr);
  EXPECT_EQ(value->minimumValue(), 0);
  EXPECT_EQ(value->maximumValue(), 1023);
  EXPECT_EQ(value->minimumStepSize(), 1);
  entry()->setText(QStringLiteral("300"));
  EXPECT_EQ(value->currentValue(), 300);
  EXPECT_EQ(accessible()->text(QAccessible::Value), QStringLiteral("300"));
}

TEST_F(DialKeys, SettingTheAccessibleValueActsAsAStepOfTheKeys) {
  connectAndForget();
  QAccessibleValueInterface *value = accessible()->valueInterface();
  value->setCurrentValue(600);
  EXPECT_EQ(textOf("angle"), QStringLiteral("600"));
  EXPECT_EQ(state.limitFlag, QString());
  value->setCurrentValue(5000);
  value->setCurrentValue(-1);
  EXPECT_EQ(value->currentValue(), 0);
  EXPECT_TRUE(receivesExactly({"FF 06 96 02 58 FE", "FF 06 96 03 FF FE", "FF 06 96 00 00 FE"}));
}

TEST_F(DialKeys, UnderAPanelTheAccessibleValueCannotBeSet) {
  entry()->setText(QStringLiteral("300"));
  find<QWidget>("ContrainerView_WaitView")->setHidden(false);
  accessible()->valueInterface()->setCurrentValue(600);
  EXPECT_EQ(textOf("angle"), QStringLiteral("300"));
}

TEST_F(DialKeys, ChangesOfTheValueAreAnnounced) {
  // As when a screen reader has come; there is no public way to say so.
  QGuiApplicationPrivate::platformIntegration()->accessibility()->setActive(true);
  QAccessible::installUpdateHandler(&DialKeys::announce);
  clickPointer(850, 539);
  key(Qt::Key_Up);
  controller().UpdateMotorValue(700);
  EXPECT_EQ(announced(), (QList<QVariant>{204, 205, 700}));
}

}  // namespace
}  // namespace tavril
