#include "editor/screen/EntryField.h"
#include "editor/screen/ValueField.h"
#include "editor/screen/WidgetElement.h"
#include "platform/linux/QtMainQueue.h"
#include "platform/linux/QtModalAlert.h"
#include "tests/support/ActiveWindow.h"
#include "tests/support/WaitFor.h"

#include <QApplication>
#include <QClipboard>
#include <QMenu>
#include <QMessageBox>
#include <QPushButton>
#include <QSignalSpy>
#include <QTest>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace tavril {
namespace {

using testing::ElementsAre;

/// A window with one field of the kind and another one to go to.
template <typename Field>
class FieldTest : public testing::Test {
 protected:
  FieldTest() {
    field_ = new Field(&window_);
    other_ = new ValueField(&window_);
    other_->move(0, 40);
    window_.resize(300, 100);
    window_.show();
    makeActive(&window_);
    EXPECT_TRUE(QTest::qWaitForWindowActive(&window_));
    field_->setFocus();
  }

  void type(const QString &text) { QTest::keyClicks(field_, text); }
  void press(Qt::Key key) { QTest::keyClick(field_, key); }
  void goToOther() { QTest::mouseClick(other_, Qt::LeftButton); }

  void leaveWindowAndComeBack() {
    QWidget another;
    another.show();
    makeActive(&another);
    EXPECT_TRUE(waitFor([this] { return !field_->hasFocus(); }));
    makeActive(&window_);
    EXPECT_TRUE(waitFor([this] { return field_->hasFocus(); }));
  }

  /// Runs a real alert over the window, which takes the focus from the field, and closes it with Enter.
  void runAlert() {
    QTimer::singleShot(0, [this] {
      focusWasAway_ = waitFor([this] { return QApplication::activeModalWidget() && !field_->hasFocus(); });
      auto *box = qobject_cast<QMessageBox *>(QApplication::activeModalWidget());
      ASSERT_NE(box, nullptr);
      QTest::mouseClick(box->buttons().front(), Qt::LeftButton);
    });
    alert_.run({QStringLiteral("Error"), QStringLiteral("0~253"), {QStringLiteral("OK")}});
    // What a window manager does, of which there is none here.
    makeActive(&window_);
    ++alerts_;
  }

