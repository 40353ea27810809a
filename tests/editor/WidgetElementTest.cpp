#include "editor/screen/ButtonLabel.h"
#include "editor/screen/ValueField.h"
#include "editor/screen/WidgetElement.h"
#include "tests/support/ActiveWindow.h"

#include <QAccessible>
#include <QApplication>
#include <QFrame>
#include <QLabel>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QScrollBar>
#include <QSignalSpy>
#include <QTest>
#include <QTextDocumentFragment>

#include <gtest/gtest.h>

namespace tavril {
namespace {

TEST(WidgetElement, AFieldsTextAndNumberAreReadAndSet) {
  ValueField field;
  const auto element = WidgetElement::over(field);
  element->setText(QStringLiteral("12a"));
  EXPECT_EQ(field.text(), QStringLiteral("12a"));
  EXPECT_EQ(element->integerValue(), 12);
  element->setIntegerValue(-10);
  EXPECT_EQ(element->text(), QStringLiteral("-10"));
}

TEST(WidgetElement, ALongTextInAFieldShowsItsBeginning) {
  ValueField field;
  WidgetElement::over(field)->setText(QString(200, u'9'));
  EXPECT_EQ(field.cursorPosition(), 0);
}

TEST(WidgetElement, ATextSetThroughAnElementIsNoEdit) {
  ValueField field;
  QSignalSpy committed(&field, &ValueField::committed);
  QSignalSpy edited(&field, &QLineEdit::textEdited);
  const auto element = WidgetElement::over(field);
  QTest::keyClicks(&field, QStringLiteral("42"));
  element->setText(QStringLiteral("42"));
  QTest::keyClick(&field, Qt::Key_Return);
  EXPECT_EQ(edited.size(), 2);
  EXPECT_EQ(committed.size(), 0);
}

TEST(WidgetElement, DisablingAFieldThatIsBeingEditedCommitsNothing) {
  QWidget window;
  ValueField field(&window);
  ValueField other(&window);
  QSignalSpy committed(&field, &ValueField::committed);
  window.show();
  makeActive(&window);
  field.setFocus();
  ASSERT_TRUE(field.hasFocus());
  QTest::keyClicks(&field, QStringLiteral("999"));
  WidgetElement::over(field)->setEnabled(false);
  EXPECT_FALSE(field.hasFocus());
  EXPECT_EQ(committed.size(), 0);
}

TEST(WidgetElement, LabelsButtonsAndTextViewsHaveTheirTexts) {
  QLabel label;
  ButtonLabel button;
  QPlainTextEdit view;
  for (QWidget *widget :
       {static_cast<QWidget *>(&label), static_cast<QWidget *>(&button), static_cast<QWidget *>(&view)}) {
    const auto element = WidgetElement::over(*widget);
    element->setText(QStringLiteral("Read"));
    EXPECT_EQ(element->text(), QStringLiteral("Read"));
  }
  EXPECT_EQ(label.text(), QStringLiteral("Read"));
  EXPECT_EQ(button.text(), QStringLiteral("Read"));
  EXPECT_EQ(view.toPlainText(), QStringLiteral("Read"));
}

TEST(WidgetElement, AFrameRoundATextViewHasTheViewsText) {
  QFrame frame;
  auto *view = new QPlainTextEdit(&frame);
  const auto element = WidgetElement::over(frame);
  element->setText(QStringLiteral("About Kp"));
  EXPECT_EQ(view->toPlainText(), QStringLiteral("About Kp"));
  EXPECT_EQ(element->text(), QStringLiteral("About Kp"));
  element->setHidden(true);
  EXPECT_TRUE(frame.isHidden());
}

TEST(WidgetElement, ANoBreakSpaceInATextViewStaysOne) {
  QFrame frame;
  new QPlainTextEdit(&frame);
  const auto element = WidgetElement::over(frame);
  const QString text = QStringLiteral("10\u00a0ms\nde 0 \u00e0 253\u202f%\n");
  element->setText(text);
  EXPECT_EQ(element->text(), text);
}

TEST(WidgetElement, ATextViewThatIsGivenItsTextAgainKeepsItsScrollAndSelection) {
  QFrame frame;
  auto *view = new QPlainTextEdit(&frame);
  const auto element = WidgetElement::over(frame);
  const QString text = QStringLiteral("10\u00a0ms\n").repeated(100);
  element->setText(text);
  frame.show();
  QTextCursor cursor = view->textCursor();
  cursor.setPosition(350);
  cursor.setPosition(355, QTextCursor::KeepAnchor);
  view->setTextCursor(cursor);
  const int scroll = view->verticalScrollBar()->value();
  ASSERT_GT(scroll, 0);
  element->setText(text);
  EXPECT_EQ(view->textCursor().anchor(), 350);
  EXPECT_EQ(view->textCursor().position(), 355);
  EXPECT_EQ(view->verticalScrollBar()->value(), scroll);
}

TEST(WidgetElement, AnAmpersandOnAButtonIsShownAndIsNoKey) {
  ButtonLabel label;
  QPushButton button;
  for (QAbstractButton *one :
       {static_cast<QAbstractButton *>(&label), static_cast<QAbstractButton *>(&button)}) {
    const auto element = WidgetElement::over(*one);
    element->setText(QStringLiteral("R&D"));
    EXPECT_EQ(element->text(), QStringLiteral("R&D"));
    EXPECT_TRUE(one->shortcut().isEmpty());
    EXPECT_EQ(QAccessible::queryAccessibleInterface(one)->text(QAccessible::Name), QStringLiteral("R&D"));
  }
  // "R&D" is drawn as wide as it is, and not wider or narrower by a sign.
  ButtonLabel other;
  WidgetElement::over(other)->setText(QStringLiteral("R+D"));
  const int apart = label.fontMetrics().horizontalAdvance(u'&') - label.fontMetrics().horizontalAdvance(u'+');
  EXPECT_NEAR(label.sizeHint().width() - other.sizeHint().width(), apart, 2);
}

TEST(WidgetElement, AContainersTextIsEmptyAndStaysSo) {
  QWidget container;
  const auto element = WidgetElement::over(container);
  element->setText(QStringLiteral("text"));
  EXPECT_EQ(element->text(), QString());
}

TEST(WidgetElement, AToolTipIsPlainTextWhateverItReads) {
  QWidget widget;
  const auto element = WidgetElement::over(widget);
  const QString markup = QStringLiteral("<b>0</b> to <img src=\"/dev/tty\"> 5 & more");
  element->setToolTip(markup);
  EXPECT_EQ(element->toolTip(), markup);
  EXPECT_TRUE(Qt::mightBeRichText(widget.toolTip()));
  EXPECT_EQ(QTextDocumentFragment::fromHtml(widget.toolTip()).toPlainText(), markup);
}

TEST(WidgetElement, StateToolTipAndIdentifierAreTheWidgets) {
  ButtonLabel button;
  button.setProperty("identifier", QStringLiteral("read"));
  const auto element = WidgetElement::over(button);
  EXPECT_EQ(element->identifier(), QStringLiteral("read"));
  EXPECT_TRUE(element->isEnabled());
  element->setEnabled(false);
  EXPECT_FALSE(button.isEnabled());
  EXPECT_FALSE(element->isEnabled());
  element->setHidden(false);
  EXPECT_FALSE(element->isHidden());
  element->setHidden(true);
  EXPECT_TRUE(element->isHidden());
  EXPECT_FALSE(button.isVisible());
  element->setToolTip(QStringLiteral("0 to 253"));
  EXPECT_EQ(button.toolTip(), QStringLiteral("0 to 253"));
  EXPECT_EQ(element->toolTip(), QStringLiteral("0 to 253"));
}

TEST(WidgetElement, AWidgetThatIsGoneReadsAsEmptyAndTakesNothing) {
  auto field = std::make_unique<ValueField>();
  const auto element = WidgetElement::over(*field);
  element->setText(QStringLiteral("42"));
  field.reset();
  element->setText(QStringLiteral("43"));
  element->setEnabled(true);
  EXPECT_EQ(element->text(), QString());
  EXPECT_EQ(element->identifier(), QString());
  EXPECT_FALSE(element->isEnabled());
  EXPECT_TRUE(element->isHidden());
}

}  // namespace
}  // namespace tavril
