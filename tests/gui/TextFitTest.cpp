// No text on any screen is cut, elided or in the way of another, in any language.
#include "tests/gui/ScreenTour.h"
#include "tests/support/TextFit.h"

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

INSTANTIATE_TEST_SUITE_P(Languages, TextFitTest,
                         testing::ValuesIn(shippedLanguages(QStringLiteral(TAVRIL_STRINGS))),
                         languageTestName);

}  // namespace
}  // namespace tavril
