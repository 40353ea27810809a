#include "editor/Style.h"

#include "editor/ExactTextStyle.h"

#include <QApplication>
#include <QPainter>
#include <QPalette>
#include <QPen>
#include <QStringList>
#include <QStringView>
#include <QStyleFactory>
#include <QStyleHints>
#include <QToolTip>
#include <QWidget>
#if QT_VERSION >= QT_VERSION_CHECK(6, 10, 0)
#include <QAccessibilityHints>
#endif

#include <QGuiApplication>
#include <QMetaObject>
#include <QObject>

#include <algorithm>
#include <array>
#include <cmath>
#include <iterator>
#include <utility>

namespace tavril {

namespace {

constexpr std::array pairs{
    Style::TextPair{"captions", Style::text, Style::card},
    Style::TextPair{"column titles and read-out captions", Style::mutedText, Style::card},
    Style::TextPair{"values", Style::text, Style::well},
    Style::TextPair{"selected values", Style::text, Style::selection},
    Style::TextPair{"disabled fields and buttons", Style::disabledText, Style::card},
    Style::TextPair{"read-outs and frames", Style::liveText, Style::card},
    Style::TextPair{"read-outs with errors", Style::warningText, Style::card},
    Style::TextPair{"notices", Style::restText, Style::card},
    Style::TextPair{"position on the dial", Style::text, Style::recess},
    Style::TextPair{"angle on the dial", Style::mutedText, Style::recess},
    Style::TextPair{"connection line", Style::text, Style::recess},
    Style::TextPair{"buttons", Style::restText, Style::face},
    Style::TextPair{"strong buttons", Style::restText, Style::strongFace},
    Style::TextPair{"clicked buttons", Style::clickedText, Style::flashFace},
    Style::TextPair{"About and the licence", Style::text, Style::aboutGround},
    Style::TextPair{"version in About", Style::mutedText, Style::aboutGround},
    Style::TextPair{"selected text in About", Style::text, Style::selection},
    Style::TextPair{"menu bar", Style::text, Style::ground},
    Style::TextPair{"menu bar, open menu", Style::restText, Style::face},
    Style::TextPair{"menus, alerts and dialogs", Style::text, Style::card},
    Style::TextPair{"menu items that cannot be chosen", Style::disabledText, Style::card},
    Style::TextPair{"menu item or list entry that is chosen", Style::restText, Style::selection},
    Style::TextPair{"titles of columns in lists", Style::mutedText, Style::face},
    Style::TextPair{"tool tips", Style::text, Style::well},
    Style::TextPair{"links", Style::accent, Style::card},
    Style::TextPair{"placeholders", Style::mutedText, Style::well},
    Style::TextPair{"rule in notices", Style::mutedText, Style::card},
};

constexpr std::array marks{
    Style::MarkPair{"focus ring on a card", Style::accent, Style::card},
    Style::MarkPair{"focus ring round what can be typed into", Style::accent, Style::well},
    Style::MarkPair{"focus ring round a button", Style::accent, Style::face},
    Style::MarkPair{"focus ring round a strong button", Style::restText, Style::strongFace},
    Style::MarkPair{"focus ring on the dial", Style::accent, Style::recess},
    Style::MarkPair{"edge of what can be typed into, outwards", Style::inputEdge, Style::card},
    Style::MarkPair{"edge of what can be typed into, inwards", Style::inputEdge, Style::well},
    Style::MarkPair{"knob", Style::text, Style::recess},
    Style::MarkPair{"ring that sets the knob off the live arc", Style::well, Style::accent},
    Style::MarkPair{"middle of the knob", Style::strongFace, Style::text},
    Style::MarkPair{"live arc", Style::accent, Style::recess},
    Style::MarkPair{"marks of the scale", Style::disabledText, Style::recess},
    Style::MarkPair{"lamp: not connected", Style::mutedText, Style::recess},
    Style::MarkPair{"lamp: initialising", Style::warningText, Style::recess},
    Style::MarkPair{"lamp: connected", Style::accent, Style::recess},
    Style::MarkPair{"handle of a scroll bar", Style::inputEdge, Style::card},
};

// {name} stands for a colour. The 31 labels whose size comes from the string table get no font here, because
// a style sheet's font would win over theirs.
constexpr auto sheetText =
    uR"(
QWidget#MainScreen { background: {ground}; }
QFrame[card="true"] { background: {card}; border: 1px solid {hairline}; border-radius: 10px; }
QFrame[hairline="true"] { background: {hairline}; border: none; }
QLabel { color: {text}; background: transparent; }
QLabel[muted="true"] { color: {mutedText}; }

tavril--ValueField, tavril--EntryField {
  background: {well}; border: 1px solid {inputEdge}; border-radius: 5px; padding: 0 7px; color: {text};
  selection-background-color: {selection}; selection-color: {text};
  font-family: "JetBrains Mono", "DejaVu Sans Mono", monospace; font-size: 13px;
}
tavril--ValueField:hover, tavril--EntryField:hover { border-color: {mutedText}; }
tavril--ValueField:focus, tavril--EntryField:focus { border: 2px solid {accent}; padding: 0 6px; }
tavril--ValueField:disabled, tavril--EntryField:disabled {
  background: transparent; border: 1px dashed {edge}; color: {disabledText};
}
tavril--ValueField[readout="true"], tavril--ValueField[readout="true"]:disabled {
  background: transparent; border: none; padding: 0 8px; color: {liveText};
}
tavril--ValueField[readout="true"][alarm="true"], tavril--ValueField[readout="true"][alarm="true"]:disabled {
  color: {warningText}; font-weight: bold;
}
tavril--FrameField {
  background: transparent; border: none; color: {liveText}; selection-background-color: {selection};
  font-family: "JetBrains Mono", "DejaVu Sans Mono", monospace; font-size: 12px;
}

QDialog { background: {card}; }
QPushButton {
  background: {face}; border: 1px solid {edge}; border-radius: 6px; color: {restText}; font-weight: 600;
  min-height: 28px; min-width: 72px; padding: 0 15px;
}
QPushButton:default { background: {strongFace}; border-color: {strongEdge}; }
QPushButton:hover { border-color: {mutedText}; }
QPushButton:focus { border: 2px solid {accent}; padding: 0 14px; min-height: 26px; }
QPushButton:default:focus { border-color: {restText}; }
QPushButton:pressed { background: {flashFace}; color: {clickedText}; }
QPushButton:disabled { background: transparent; border: 1px dashed {edge}; color: {disabledText}; }

QComboBox {
  background: {well}; border: 1px solid {inputEdge}; border-radius: 5px; padding: 0 9px; color: {text};
}
QComboBox:hover { border-color: {mutedText}; }
QComboBox:focus { border: 2px solid {accent}; padding: 0 8px; }
QComboBox:disabled { background: transparent; border: 1px dashed {edge}; color: {disabledText}; }
QComboBox::drop-down { border: none; width: 30px; }

QAbstractItemView, QTextEdit, QPlainTextEdit {
  background: {well}; border: 1px solid {edge}; border-radius: 5px; color: {text};
  selection-background-color: {selection}; selection-color: {restText};
}
QAbstractItemView:focus, QTextEdit:focus, QPlainTextEdit:focus { border: 2px solid {accent}; }
QHeaderView::section { background: {face}; color: {mutedText}; border: none; padding: 4px 8px; }
QPlainTextEdit#MsgView {
  background: transparent; border: 2px solid transparent; border-radius: 6px; padding: 0 4px; color: {restText};
}
QPlainTextEdit#MsgView:focus { border-color: {accent}; }

QMenuBar { background: {ground}; color: {text}; padding: 1px 30px; }
QMenuBar::item { background: transparent; border-radius: 5px; padding: 3px 8px; }
QMenuBar::item:selected { background: {face}; color: {restText}; }
QMenu { background: {card}; border: 1px solid {edge}; color: {text}; padding: 4px; }
QMenu::item { border-radius: 4px; padding: 6px 28px; }
QMenu::item:selected { background: {selection}; color: {restText}; }
QMenu::item:disabled { color: {disabledText}; background: transparent; }
QMenu::separator { background: {hairline}; height: 1px; margin: 4px 8px; }

QScrollBar { background: transparent; border: none; }
QScrollBar:vertical { width: 12px; }
QScrollBar:horizontal { height: 12px; }
QScrollBar::handle { background: {inputEdge}; border-radius: 3px; margin: 3px; }
QScrollBar::handle:vertical { min-height: 24px; }
QScrollBar::handle:horizontal { min-width: 24px; }
QScrollBar::add-line, QScrollBar::sub-line { width: 0; height: 0; }
QPlainTextEdit#aboutContent, QPlainTextEdit#licenceText {
  background: transparent; border: 2px solid transparent; border-radius: 5px; color: {text};
  selection-background-color: {selection}; selection-color: {text};
}
QPlainTextEdit#aboutContent:focus, QPlainTextEdit#licenceText:focus { border-color: {accent}; }
QPlainTextEdit#licenceText { font-family: "JetBrains Mono", "DejaVu Sans Mono", monospace; font-size: 12px; }
QToolTip { background: {well}; color: {text}; border: 1px solid {edge}; padding: 4px; }
)";

