#pragma once

#include "look/Colours.h"

#include <QColor>
#include <QFont>
#include <QRectF>
#include <QString>

class QApplication;
class QPainter;
class QWidget;

namespace tavril {

/// How Tavril looks: colours, fonts and the style sheet.
class Style {
 public:
  // The current value of each colour in the table: Style::accent() and so on.
#define TAVRIL_DECLARE_COLOUR(name, usual, high) static QColor name();
  TAVRIL_COLOURS(TAVRIL_DECLARE_COLOUR)
#undef TAVRIL_DECLARE_COLOUR

  static constexpr int defaultLabelSize = 13;  ///< pixels
  static constexpr int noticeSize = 18;        ///< pixels
  static constexpr double smallestLabelSize = 8;
  static constexpr double largestLabelSize = 24;

  /// How much texts and edges stand out. `Usual` until apply() finds that the desktop asks for more; Qt
  /// reports this from 6.10 on.
  enum class Contrast { Usual, High };
  static void setContrast(Contrast contrast);

  /// The font of texts in this language. Regions that use the same characters draw them differently.
  static QFont languageFont(const QString &language);
  /// textFont() is for all texts except values and frames, which have valueFont(). A widget with textFont()
  /// follows when the program's font changes.
  static QFont textFont(int pixelSize = defaultLabelSize);
  static QFont valueFont(int pixelSize = defaultLabelSize);

  /// Sets the size of the label's font, limited to the bounds above, and keeps its family and weight. A size
  /// of 0 or below, or one that is not a number, means the default size.
  static void setLabelSize(QWidget &label, double pixelSize);

  /// Replaces "bold", the only weight that the screen designs can ask for, by the lighter weight of titles
  /// and buttons.
  static void softenBold(QWidget &screen);

  /// Draws the ring of the keyboard's focus just inside the rectangle. `colour` must differ clearly from the
  /// surroundings.
  static void drawFocusRing(QPainter &painter, const QRectF &place, const QColor &colour = accent());

  static QString sheet();
  /// Applies fonts and style sheet to the whole program, including alerts and dialogs.
  static void apply(QApplication &application, const QString &language = QStringLiteral("en"));
  /// Sets the fonts of all texts to those of this language, including texts that are shown already.
  static void setLanguage(const QString &language);
};

}  // namespace tavril
