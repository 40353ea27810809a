#pragma once

#include <QColor>
#include <QHash>
#include <QImage>
#include <QWidget>

#include <algorithm>
#include <cmath>

namespace tavril {

constexpr double enoughForText = 4.5;
constexpr double enoughForTextInHighContrast = 7;
constexpr double enoughForMarks = 3;

inline double luminance(const QColor &colour) {
  const auto channel = [](double value) {
    return value <= 0.03928 ? value / 12.92 : std::pow((value + 0.055) / 1.055, 2.4);
  };
  return 0.2126 * channel(colour.redF()) + 0.7152 * channel(colour.greenF()) +
         0.0722 * channel(colour.blueF());
}

/// The ratio of the accessibility guidelines, 1 to 21.
inline double contrast(const QColor &one, const QColor &other) {
  const double a = luminance(one);
  const double b = luminance(other);
  return (std::max(a, b) + 0.05) / (std::min(a, b) + 0.05);
}

/// The contrast between the strongest ink in the picture and the colour that most of it has.
inline double drawnContrast(const QImage &picture) {
  QHash<QRgb, int> counts;
  for (int y = 0; y < picture.height(); ++y) {
    for (int x = 0; x < picture.width(); ++x) ++counts[picture.pixel(x, y)];
  }
  QRgb ground = 0;
  int most = 0;
  for (auto count = counts.cbegin(); count != counts.cend(); ++count) {
    if (count.value() <= most) continue;
    most = count.value();
    ground = count.key();
  }
  double strongest = 1;
  for (auto count = counts.cbegin(); count != counts.cend(); ++count) {
    strongest = std::max(strongest, contrast(QColor(count.key()), QColor(ground)));
  }
  return strongest;
}

}  // namespace tavril