Style::Contrast contrastNow = Style::Contrast::Usual;

/// A colour and what stands in for it where more contrast is wanted.
constexpr std::pair<QColor, QColor> stronger[]{
    {Style::text, Style::restText},        {Style::hairline, Style::inputEdge},
    {Style::edge, Style::mutedText},       {Style::inputEdge, Style::text},
    {Style::mutedText, Style::text},       {Style::disabledText, {0xc4, 0xcc, 0xd6}},
    {Style::strongFace, Style::selection}, {Style::strongEdge, Style::flashFace},
};

QString named(QString sheet, QStringView name, const QColor &colour) {
  return sheet.replace(u'{' + name.toString() + u'}', Style::shown(colour).name());
}

/// A region that draws the characters of East Asia in shapes of its own.
struct Region {
  QStringView name;  ///< as the collection of fonts has it
  /// Says nothing that would matter to an outline font. But the fonts that Qt has at hand are told apart by
  /// their first face and by what else is asked of them; the faces that step in for the first do not count.
  QFont::StyleStrategy strategy;
};
constexpr Region traditional{u"TC", QFont::PreferDefault};
constexpr Region hongKong{u"HK", QFont::StyleStrategy(QFont::PreferOutline | QFont::PreferMatch)};
constexpr Region simplified{u"SC", QFont::PreferOutline};
constexpr Region japan{u"JP", QFont::PreferMatch};
constexpr Region korea{u"KR", QFont::PreferQuality};

