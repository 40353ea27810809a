#include "editor/screen/ButtonLabel.h"
#include "editor/screen/ConnectionLine.h"
#include "editor/screen/FrameField.h"
#include "platform/StringTableFile.h"
#include "protocol/RegisterCatalogue.h"
#include "protocol/StatusLists.h"
#include "tests/editor/ShippedScreen.h"
#include "tests/support/ShippedLanguages.h"

#include <QAbstractTextDocumentLayout>
#include <QAccessible>
#include <QAccessibleWidget>
#include <QFile>
#include <QLabel>
#include <QPlainTextEdit>
#include <QScrollBar>
#include <QTextBlock>
#include <QTextLayout>

namespace tavril {
namespace {

/// Once for each language that came with the program.
class ScreenTextsTest : public testing::TestWithParam<std::string> {
 protected:
  ScreenTextsTest() { shipped_.show(); }

  QString text(QStringView key) const { return shipped_.strings.text(key); }

  /// Whether the notice view shows the whole text without scrolling, in the lines and faces that it really
  /// has.
  bool canBeReadAtOnce(const QString &notice) {
    auto &view = shipped_.widget<QPlainTextEdit>("MsgView");
    view.setPlainText(notice);
    double height = 0;
    for (QTextBlock block = view.document()->begin(); block.isValid(); block = block.next()) {
      height += view.document()->documentLayout()->blockBoundingRect(block).height();
    }
    return height <= view.viewport()->height() && view.verticalScrollBar()->maximum() == 0;
  }

