// On a screen with twice the pixels nothing is a small picture made larger.
#include "tests/gui/ScreenTour.h"
#include "tests/gui/TextFit.h"

#include <QPainter>
#include <QPixmap>

namespace tavril {
namespace {

class SharpnessTest : public ScreenTour {};

QImage renderedAt(QWidget &widget, double ratio) {
  QImage picture(widget.size() * ratio, QImage::Format_RGB32);
  picture.setDevicePixelRatio(ratio);
  picture.fill(Qt::black);
  widget.render(&picture);
  return picture;
}

struct Grain {
  int inked = 0;  ///< blocks of two by two pixels that differ from a neighbour
  int fine = 0;   ///< of these, blocks with more than one colour: a picture made larger has none
};

Grain grainOf(const QImage &picture, const QRect &place) {
  Grain grain;
  for (int y = place.top() & ~1; y + 1 < qMin(place.bottom(), picture.height()); y += 2) {
    for (int x = place.left() & ~1; x + 3 < qMin(place.right(), picture.width()); x += 2) {
      const QRgb colour = picture.pixel(x, y);
      const bool isFine = colour != picture.pixel(x + 1, y) || colour != picture.pixel(x, y + 1) ||
                          colour != picture.pixel(x + 1, y + 1);
      if (isFine || colour != picture.pixel(x + 2, y)) ++grain.inked;
      if (isFine) ++grain.fine;
    }
  }
  return grain;
}

TEST_P(SharpnessTest, EveryTextAndDrawingHasTheFineDetailOfTwiceThePixels) {
  int count = 0;
  tour([&](const QString &name, QWidget &screen) {
    const QImage picture = renderedAt(screen, 2);
    QList<QRect> places;
    const TextFit texts(screen);
    for (const TextFit::Place &place : texts.places()) places.append(place.rect);
    for (const char *drawing : {"servoPicture", "imageView", "MotorPoint"}) {
      const auto *element = screen.findChild<QWidget *>(QLatin1String(drawing));
      if (element) places.append(QRect(element->mapTo(&screen, QPoint()), element->size()));
    }
    for (const QRect &place : places) {
      const Grain grain = grainOf(picture, QRect(place.topLeft() * 2, place.size() * 2));
      if (grain.inked == 0) continue;
      EXPECT_GT(grain.fine * 3, grain.inked) << name.toStdString() << " at " << place.x() << ',' << place.y();
      ++count;
    }
  });
  EXPECT_GT(count, 200);
}

/// What is drawn within the place: the smallest rectangle round all that differs from the upper left corner.
QRectF inkIn(const QImage &picture, const QRectF &place) {
  const double ratio = picture.devicePixelRatio();
  const QRect pixels = QRectF(place.topLeft() * ratio, place.size() * ratio).toRect() & picture.rect();
  const int ground = qGray(picture.pixel(pixels.topLeft()));
  QRect ink;
  for (int y = pixels.top(); y <= pixels.bottom(); ++y) {
    for (int x = pixels.left(); x <= pixels.right(); ++x) {
      if (std::abs(qGray(picture.pixel(x, y)) - ground) > 50) ink |= QRect(x, y, 1, 1);
    }
  }
  return {QPointF(ink.topLeft()) / ratio, QSizeF(ink.size()) / ratio};
}

TEST_P(SharpnessTest, WithTwiceThePixelsEveryTextIsInTheSamePlace) {
  constexpr double tolerance = 3;  // points, for letters may be set closer on a finer grid
  int count = 0;
  tour([&](const QString &name, QWidget &screen) {
    const QImage once = renderedAt(screen, 1);
    const QImage twice = renderedAt(screen, 2);
    const TextFit texts(screen);
    for (const auto &[element, rect] : texts.places()) {
      const QRectF place = rect.height() > 20 ? rect.adjusted(4, 4, -4, -4) : rect;
      const QRectF coarse = inkIn(once, place);
      const QRectF fine = inkIn(twice, place);
      EXPECT_LT(std::abs(coarse.left() - fine.left()) + std::abs(coarse.top() - fine.top()), tolerance)
          << name.toStdString() << ' ' << element->objectName().toStdString();
      // Where there are many lines, each is rounded for itself.
      EXPECT_LT(std::abs(coarse.height() - fine.height()), tolerance + place.height() / 100)
          << name.toStdString() << ' ' << element->objectName().toStdString();
      ++count;
    }
  });
  EXPECT_GT(count, 200);
}

TEST(Sharpness, OfAPictureMadeLargerIsFoundOut) {
  QImage small(40, 40, QImage::Format_RGB32);
  small.fill(Qt::black);
  QPainter painter(&small);
  painter.setRenderHint(QPainter::Antialiasing);
  painter.setPen(QPen(Qt::white, 2));
  painter.drawEllipse(QPointF(20, 20), 12, 12);
  painter.end();
  const Grain grain = grainOf(small.scaled(80, 80), QRect(0, 0, 80, 80));
  EXPECT_GT(grain.inked, 0);
  EXPECT_EQ(grain.fine, 0);
}

INSTANTIATE_TEST_SUITE_P(OneLanguage, SharpnessTest, testing::Values("en", "zh-Hant"), languageTestName);

}  // namespace
}  // namespace tavril
