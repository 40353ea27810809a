#include "look/Style.h"

#include "look/Colours.h"

#include <QApplication>
#include <QFile>
#include <QFontInfo>
#include <QGuiApplication>
#include <QIODevice>
#include <QMetaObject>
#include <QObject>
#include <QPaintDevice>
#include <QPainter>
#include <QPalette>
#include <QPen>
#include <QPointF>
#include <QProxyStyle>
#include <QRect>
#include <QSizeF>
#include <QStringList>
#include <QStringView>
#include <QStyleHints>
#include <QWidget>
#if QT_VERSION >= QT_VERSION_CHECK(6, 10, 0)
#include <QAccessibilityHints>
#endif

#include <algorithm>
#include <cmath>
#include <utility>

namespace tavril {

namespace {

Style::Contrast contrastNow = Style::Contrast::Usual;

#define TAVRIL_TABLE_ROW(name, usual, high) {u## #name, &Style::name},
constexpr std::pair<QStringView, QColor (*)()> colours[]{TAVRIL_COLOURS(TAVRIL_TABLE_ROW)};
#undef TAVRIL_TABLE_ROW

/// The requested size of the font divided by the size in which it is drawn.
double scaleOf(const QPainter &painter) {
  const QFont &font = painter.font();
  if (font.pointSizeF() <= 0) return 1;  // given in pixels, which are whole
  const double wanted = font.pointSizeF() * painter.device()->logicalDpiY() / 72;
  return wanted / QFontInfo(font).pixelSize();
}

/// Draws texts in the exact size of their font. This version of Qt would round the size to whole pixels.
class ExactTextStyle final : public QProxyStyle {
 public:
  using QProxyStyle::QProxyStyle;