  ShippedScreen shipped_{QString::fromStdString(GetParam())};
};

/// Whether the label's whole text is within the label, wrapped if it wraps.
bool fits(const QLabel &label) {
  const QRect room = label.contentsRect();
  const int flags = label.wordWrap() ? int(Qt::TextWordWrap) : int(Qt::TextSingleLine);
  const QRect taken = label.fontMetrics().boundingRect(QRect(0, 0, room.width(), 10000), flags, label.text());
  return taken.width() <= room.width() && taken.height() <= room.height();
}

bool fits(const QAbstractButton &button) {
  const QSize taken = button.fontMetrics().size(Qt::TextSingleLine, button.text());
  return taken.width() <= button.width() - 8 && taken.height() <= button.height() - 4;
}

TEST_P(ScreenTextsTest, EveryKeyOfTheScreensHasAText) {
  QStringList keys{"fontsize",
                   "product_line",
                   "reboot",
                   "reset",
                   "warning",
                   "CancelBT",
                   "Confirm",
                   "close",
                   "stop_waiting",
                   "config_parameter",
                   "config_serialport",
                   "port_setting",
                   "Error",
                   "Please_choose_COM_Port_and_Connect_to_device",
                   "Please_check_device_is_ready",
                   "Setting_value_is_out_of_range",
                   "Could not save changes while quitting. Quit anyway?",
                   "Quitting now will lose any changes you have made since the last successful save",
                   "Quit anyway",
                   "Cancel"};
  for (const auto &[name, key] : labelTexts) keys.append(QString::fromUtf16(key));
  for (const RegisterRow &row : registerCatalogue()) {
    keys.append(row.noticeKey());
    if (row.isSetting()) keys.append(row.toolTipKey());
  }
  QFile file(QStringLiteral("%1/%2.strings")
                 .arg(QStringLiteral(TAVRIL_STRINGS), QString::fromStdString(GetParam())));
  ASSERT_TRUE(file.open(QIODevice::ReadOnly));
  const StringTableFile table = StringTableFile::parse(file.readAll());
  for (const QString &key : keys) EXPECT_NE(table.entries().value(key), QString()) << qPrintable(key);
}

TEST_P(ScreenTextsTest, NoLabelOrButtonCutsItsText) {
  shipped_.widget("CloseButtonView").show();
  int count = 0;
  for (const QLabel *label : shipped_.screen.findChildren<QLabel *>()) {
    EXPECT_TRUE(fits(*label)) << qPrintable(label->objectName() + u' ' + label->text());
    ++count;
  }
  for (const ButtonLabel *button : shipped_.screen.findChildren<ButtonLabel *>()) {
    EXPECT_TRUE(fits(*button)) << qPrintable(button->objectName() + u' ' + button->text());
    ++count;
  }
  EXPECT_GT(count, 40);
}

TEST_P(ScreenTextsTest, TheLabelsHaveTheSizeThatTheTableGives) {
  for (const auto &[name, key] : labelTexts) {
    EXPECT_EQ(shipped_.widget(name).font().pixelSize(), text(u"fontsize").toInt()) << name;
  }
}

TEST_P(ScreenTextsTest, ALabelsSizeCanBeChangedWhileTheScreenIsShown) {
  for (const auto &[name, key] : labelTexts) {
    Style::setLabelSize(shipped_.widget(name), 11);
    EXPECT_EQ(shipped_.widget(name).font().pixelSize(), 11) << name;
  }
  EXPECT_EQ(shipped_.widget("product").font().pixelSize(), 26) << "the other labels keep theirs";
}

TEST_P(ScreenTextsTest, ALabelsSizeMayHaveAFraction) {
  const auto inkOf = [this](const char *name, double size) {
    QWidget &label = shipped_.widget(name);
    Style::setLabelSize(label, size);
    const QImage picture = label.grab().toImage();
    const QRgb ground = picture.pixel(picture.width() / 2, 4);
    int left = picture.width();
    int right = 0;
    for (int y = 4; y < picture.height() - 4; ++y) {
      for (int x = 6; x < picture.width() - 6; ++x) {
        if (std::abs(qGray(picture.pixel(x, y)) - qGray(ground)) < 40) continue;
        left = std::min(left, x);
        right = std::max(right, x);
      }
    }
    return right - left;
  };
  for (const char *name : {"max_temperature", "detail_set"}) {
    const double sizes[]{11, 11.5, 12};
    std::vector<int> widths;
    for (const double size : sizes) widths.push_back(inkOf(name, size));
    EXPECT_LT(widths[0], widths[1]) << name;
    EXPECT_LT(widths[1], widths[2]) << name;
  }
}

TEST_P(ScreenTextsTest, ALabelsSizeIsBounded) {
  QWidget &label = shipped_.widget("kp");
  for (const auto &[size, expected] : {std::pair(1e9, 24),
                                       {24.5, 24},
                                       {7.9, 8},
                                       {0.001, 8},
                                       {0.0, Style::defaultLabelSize},
                                       {-5.0, Style::defaultLabelSize}}) {
    Style::setLabelSize(label, size);
    EXPECT_EQ(label.font().pixelSize(), expected) << size;
  }
  for (const char *text : {"inf", "nan", "", "fontsize"}) {
    Style::setLabelSize(label, QString::fromLatin1(text).toDouble());
    EXPECT_EQ(label.font().pixelSize(),
              QLatin1String(text) == QLatin1String("inf") ? 24 : Style::defaultLabelSize)
        << text;
  }
}

TEST_P(ScreenTextsTest, EveryStateAndQuestionFitsInItsPlace) {
  auto &connection = shipped_.widget<QLabel>("ConnectStatus");
  for (const QString &state : {text(u"Not_connect"), text(u"Serial_port_start_initialization"),
                               text(u"COM_Connect_P1") + QStringLiteral("usbserial-ttyUSB0"),
                               text(u"COM_Connect_P1") + QStringLiteral("usbserial-ttyACM12")}) {
    connection.setText(state);
    EXPECT_TRUE(fits(connection)) << qPrintable(state);
  }
  auto &question = shipped_.widget<QLabel>("MsgContent");
  for (const QString &text : {text(u"reboot"), text(u"reset")}) {
    question.setText(text);
    EXPECT_TRUE(fits(question)) << qPrintable(text);
  }
  EXPECT_NE(text(u"reboot"), text(u"reset")) << "the answer is told by the question's text";
  auto &waiting = shipped_.widget<QLabel>("WaitContent");
  waiting.setText(text(u"Serial_port_start_initialization"));
  EXPECT_TRUE(fits(waiting));
  waiting.setText(text(u"Please_check_device_is_ready"));
  EXPECT_TRUE(fits(waiting));
}

TEST_P(ScreenTextsTest, EveryNoticeCanBeReadWithoutScrolling) {
  int count = 0;
  for (const RegisterRow &row : registerCatalogue()) {
    EXPECT_TRUE(canBeReadAtOnce(text(row.noticeKey()))) << row.number << qPrintable(text(row.noticeKey()));
    ++count;
  }
  EXPECT_EQ(count, 20);
  EXPECT_EQ(shipped_.widget("MsgView").font().pixelSize(), 18);
}

TEST_P(ScreenTextsTest, ATextTooLongForTheNoticeIsFoundOut) {
  EXPECT_FALSE(canBeReadAtOnce(QString(3000, u'x')));
}

TEST_P(ScreenTextsTest, EveryErrorAndDetailOfTheServoCanBeReadBelowItsNotice) {
  for (const int bit : {0, 1, 2, 3, 5, 6, 7}) {
    const StatusList list = statusErrorList(1 << bit, shipped_.log);
    EXPECT_EQ(list.count, 1);
    EXPECT_TRUE(canBeReadAtOnce(text(u"NoticeMsg_status_error") + list.text.in(shipped_.strings) + u'\n'))
        << bit;
  }
  for (const int bit : {4, 5, 6, 7}) {
    for (const bool shutDownDisabled : {false, true}) {
      const StatusList list = statusDetailList(1 << bit, shutDownDisabled, shipped_.log);
      EXPECT_EQ(list.count, 1);
      EXPECT_TRUE(canBeReadAtOnce(text(u"NoticeMsg_status_detail") + list.text.in(shipped_.strings) + u'\n'))
          << bit;
    }
  }
}

TEST_P(ScreenTextsTest, TheRuleAboveAListIsNotBroken) {
  auto &view = shipped_.widget<QPlainTextEdit>("MsgView");
  view.setPlainText(statusErrorList(1, shipped_.log).text.in(shipped_.strings));
  const QTextBlock rule = view.document()->findBlockByNumber(1);
  EXPECT_EQ(rule.text(), QString(45, u'-')) << "the text stays as it is";
  EXPECT_EQ(rule.layout()->lineCount(), 1);
}

TEST_P(ScreenTextsTest, EmptyLinesAtTheEndOfANoticeAreKeptAndTakeNoRoom) {
  auto &view = shipped_.widget<QPlainTextEdit>("MsgView");
  const QString notice = text(u"NoticeMsg_sid") + QString(20, u'\n');
  EXPECT_TRUE(canBeReadAtOnce(notice));
  EXPECT_EQ(view.toPlainText(), notice);
  EXPECT_FALSE(canBeReadAtOnce(notice + u'x')) << "empty lines before something are shown";
}

TEST_P(ScreenTextsTest, EveryMessageFitsInItsPlace) {
  auto &message = shipped_.widget<QLabel>("errormsg");
  for (const char16_t *key :
       {u"Please_choose_COM_Port_and_Connect_to_device", u"no_servo", u"there_are_more_than_one_servo"}) {
    message.setText(text(key));
    EXPECT_TRUE(fits(message)) << qPrintable(message.text());
  }
}

TEST_P(ScreenTextsTest, ToolTipsNameTheRangeOfTheirField) {
  const std::pair<const char16_t *, const char *> highest[]{
      {u"ToolTip_sid", "253"},
      {u"ToolTip_max_tempertaure", "253"},
      {u"ToolTip_min_voltage", "253"},
      {u"ToolTip_max_voltage", "253"},
      {u"ToolTip_max_load", "512"},
      {u"ToolTip_kp", "32766"},
      {u"ToolTip_ki", "32766"},
      {u"ToolTip_kd", "32766"},
      {u"ToolTip_over_temperature", "255"},
      {u"ToolTip_over_voltage", "255"},
      {u"ToolTip_over_load", "255"},
      {u"ToolTip_calibration_angle", "-20"},
  };
  for (const auto &[key, number] : highest) {
    EXPECT_TRUE(text(key).contains(QLatin1String(number))) << qPrintable(text(key));
  }
}

TEST_P(ScreenTextsTest, FramesOfSevenBytesAreShownWhole) {
  for (const auto &[name, frame] :
       {std::pair("TXcmd", QStringLiteral("CalibrationAngleTX: ff 7 92 f ff f6 fe")),
        std::pair("RXcmd", QStringLiteral("RX: 255 7 145 15 255 246 254 ff 07 91 0f ff f6 fe")),
        std::pair("TXcmd", QStringLiteral("CalibrationAngleTX: ff ff ff ff ff ff ff")),
        std::pair("RXcmd", QStringLiteral("RX: 255 255 255 255 255 255 254 ff ff ff ff ff ff fe"))}) {
    auto &field = shipped_.widget<FrameField>(name);
    field.setText(frame);
    EXPECT_EQ(field.lines().join(u' '), frame);
    EXPECT_LE(field.lines().size() * field.fontMetrics().lineSpacing(), field.height());
    for (const QString &line : field.lines()) {
      EXPECT_LE(field.fontMetrics().horizontalAdvance(line), field.width()) << qPrintable(line);
    }
  }
}

TEST_P(ScreenTextsTest, EveryControlHasAnAccessibleName) {
  shipped_.widget("CloseButtonView").show();
  int count = 0;
  for (QWidget *widget : shipped_.screen.findChildren<QWidget *>()) {
    const bool isControl = qobject_cast<QLineEdit *>(widget) || qobject_cast<QAbstractButton *>(widget) ||
                           qobject_cast<QPlainTextEdit *>(widget) ||
                           widget->objectName() == QStringLiteral("imageView");
    if (!isControl) continue;
    QAccessibleInterface *interface = QAccessible::queryAccessibleInterface(widget);
    ASSERT_NE(interface, nullptr) << qPrintable(widget->objectName());
    EXPECT_FALSE(interface->text(QAccessible::Name).isEmpty()) << qPrintable(widget->objectName());
    if (qobject_cast<ButtonLabel *>(widget)) {
      EXPECT_EQ(interface->role(), QAccessible::Button);
    }
    ++count;
  }
  EXPECT_GE(count, 35);
}

TEST_P(ScreenTextsTest, AFieldIsReadOutAsItsCaption) {
  QAccessibleInterface *field = QAccessible::queryAccessibleInterface(&shipped_.widget("Kp_value"));
  EXPECT_EQ(field->text(QAccessible::Name), text(u"kp"));
}

TEST_P(ScreenTextsTest, AFieldIsDescribedByItsToolTipAndItsNotice) {
  for (const RegisterRow &row : settingRegisters()) {
    QAccessibleInterface *field =
        QAccessible::queryAccessibleInterface(&shipped_.widget(row.valueKey.toString()));
    EXPECT_EQ(field->text(QAccessible::Description), text(row.toolTipKey()) + u'\n' + text(row.noticeKey()));
  }
}

TEST_P(ScreenTextsTest, ElementsWithoutACaptionHaveAName) {
  for (const auto &[name, key] : {std::pair("TXcmd", u"sent_frame"), std::pair("RXcmd", u"received_frame"),
                                  std::pair("MsgView", u"detail_about"),
                                  std::pair("servoPicture", u"motor_kx_90"), std::pair("close", u"close")}) {
    QAccessibleInterface *element = QAccessible::queryAccessibleInterface(&shipped_.widget(name));
    EXPECT_EQ(element->text(QAccessible::Name), text(key)) << name;
  }
  EXPECT_EQ(QAccessible::queryAccessibleInterface(&shipped_.widget("servoPicture"))->role(),
            QAccessible::Graphic);
}

TEST_P(ScreenTextsTest, APanelIsADialogNamedByItsTitleAndDescribedByItsText) {
  for (const auto &[panel, title, content] :
       {std::tuple("MsgPanel", u"warning", u"reset"),
        std::tuple("WaitPanel", u"Confirm", u"Please_check_device_is_ready")}) {
    QAccessibleInterface *dialog = QAccessible::queryAccessibleInterface(&shipped_.widget(panel));
    EXPECT_EQ(dialog->role(), QAccessible::Dialog);
    EXPECT_EQ(dialog->text(QAccessible::Name), text(title));
    EXPECT_EQ(dialog->text(QAccessible::Description), text(content));
  }
}

TEST_P(ScreenTextsTest, TheConnectionStateIsReadOutAsItStands) {
  QAccessibleInterface *line = QAccessible::queryAccessibleInterface(&shipped_.widget("ConnectStatus"));
  EXPECT_EQ(line->text(QAccessible::Name), text(u"Not_connect"));
  shipped_.setText("ConnectStatus", u"Serial_port_start_initialization");
  EXPECT_EQ(line->text(QAccessible::Name), text(u"Serial_port_start_initialization"));
}

INSTANTIATE_TEST_SUITE_P(Languages, ScreenTextsTest, testing::ValuesIn(languageParameters()),
                         languageTestName);

}  // namespace
}  // namespace tavril
