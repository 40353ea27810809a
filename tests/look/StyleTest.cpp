#include "editor/ButtonLabel.h"
#include "editor/FrameField.h"
#include "editor/ValueField.h"
#include "tests/editor/ShippedScreen.h"
#include "tests/support/DrawnContrast.h"

#include <QApplication>
#include <QFontInfo>
#include <QLabel>
#include <QPlainTextEdit>
#include <QRegularExpression>
#include <QStyleHints>
#if QT_VERSION >= QT_VERSION_CHECK(6, 10, 0)
#include <QAccessibilityHints>
#endif

#include <cstdio>
#include <tuple>
#include <vector>

namespace tavril {
namespace {

QRect placeIn(const QWidget &screen, const QWidget &widget, int margin) {
  return QRect(widget.mapTo(&screen, QPoint()), widget.size()).adjusted(margin, margin, -margin, -margin);
}

TEST(Style, TheContrastOfBlackOnWhiteIsTwentyOne) {
  EXPECT_NEAR(contrast(Qt::black, Qt::white), 21, 0.001);
  EXPECT_NEAR(contrast(QColor(0x77, 0x77, 0x77), Qt::white), 4.48, 0.01);
}

/// A text or a mark, such as the focus ring, and the colour that it has to stand out from.
struct Pair {
  const char *where;
  QColor (*mark)();
  QColor (*ground)();
  double contrast() const { return tavril::contrast(mark(), ground()); }
};

constexpr Pair textPairs[]{
    {"captions", &Style::text, &Style::card},
    {"column titles and read-out captions", &Style::mutedText, &Style::card},
    {"values", &Style::text, &Style::well},
    {"selected values", &Style::text, &Style::selection},
    {"disabled fields and buttons", &Style::disabledText, &Style::card},
    {"read-outs and frames", &Style::liveText, &Style::card},
    {"read-outs with errors", &Style::warningText, &Style::card},
    {"notices", &Style::restText, &Style::card},
    {"position on the dial", &Style::text, &Style::recess},
    {"angle on the dial", &Style::mutedText, &Style::recess},
    {"connection line", &Style::text, &Style::recess},
    {"buttons", &Style::restText, &Style::face},
    {"strong buttons", &Style::restText, &Style::strongFace},
    {"clicked buttons", &Style::clickedText, &Style::flashFace},
    {"About and the licence", &Style::text, &Style::aboutGround},
    {"version in About", &Style::mutedText, &Style::aboutGround},
    {"selected text in About", &Style::text, &Style::selection},
    {"menu bar", &Style::text, &Style::ground},
    {"menu bar, open menu", &Style::restText, &Style::face},
    {"menus, alerts and dialogs", &Style::text, &Style::card},
    {"menu items that cannot be chosen", &Style::disabledText, &Style::card},
    {"menu item or list entry that is chosen", &Style::restText, &Style::selection},
    {"titles of columns in lists", &Style::mutedText, &Style::face},
    {"tool tips", &Style::text, &Style::well},
    {"links", &Style::accent, &Style::card},
    {"placeholders", &Style::mutedText, &Style::well},
    {"rule in notices", &Style::mutedText, &Style::card},
};

constexpr Pair markPairs[]{
    {"focus ring on a card", &Style::accent, &Style::card},
    {"focus ring round what can be typed into", &Style::accent, &Style::well},
    {"focus ring round a button", &Style::accent, &Style::face},
    {"focus ring round a strong button", &Style::restText, &Style::strongFace},
    {"focus ring on the dial", &Style::accent, &Style::recess},
    {"edge of what can be typed into, outwards", &Style::inputEdge, &Style::card},
    {"edge of what can be typed into, inwards", &Style::inputEdge, &Style::well},
    {"knob", &Style::text, &Style::recess},
    {"ring that sets the knob off the live arc", &Style::well, &Style::accent},
    {"middle of the knob", &Style::strongFace, &Style::text},
    {"live arc", &Style::accent, &Style::recess},
    {"marks of the scale", &Style::disabledText, &Style::recess},
    {"lamp: not connected", &Style::mutedText, &Style::recess},
    {"lamp: initialising", &Style::warningText, &Style::recess},
    {"lamp: connected", &Style::accent, &Style::recess},
    {"handle of a scroll bar", &Style::inputEdge, &Style::card},
};

TEST(Style, EveryPairOfTextAndGroundHasEnoughContrast) {
  for (const Pair &pair : textPairs) {
    EXPECT_GE(pair.contrast(), enoughForText) << pair.where;
    std::printf("%5.1f  %s\n", pair.contrast(), pair.where);
  }
}

TEST(Style, EveryMarkStandsOutFromItsGround) {
  for (const Pair &pair : markPairs) {
    EXPECT_GE(pair.contrast(), enoughForMarks) << pair.where;
    std::printf("%5.1f  %s\n", pair.contrast(), pair.where);
  }
}

/// Expects of each text on the screen, enabled and disabled, that it has this contrast as it is drawn.
void expectContrastAsDrawn(ShippedScreen &shipped, double enough) {
  for (auto *field : shipped.screen.findChildren<QLineEdit *>()) field->setText(QStringLiteral("88888"));
  shipped.widget<QPlainTextEdit>("MsgView").setPlainText(shipped.strings.text(u"NoticeMsg_kp"));
  for (const bool enabled : {false, true}) {
    for (auto *field : shipped.screen.findChildren<ValueField *>())
      field->setEnabled(enabled && !field->isReadOnly());
    for (const char *name : buttonNames) shipped.widget(name).setEnabled(enabled);
    for (QWidget *widget : shipped.screen.findChildren<QWidget *>()) {
      const bool isText = qobject_cast<QLabel *>(widget) || qobject_cast<QLineEdit *>(widget) ||
                          qobject_cast<QAbstractButton *>(widget) || qobject_cast<QPlainTextEdit *>(widget);
      if (!isText || !widget->isVisible()) continue;
      // The lamp beside the connection text is no text.
      const int margin = widget->objectName() == QStringLiteral("ConnectStatus") ? 10 : 3;
      QRect place = placeIn(shipped.screen, *widget, margin);
      if (margin == 10) place.setLeft(place.left() + 40);
      EXPECT_GE(drawnContrast(shipped.screen.grab(place).toImage()), enough)
          << qPrintable(widget->objectName());
    }
  }
}

TEST(Style, EveryTextHasEnoughContrastAsItIsDrawnEnabledAndDisabled) {
  ShippedScreen shipped;
  shipped.show();
  expectContrastAsDrawn(shipped, enoughForText);
}

TEST(Style, WhereHighContrastIsWantedTheScreenThatIsThereChangesToItAndBack) {
  ShippedScreen shipped;
  shipped.show();
  const QImage usual = shipped.screen.grab().toImage();
  Style::setContrast(Style::Contrast::High);
  expectContrastAsDrawn(shipped, enoughForTextInHighContrast);
  const auto edge = [&](const char *name) {
    const QRect line = placeIn(shipped.screen, shipped.widget(name), 0);
    return shipped.screen.grab(QRect(line.x() + 10, line.y(), 1, 1)).toImage().pixelColor(0, 0);
  };
  shipped.widget("sID_value").setEnabled(true);
  EXPECT_GE(contrast(edge("sID_value"), Style::card()), enoughForText);
  Style::setContrast(Style::Contrast::Usual);
  ShippedScreen another;
  another.show();
  EXPECT_EQ(another.screen.grab().toImage(), usual);
}

TEST(Style, EveryPairOfTextAndGroundHasMoreContrastWhereThatIsWanted) {
  Style::setContrast(Style::Contrast::High);
  for (const Pair &pair : textPairs) {
    EXPECT_GE(pair.contrast(), enoughForTextInHighContrast) << pair.where;
  }
  for (const Pair &pair : markPairs) {
    EXPECT_GE(pair.contrast(), enoughForMarks) << pair.where;
  }
  Style::setContrast(Style::Contrast::Usual);
}

#if QT_VERSION >= QT_VERSION_CHECK(6, 10, 0)
TEST(Style, TheContrastIsThatWhichTheDesktopWants) {
  Style::apply(*qApp);
  const QColor usual = Style::edge();
  auto *hints = const_cast<QAccessibilityHints *>(QGuiApplication::styleHints()->accessibility());
  Q_EMIT hints->contrastPreferenceChanged(Qt::ContrastPreference::HighContrast);
  EXPECT_NE(Style::edge(), usual);
  Q_EMIT hints->contrastPreferenceChanged(Qt::ContrastPreference::NoPreference);
  EXPECT_EQ(Style::edge(), usual);
}
#endif

TEST(Style, NoMenuOrToolTipMovesOrFades) {
  Style::apply(*qApp);
  for (const Qt::UIEffect effect : {Qt::UI_AnimateMenu, Qt::UI_FadeMenu, Qt::UI_AnimateCombo,
                                    Qt::UI_AnimateTooltip, Qt::UI_FadeTooltip, Qt::UI_AnimateToolBox}) {
    EXPECT_FALSE(QApplication::isEffectEnabled(effect)) << effect;
  }
}

TEST(Style, ButtonsAreReadableAtRestAndWhenClicked) {
  ShippedScreen shipped;
  for (auto *button : shipped.screen.findChildren<ButtonLabel *>()) {
    button->setEnabled(true);
    for (const QColor &colour : {QColor(Qt::white), QColor(Qt::black)}) {
      button->setTextColor(colour);
      EXPECT_GE(contrast(button->textColor(), button->faceColor()), enoughForText)
          << qPrintable(button->objectName());
    }
  }
}

TEST(Style, EditableReadOnlyAndDisabledFieldsDifferWithoutColour) {
  ShippedScreen shipped;
  shipped.show();
  auto &field = shipped.widget<ValueField>("PresentLoad_value");
  auto &setting = shipped.widget<ValueField>("sID_value");
  // Pixels of the upper edge that differ from those of the card: all of a solid line, some of a dashed one,
  // none of a read-out.
  const auto inked = [&](const QWidget &widget) {
    const QRect line(widget.x() + 10, widget.y(), widget.width() - 20, 1);
    const QImage picture = shipped.screen.grab(line).toImage();
    int count = 0;
    for (int x = 0; x < picture.width(); ++x) count += picture.pixelColor(x, 0) != Style::card();
    return double(count) / picture.width();
  };
  setting.setEnabled(true);
  EXPECT_EQ(inked(setting), 1);
  setting.setEnabled(false);
  EXPECT_GT(inked(setting), 0.2);
  EXPECT_LT(inked(setting), 0.9);
  EXPECT_EQ(inked(field), 0);
}

TEST(Style, TextsAndValuesHaveTheirFaces) {
  ShippedScreen shipped;
  shipped.show();
  EXPECT_EQ(QFontInfo(shipped.widget("sid").font()).family(), QStringLiteral("Inter"));
  for (const char *name : {"sID_value", "PresentLoad_value", "angle", "TXcmd", "RXcmd"}) {
    EXPECT_EQ(QFontInfo(shipped.widget(name).font()).family(), QStringLiteral("JetBrains Mono")) << name;
    EXPECT_TRUE(QFontInfo(shipped.widget(name).font()).fixedPitch()) << name;
  }
}

TEST(Style, ALabelsSizeIsSetWithoutItsFaceAndWeight) {
  ShippedScreen shipped;
  auto &label = shipped.widget("setting_list");
  const QFont before = label.font();
  Style::setLabelSize(label, 20);
  EXPECT_EQ(label.font().pixelSize(), 20);
  EXPECT_EQ(label.font().weight(), before.weight());
  EXPECT_EQ(label.font().families(), before.families());
}

TEST(Style, ASizeOfZeroIsTheDefaultSize) {
  ShippedScreen shipped;
  auto &label = shipped.widget("sid");
  Style::setLabelSize(label, 20);
  Style::setLabelSize(label, 0);
  EXPECT_EQ(label.font().pixelSize(), Style::defaultLabelSize);
}

TEST(Style, AnotherLanguageLeavesSizesAndWeightsOfAllLabelsAndFields) {
  ShippedScreen shipped;
  shipped.show();
  const auto fonts = [&] {
    std::vector<std::tuple<QString, int, int, QString>> all;
    for (const QWidget *widget : shipped.screen.findChildren<QWidget *>()) {
      const QFont &font = widget->font();
      all.emplace_back(widget->objectName(), font.pixelSize(), font.weight(), font.families().value(0));
    }
    return all;
  };
  const auto before = fonts();
  ASSERT_GT(before.size(), 80U);
  for (const char *language : {"ja", "zh-Hans", "en"}) {
    Style::setLanguage(QString::fromLatin1(language));
    EXPECT_EQ(fonts(), before) << language;
  }
}

TEST(Style, NoColourOfTheSheetIsLeftUnnamed) {
  const QString sheet = Style::sheet();
  EXPECT_FALSE(sheet.contains(QRegularExpression(QStringLiteral("\\{\\w+\\}"))));
}

}  // namespace
}  // namespace tavril