  void drawItemText(QPainter *painter, const QRect &place, int flags, const QPalette &palette, bool enabled,
                    const QString &text, QPalette::ColorRole role) const override {
    const double scale = scaleOf(*painter);
    if (std::abs(scale - 1) < 0.001) {
      QProxyStyle::drawItemText(painter, place, flags, palette, enabled, text, role);
      return;
    }
    painter->save();
    if (role != QPalette::NoRole) painter->setPen(palette.color(role));
    painter->translate(place.topLeft());
    painter->scale(scale, scale);
    painter->drawText(QRectF(QPointF(), QSizeF(place.size()) / scale), flags, text);
    painter->restore();
  }
};

/// A region with its own shapes of the East Asian characters.
struct Region {
  QStringView name;  ///< as the collection of fonts has it
  /// Has no effect on an outline font. But Qt caches fonts by their first family and their other attributes;
  /// the families that stand in for the first do not count.
  QFont::StyleStrategy strategy;
};
constexpr Region traditional{u"TC", QFont::PreferDefault};
constexpr Region hongKong{u"HK", QFont::StyleStrategy(QFont::PreferOutline | QFont::PreferMatch)};
constexpr Region simplified{u"SC", QFont::PreferOutline};
constexpr Region japan{u"JP", QFont::PreferMatch};
constexpr Region korea{u"KR", QFont::PreferQuality};

/// For other languages, the region matters only for names in East Asian characters.
const Region &regionOf(const QString &language) {
  const QStringList subtags = language.toLower().split(u'-');
  if (subtags.first() == u"ja") return japan;
  if (subtags.first() == u"ko") return korea;
  if (subtags.first() != u"zh") return traditional;
  if (subtags.contains(u"hk") || subtags.contains(u"mo")) return hongKong;
  return subtags.contains(u"hant") || subtags.contains(u"tw") ? traditional : simplified;
}

QPalette darkPalette() {
  QPalette palette(Style::card(), Style::ground());
  palette.setColor(QPalette::WindowText, Style::text());
  palette.setColor(QPalette::Base, Style::well());
  palette.setColor(QPalette::AlternateBase, Style::card());
  palette.setColor(QPalette::Text, Style::text());
  palette.setColor(QPalette::Button, Style::face());
  palette.setColor(QPalette::ButtonText, Style::text());
  palette.setColor(QPalette::BrightText, Style::restText());
  palette.setColor(QPalette::PlaceholderText, Style::mutedText());
  palette.setColor(QPalette::Highlight, Style::selection());
  palette.setColor(QPalette::HighlightedText, Style::text());
  palette.setColor(QPalette::ToolTipBase, Style::well());
  palette.setColor(QPalette::ToolTipText, Style::text());
  palette.setColor(QPalette::Link, Style::accent());
  for (const auto role : {QPalette::WindowText, QPalette::Text, QPalette::ButtonText}) {
    palette.setColor(QPalette::Disabled, role, Style::disabledText());
  }
  return palette;
}

/// What Tavril tells the desktop and asks of it, as far as this version of Qt can.
void followDesktop() {
#if QT_VERSION >= QT_VERSION_CHECK(6, 8, 0)
  // There is only the dark look. Window frames and panels that the desktop draws must match it.
  QGuiApplication::styleHints()->setColorScheme(Qt::ColorScheme::Dark);
#endif
#if QT_VERSION >= QT_VERSION_CHECK(6, 10, 0)
  const QAccessibilityHints *hints = QGuiApplication::styleHints()->accessibility();
  const auto follow = [](Qt::ContrastPreference wish) {
    Style::setContrast(wish == Qt::ContrastPreference::HighContrast ? Style::Contrast::High
                                                                    : Style::Contrast::Usual);
  };
  static QMetaObject::Connection connection;
  QObject::disconnect(connection);
  connection = QObject::connect(hints, &QAccessibilityHints::contrastPreferenceChanged, qApp, follow);
  follow(hints->contrastPreference());
#endif
}

}  // namespace

#define TAVRIL_DEFINE_COLOUR(name, usual, high)                                \
  QColor Style::name() {                                                       \
    return QColor::fromRgb(contrastNow == Contrast::Usual ? (usual) : (high)); \
  }
TAVRIL_COLOURS(TAVRIL_DEFINE_COLOUR)
#undef TAVRIL_DEFINE_COLOUR

void Style::setContrast(Contrast contrast) {
  if (contrast == contrastNow) return;
  contrastNow = contrast;
  QApplication::setPalette(darkPalette());
  // Setting the sheet repaints everything.
  qApp->setStyleSheet(sheet());
}

QFont Style::languageFont(const QString &language) {
  const Region &region = regionOf(language);
  QFont font;
  font.setFamilies({QStringLiteral("Inter"), QStringLiteral("Noto Sans CJK ") + region.name.toString(),
                    QStringLiteral("Noto Sans"), QStringLiteral("sans-serif")});
  font.setStyleStrategy(region.strategy);
  font.setPixelSize(defaultLabelSize);
  return font;
}

QFont Style::textFont(int pixelSize) {
  // Sets only the size, so that the family and all else come from the program's font.
  QFont font;
  font.setPixelSize(pixelSize);
  return font;
}

QFont Style::valueFont(int pixelSize) {
  QFont font;
  font.setFamilies({QStringLiteral("JetBrains Mono"), QStringLiteral("DejaVu Sans Mono"),
                    QStringLiteral("Noto Sans Mono CJK TC"), QStringLiteral("monospace")});
  font.setPixelSize(pixelSize);
  return font;
}

void Style::setLabelSize(QWidget &label, double pixelSize) {
  // NaN fails the comparison as well.
  const double size =
      pixelSize > 0 ? std::clamp(pixelSize, smallestLabelSize, largestLabelSize) : defaultLabelSize;
  QFont font = label.font();
  if (size == std::floor(size)) {
    font.setPixelSize(static_cast<int>(size));
  } else {
    // Only point sizes can have fractions.
    font.setPointSizeF(size * 72 / label.logicalDpiY());
  }
  if (font != label.font()) label.setFont(font);
}

void Style::softenBold(QWidget &screen) {
  for (QWidget *child : screen.findChildren<QWidget *>()) {
    QFont font = child->font();
    if (font.weight() != QFont::Bold) continue;
    font.setWeight(QFont::DemiBold);
    child->setFont(font);
  }
}

void Style::drawFocusRing(QPainter &painter, const QRectF &place, const QColor &colour) {
  constexpr double width = 2;
  constexpr double radius = 6;
  painter.save();
  painter.setRenderHint(QPainter::Antialiasing);
  painter.setPen(QPen(colour, width));
  painter.setBrush(Qt::NoBrush);
  painter.drawRoundedRect(place.adjusted(width / 2, width / 2, -width / 2, -width / 2), radius, radius);
  painter.restore();
}

QString Style::sheet() {
  QFile file(QStringLiteral(":/look/Style.qss"));
  if (!file.open(QIODevice::ReadOnly)) qFatal("The program was built without its style sheet.");
  QString sheet = QString::fromUtf8(file.readAll());
  for (const auto &[name, colour] : colours) {
    sheet.replace(u'{' + name.toString() + u'}', colour().name());
  }
  return sheet;
}

void Style::setLanguage(const QString &language) {
  QApplication::setFont(languageFont(language));
  // A window takes the attributes that it has not set itself from the application. By itself, the application
  // tells existing windows only while its event loop runs.
  const auto windows = QApplication::topLevelWidgets();
  for (QWidget *window : windows) window->setFont(window->font());
  // With a style sheet, the children of a window take its font only when the sheet is applied.
  const QString sheet = qApp->styleSheet();
  if (!sheet.isEmpty()) qApp->setStyleSheet(sheet);
}

void Style::apply(QApplication &application, const QString &language) {
  QApplication::setStyle(new ExactTextStyle(QStringLiteral("Fusion")));
  // No animations: only the user and the servo move things on the screen.
  for (const Qt::UIEffect effect : {Qt::UI_AnimateMenu, Qt::UI_FadeMenu, Qt::UI_AnimateCombo,
                                    Qt::UI_AnimateTooltip, Qt::UI_FadeTooltip, Qt::UI_AnimateToolBox}) {
    QApplication::setEffectEnabled(effect, false);
  }
  QApplication::setPalette(darkPalette());
  setLanguage(language);
  application.setStyleSheet(sheet());
  followDesktop();
}

}  // namespace tavril