  QWidget window_;
  Field *field_ = nullptr;
  ValueField *other_ = nullptr;
  QtMainQueue queue_;
  QtModalAlert alert_{queue_};
  int alerts_ = 0;
  bool focusWasAway_ = false;
};

class ValueFieldTest : public FieldTest<ValueField> {
 protected:
  QSignalSpy committed_{field_, &ValueField::committed};
};

TEST_F(ValueFieldTest, ReturnCommitsAnEdit) {
  type(QStringLiteral("42"));
  EXPECT_EQ(committed_.size(), 0);
  press(Qt::Key_Return);
  EXPECT_EQ(committed_.size(), 1);
  EXPECT_EQ(field_->text(), QStringLiteral("42"));
}

TEST_F(ValueFieldTest, EnterOnTheKeypadCommitsAnEdit) {
  type(QStringLiteral("42"));
  press(Qt::Key_Enter);
  EXPECT_EQ(committed_.size(), 1);
}

TEST_F(ValueFieldTest, LeavingByThePointerCommitsAnEdit) {
  type(QStringLiteral("42"));
  goToOther();
  EXPECT_EQ(committed_.size(), 1);
}

TEST_F(ValueFieldTest, LeavingByTabCommitsAnEdit) {
  type(QStringLiteral("42"));
  press(Qt::Key_Tab);
  EXPECT_TRUE(other_->hasFocus());
  EXPECT_EQ(committed_.size(), 1);
}

TEST_F(ValueFieldTest, ReturnAndThenLeavingCommitsOnce) {
  type(QStringLiteral("42"));
  press(Qt::Key_Return);
  goToOther();
  EXPECT_EQ(committed_.size(), 1);
}

TEST_F(ValueFieldTest, NothingIsCommittedWithoutAnEdit) {
  press(Qt::Key_Return);
  goToOther();
  EXPECT_EQ(committed_.size(), 0);
}

TEST_F(ValueFieldTest, TheNextEditCommitsAgain) {
  type(QStringLiteral("4"));
  press(Qt::Key_Return);
  type(QStringLiteral("2"));
  press(Qt::Key_Return);
  EXPECT_EQ(committed_.size(), 2);
}

TEST_F(ValueFieldTest, ATextSetByTheProgramIsNoEdit) {
  field_->setText(QStringLiteral("42"));
  press(Qt::Key_Return);
  goToOther();
  EXPECT_EQ(committed_.size(), 0);
}

TEST_F(ValueFieldTest, ATextSetByTheProgramReplacesTheEditThatWasUnderWay) {
  type(QStringLiteral("42"));
  field_->setText(QStringLiteral("7"));
  goToOther();
  EXPECT_EQ(committed_.size(), 0);
}

TEST_F(ValueFieldTest, AnAlertRaisedByTheCommitOfReturnDoesNotCommitAgain) {
  QObject::connect(field_, &ValueField::committed, field_, [this] { runAlert(); });
  type(QStringLiteral("999"));
  press(Qt::Key_Return);
  EXPECT_TRUE(focusWasAway_);
  EXPECT_EQ(alerts_, 1);
  goToOther();
  EXPECT_EQ(committed_.size(), 1);
  EXPECT_EQ(alerts_, 1);
}

TEST_F(ValueFieldTest, AnAlertRaisedByTheCommitOfLeavingDoesNotCommitAgain) {
  QObject::connect(field_, &ValueField::committed, field_, [this] {
    runAlert();
    field_->setText(QStringLiteral("42"));
  });
  type(QStringLiteral("999"));
  goToOther();
  field_->setFocus();
  goToOther();
  EXPECT_EQ(committed_.size(), 1);
  EXPECT_EQ(field_->text(), QStringLiteral("42"));
}

TEST_F(ValueFieldTest, AnotherWindowTakingTheFocusCommitsNothingYet) {
  type(QStringLiteral("42"));
  leaveWindowAndComeBack();
  EXPECT_EQ(committed_.size(), 0);
  goToOther();
  EXPECT_EQ(committed_.size(), 1);
}

TEST_F(ValueFieldTest, AMenuTakingTheFocusCommitsNothingYet) {
  type(QStringLiteral("42"));
  QMenu menu(&window_);
  menu.addAction(QStringLiteral("Paste"));
  menu.popup(window_.mapToGlobal(QPoint(10, 10)));
  EXPECT_TRUE(waitFor([&] { return menu.isVisible(); }));
  menu.close();
  EXPECT_EQ(committed_.size(), 0);
  press(Qt::Key_Return);
  EXPECT_EQ(committed_.size(), 1);
}

TEST_F(ValueFieldTest, AReturnKeyHeldDownCommitsOnce) {
  type(QStringLiteral("42"));
  QKeyEvent first(QEvent::KeyPress, Qt::Key_Return, Qt::NoModifier, QStringLiteral("\r"), false);
  QKeyEvent repeated(QEvent::KeyPress, Qt::Key_Return, Qt::NoModifier, QStringLiteral("\r"), true);
  QApplication::sendEvent(field_, &first);
  QApplication::sendEvent(field_, &repeated);
  EXPECT_EQ(committed_.size(), 1);
}

class EntryFieldTest : public FieldTest<EntryField> {
 protected:
  EntryFieldTest() {
    QObject::connect(field_, &EntryField::began, field_, [this] { told_.append(QStringLiteral("began")); });
    QObject::connect(field_, &EntryField::changed, field_, [this] { told_.append(field_->text()); });
    QObject::connect(field_, &EntryField::ended, field_, [this] { told_.append(QStringLiteral("ended")); });
  }