/// Of other languages the region matters only to a name from elsewhere.
const Region &regionOf(const QString &language) {
  const QStringList subtags = language.toLower().split(u'-');
  if (subtags.first() == u"ja") return japan;
  if (subtags.first() == u"ko") return korea;
  if (subtags.first() != u"zh") return traditional;
  if (subtags.contains(u"hk") || subtags.contains(u"mo")) return hongKong;
  return subtags.contains(u"hant") || subtags.contains(u"tw") ? traditional : simplified;
}

QPalette darkPalette() {
  QPalette palette(Style::card, Style::ground);
  palette.setColor(QPalette::WindowText, Style::text);
  palette.setColor(QPalette::Base, Style::well);
  palette.setColor(QPalette::AlternateBase, Style::card);
  palette.setColor(QPalette::Text, Style::text);
  palette.setColor(QPalette::Button, Style::face);
  palette.setColor(QPalette::ButtonText, Style::text);
  palette.setColor(QPalette::BrightText, Style::restText);
  palette.setColor(QPalette::PlaceholderText, Style::shown(Style::mutedText));
  palette.setColor(QPalette::Highlight, Style::selection);
  palette.setColor(QPalette::HighlightedText, Style::text);
  palette.setColor(QPalette::ToolTipBase, Style::well);
  palette.setColor(QPalette::ToolTipText, Style::text);
  palette.setColor(QPalette::Link, Style::accent);
  for (const auto role : {QPalette::WindowText, QPalette::Text, QPalette::ButtonText}) {
    palette.setColor(QPalette::Disabled, role, Style::shown(Style::disabledText));
  }
  return palette;
}

/// What the desktop is told, and what it tells, as far as this version of Qt can.
void followDesktop() {
#if QT_VERSION >= QT_VERSION_CHECK(6, 8, 0)
  // There is one look. Window frames and panels that the desktop draws are to go with it.
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

std::span<const Style::TextPair> Style::textPairs() {
  return pairs;
}

std::span<const Style::MarkPair> Style::markPairs() {
  return marks;
}

QColor Style::shown(const QColor &colour) {
  if (contrastNow == Contrast::Usual) return colour;
  const auto *found = std::ranges::find(stronger, colour, &std::pair<QColor, QColor>::first);
  return found == std::end(stronger) ? colour : found->second;
}

void Style::setContrast(Contrast contrast) {
  if (contrast == contrastNow) return;
  contrastNow = contrast;
  QApplication::setPalette(darkPalette());
  // All that is there is painted anew when the sheet is set.
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
  // Only the size is set here, so that all else, the faces too, comes from the program's font.
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
  // What is no number fails the comparison as well.
  const double size =
      pixelSize > 0 ? std::clamp(pixelSize, smallestLabelSize, largestLabelSize) : defaultLabelSize;
  QFont font = label.font();
  if (size == std::floor(size)) {
    font.setPixelSize(static_cast<int>(size));
  } else {
    // Only points can be given in fractions.
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
  QString sheet = QString::fromUtf16(sheetText);
  const std::pair<QStringView, QColor> colours[]{
      {u"ground", ground},
      {u"card", card},
      {u"well", well},
      {u"hairline", hairline},
      {u"edge", edge},
      {u"accent", accent},
      {u"text", text},
      {u"mutedText", mutedText},
      {u"disabledText", disabledText},
      {u"liveText", liveText},
      {u"restText", restText},
      {u"warningText", warningText},
      {u"selection", selection},
      {u"face", face},
      {u"strongFace", strongFace},
      {u"strongEdge", strongEdge},
      {u"flashFace", flashFace},
      {u"clickedText", clickedText},
      {u"inputEdge", inputEdge},
  };
  for (const auto &[name, colour] : colours) sheet = named(sheet, name, colour);
  return sheet;
}

void Style::setLanguage(const QString &language) {
  QApplication::setFont(languageFont(language));
  // What a window has not set itself it takes from the application anew. The application by itself only tells
  // the windows that are there already while its event loop runs.
  const auto windows = QApplication::topLevelWidgets();
  for (QWidget *window : windows) window->setFont(window->font());
  // Where there is a style sheet, a window's children take its font when the sheet is applied, and only then.
  const QString sheet = qApp->styleSheet();
  if (!sheet.isEmpty()) qApp->setStyleSheet(sheet);
}

void Style::apply(QApplication &application, const QString &language) {
  QApplication::setStyle(new ExactTextStyle(QStringLiteral("Fusion")));
  // Nothing on the screen moves but what the user or the servo moves.
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
