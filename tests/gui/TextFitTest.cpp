// No text on any screen is cut, elided or in the way of another, in any language.
#include "editor/screen/FrameField.h"
#include "tests/gui/ScreenTour.h"
#include "tests/gui/TextFit.h"

#include <QLabel>
#include <QPlainTextEdit>

#include <gmock/gmock.h>

namespace tavril {
namespace {

class TextFitTest : public ScreenTour {};

TEST_P(TextFitTest, EveryTextOnEveryScreenIsShownWhole) {
  int screens = 0;
  tour([&](const QString &name, QWidget &screen) {
    const TextFit fit(screen);
    EXPECT_GT(fit.count(), 0) << name.toStdString();
    for (const QString &problem : fit.problems())
      ADD_FAILURE() << name.toStdString() << ": " << problem.toStdString();
    ++screens;
  });
  EXPECT_GE(screens, 18);
}

/// A window with one label of this size and text.
QStringList problemsOf(const QString &text, QSize size, bool wraps) {
  QWidget screen;
  screen.resize(400, 300);
  QLabel label(text, &screen);
  label.setWordWrap(wraps);
  label.setGeometry(QRect(QPoint(10, 10), size));
  screen.show();
  return TextFit(screen).problems();
}

TEST(TextFit, FindsATextThatIsCut) {
  EXPECT_THAT(problemsOf(QStringLiteral("short"), {200, 40}, false), testing::IsEmpty());
  EXPECT_THAT(problemsOf(QString(60, u'x'), {200, 40}, false), testing::Not(testing::IsEmpty()));
  EXPECT_THAT(problemsOf(QStringLiteral("some words ").repeated(20), {200, 40}, true),
              testing::Not(testing::IsEmpty()));
}

TEST(TextFit, FindsTextsThatRunIntoEachOther) {
  QWidget screen;
  screen.resize(400, 300);
  QLabel one(QStringLiteral("one text"), &screen);
  QLabel other(QStringLiteral("another"), &screen);
  one.setGeometry(10, 10, 200, 30);
  other.setGeometry(40, 10, 200, 30);
  screen.show();
  EXPECT_EQ(TextFit(screen).problems().size(), 1);
  other.move(10, 100);
  EXPECT_THAT(TextFit(screen).problems(), testing::IsEmpty());
}

TEST(TextFit, FindsATextThatHasToBeScrolledOrIsElided) {
  QWidget screen;
  screen.resize(400, 300);
  QPlainTextEdit view(QStringLiteral("line\n").repeated(40), &screen);
  view.setGeometry(0, 0, 200, 100);
  FrameField frame(&screen);
  frame.setGeometry(220, 0, 60, 20);
  frame.setText(QStringLiteral("TX: ff 4 97 ff ff ff ff fe"));
  screen.show();
  EXPECT_EQ(TextFit(screen).problems().size(), 2);
}

INSTANTIATE_TEST_SUITE_P(Languages, TextFitTest, testing::ValuesIn(languageParameters()), languageTestName);

}  // namespace
}  // namespace tavril
