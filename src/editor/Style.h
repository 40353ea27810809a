#pragma once

#include <QColor>
#include <QFont>
#include <QRectF>
#include <QString>

#include <span>

class QApplication;
class QPainter;
class QWidget;

namespace tavril {

/// How Tavril looks: colours, faces and the style sheet, in one place. Main thread only.
class Style {
 public:
  static constexpr QColor ground{0x13, 0x16, 0x1b};       ///< behind the cards
  static constexpr QColor card{0x1b, 0x20, 0x27};         ///< cards and panels
  static constexpr QColor recess{0x16, 0x1a, 0x20};       ///< picture and dial
  static constexpr QColor well{0x10, 0x13, 0x17};         ///< what can be typed into
  static constexpr QColor aboutGround{0x00, 0x00, 0x00};  ///< behind About and the licence
  static constexpr QColor hairline{0x2a, 0x31, 0x3b};     ///< lines that divide, edges of cards
  static constexpr QColor edge{0x41, 0x4c, 0x5a};         ///< edges of what can be used
  static constexpr QColor inputEdge{0x74, 0x80, 0x8f};    ///< edges of what can be typed into or chosen from
  static constexpr QColor face{0x2a, 0x32, 0x3d};         ///< buttons
  static constexpr QColor strongFace{0x20, 0x79, 0x6f};   ///< the button that one is here for
  static constexpr QColor strongEdge{0x2d, 0x9c, 0x8f};
  static constexpr QColor flashFace{0x7f, 0xe0, 0xd3};  ///< buttons with a dark text, which is when clicked
  static constexpr QColor accent{0x35, 0xc2, 0xb0};     ///< focus, live arc, connected

  static constexpr QColor text{0xe6, 0xea, 0xf0};
  static constexpr QColor mutedText{0x97, 0xa3, 0xb0};
  static constexpr QColor disabledText{0x8b, 0x97, 0xa5};
  static constexpr QColor liveText{0x7f, 0xe0, 0xd3};     ///< read-outs and frames
  static constexpr QColor warningText{0xf4, 0xb6, 0x5a};  ///< errors, initialising
  static constexpr QColor restText{0xff, 0xff, 0xff};     ///< buttons at rest, notices
  static constexpr QColor clickedText{0x00, 0x00, 0x00};
  static constexpr QColor selection{0x1c, 0x5d, 0x56};

  static constexpr int defaultLabelSize = 13;  ///< pixels
  static constexpr int noticeSize = 18;        ///< pixels
  static constexpr double smallestLabelSize = 8;
  static constexpr double largestLabelSize = 24;

  /// A text colour and the colour that it is put on.
  struct TextPair {
    const char *where;
    QColor text;
    QColor ground;
  };
  /// Every pair that the screens use.
  static std::span<const TextPair> textPairs();
  /// A mark without a text, such as the focus ring, and the colour that it has to stand out from.
  struct MarkPair {
    const char *where;
    QColor mark;
    QColor ground;
  };
  static std::span<const MarkPair> markPairs();

  /// How much texts and edges stand out. Usual until apply() hears of another wish of the desktop's, which Qt
  /// tells of from 6.10 on.
  enum class Contrast { Usual, High };
  static void setContrast(Contrast contrast);
  /// One of the colours above as it is to be painted now.
  static QColor shown(const QColor &colour);

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
  static void drawFocusRing(QPainter &painter, const QRectF &place, const QColor &colour = accent);

  static QString sheet();
  /// Dresses the whole program, alerts and dialogs included.
  static void apply(QApplication &application, const QString &language = QStringLiteral("en"));
  /// Gives all texts, shown already or not, the faces of this language.
  static void setLanguage(const QString &language);
};

}  // namespace tavril
