// Every text can be told from what is behind it, as it is really drawn.
#include "tests/gui/ScreenTour.h"
#include "tests/gui/TextFit.h"
#include "tests/support/DrawnContrast.h"

namespace tavril {
namespace {

class ContrastTest : public ScreenTour {};

TEST_P(ContrastTest, EveryTextOnEveryScreenHasEnough) {
  int count = 0;
  tour([&](const QString &name, QWidget &screen) {
    const TextFit texts(screen);
    for (const auto &[element, rect] : texts.places()) {
      // Not the edge or the focus ring of what has one.
      const QRect inside = rect.height() > 20 ? rect.adjusted(3, 3, -3, -3) : rect;
      EXPECT_GE(drawnContrast(screen.grab(inside).toImage()), enoughForText)
          << name.toStdString() << ' ' << element->objectName().toStdString();
      ++count;
    }
  });
  EXPECT_GT(count, 200);
}

TEST(Contrast, OfAFaintTextIsFoundOut) {
  QImage picture(20, 20, QImage::Format_RGB32);
  picture.fill(QColor(0x1b, 0x20, 0x27));
  picture.setPixelColor(5, 5, QColor(0x60, 0x68, 0x72));
  EXPECT_LT(drawnContrast(picture), enoughForText);
  picture.setPixelColor(5, 5, Qt::white);
  EXPECT_GT(drawnContrast(picture), enoughForText);
}

INSTANTIATE_TEST_SUITE_P(Languages, ContrastTest, testing::ValuesIn(languageParameters()), languageTestName);

}  // namespace
}  // namespace tavril