  QStringList told_;
};

TEST_F(EntryFieldTest, TellsTheBeginningEachChangeAndTheEnd) {
  type(QStringLiteral("51"));
  press(Qt::Key_Backspace);
  press(Qt::Key_Return);
  EXPECT_THAT(told_, ElementsAre("began", "5", "51", "5", "ended"));
}

TEST_F(EntryFieldTest, LeavingEndsAnEditOnce) {
  type(QStringLiteral("5"));
  goToOther();
  field_->setFocus();
  goToOther();
  EXPECT_THAT(told_, ElementsAre("began", "5", "ended"));
}

TEST_F(EntryFieldTest, ReturnAndThenLeavingEndsOnce) {
  type(QStringLiteral("5"));
  press(Qt::Key_Return);
  goToOther();
  EXPECT_THAT(told_, ElementsAre("began", "5", "ended"));
}

TEST_F(EntryFieldTest, LeavingWithoutAnEditTellsNothing) {
  goToOther();
  EXPECT_THAT(told_, ElementsAre());
}

TEST_F(EntryFieldTest, ReturnEndsAlsoWithoutAnEditSoThatAPositionCanBeSentAgain) {
  field_->setText(QStringLiteral("511"));
  press(Qt::Key_Return);
  EXPECT_THAT(told_, ElementsAre("ended"));
}

TEST_F(EntryFieldTest, ATextSetByTheProgramIsNoChange) {
  field_->setText(QStringLiteral("511"));
  EXPECT_THAT(told_, ElementsAre());
}

TEST_F(EntryFieldTest, EachEditHasItsBeginning) {
  type(QStringLiteral("5"));
  press(Qt::Key_Return);
  type(QStringLiteral("1"));
  press(Qt::Key_Return);
  EXPECT_THAT(told_, ElementsAre("began", "5", "ended", "began", "51", "ended"));
}

TEST_F(EntryFieldTest, AnAlertRaisedByAChangeDoesNotEndTheEdit) {
  type(QStringLiteral("102"));
  told_.clear();
  QObject::connect(field_, &EntryField::changed, field_, [this] { runAlert(); });
  type(QStringLiteral("4"));
  EXPECT_TRUE(focusWasAway_);
  EXPECT_EQ(alerts_, 1);
  EXPECT_THAT(told_, ElementsAre("1024"));
  EXPECT_TRUE(waitFor([this] { return field_->hasFocus(); }));
  press(Qt::Key_Return);
  EXPECT_THAT(told_, ElementsAre("1024", "ended"));
}

TEST_F(EntryFieldTest, AnAlertRaisedByTheEndDoesNotEndAgain) {
  QObject::connect(field_, &EntryField::ended, field_, [this] { runAlert(); });
  type(QStringLiteral("9"));
  press(Qt::Key_Return);
  EXPECT_TRUE(focusWasAway_);
  goToOther();
  EXPECT_THAT(told_, ElementsAre("began", "9", "ended"));
  EXPECT_EQ(alerts_, 1);
}

TEST_F(EntryFieldTest, AnAlertRaisedByTheEndOnLeavingDoesNotEndAgain) {
  QObject::connect(field_, &EntryField::ended, field_, [this] { runAlert(); });
  type(QStringLiteral("9"));
  goToOther();
  EXPECT_THAT(told_, ElementsAre("began", "9", "ended"));
  EXPECT_EQ(alerts_, 1);
}

TEST(EditLine, RefusesAnEntryOfMoreThan32CharactersAndCutsNone) {
  ValueField field;
  WidgetElement::over(field)->setText(QStringLiteral("7"));
  QSignalSpy edited(&field, &QLineEdit::textEdited);
  const QString longest(32, u'0');
  const auto paste = [&](const QString &text) {
    field.selectAll();
    QGuiApplication::clipboard()->setText(text);
    QTest::keyClick(&field, Qt::Key_V, Qt::ControlModifier);
  };
  paste(longest + u'5');
  EXPECT_EQ(field.text(), QStringLiteral("7")) << "and not 32 zeros";
  EXPECT_EQ(edited.size(), 0);
  paste(longest);
  EXPECT_EQ(field.text(), longest);
  QTest::keyClicks(&field, QStringLiteral("5"));
  EXPECT_EQ(field.text(), longest);
  QTest::keyClick(&field, Qt::Key_Backspace);
  QTest::keyClicks(&field, QStringLiteral("5"));
  EXPECT_EQ(field.text(), QString(31, u'0') + u'5');
}

TEST(EditLine, ShowsWhateverTheProgramPutsIntoIt) {
  ValueField field;
  const QString text(40, u'9');
  WidgetElement::over(field)->setText(text);
  EXPECT_EQ(field.text(), text);
  QSignalSpy returned(&field, &QLineEdit::returnPressed);
  QTest::keyClick(&field, Qt::Key_Return);
  EXPECT_EQ(field.text(), text);
}

}  // namespace
}  // namespace tavril
