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

/// How Tavril looks: colours, faces and the style sheet.
class Style {
 public:
  // Each colour of the table as it is to be painted now: Style::accent() and so on.
#define TAVRIL_DECLARE_COLOUR(name, usual, high) static QColor name();
  TAVRIL_COLOURS(TAVRIL_DECLARE_COLOUR)
#undef TAVRIL_DECLARE_COLOUR

  static constexpr int defaultLabelSize = 13;  ///< pixels
  static constexpr int noticeSize = 18;        ///< pixels
  static constexpr double smallestLabelSize = 8;
  static constexpr double largestLabelSize = 24;

  /// How much texts and edges stand out. Usual until apply() hears of another wish of the desktop's, which Qt
  /// tells of from 6.10 on.
  enum class Contrast { Usual, High };
  static void setContrast(Contrast contrast);

  /// The font of texts in this language: of the regions that write with the same characters each has shapes
  /// of its own.
  static QFont languageFont(const QString &language);
  /// The face of all texts but values, and the one of values and frames. The former has the program's own
  /// faces, and follows them where it is given to a widget.
  static QFont textFont(int pixelSize = defaultLabelSize);
  static QFont valueFont(int pixelSize = defaultLabelSize);

  /// Gives the label this size, or the nearest within the bounds, and leaves its face and weight. A size of 0
  /// or below, or one that is no number: the default size.
  static void setLabelSize(QWidget &label, double pixelSize);

  /// The screen designs can only say "bold", which is heavier than the titles and buttons are meant to be.
  static void softenBold(QWidget &screen);

  /// The ring of what has the keyboard's focus, just within the rectangle. `colour` has to stand out from
  /// what is around.
  static void drawFocusRing(QPainter &painter, const QRectF &place, const QColor &colour = accent());

  static QString sheet();
  /// Dresses the whole program, alerts and dialogs included.
  static void apply(QApplication &application, const QString &language = QStringLiteral("en"));
  /// Gives all texts, shown already or not, the faces of this language.
  static void setLanguage(const QString &language);
};

}  // namespace tavril
