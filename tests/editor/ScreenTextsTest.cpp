#include "editor/ButtonLabel.h"
#include "editor/ConnectionLine.h"
#include "editor/FrameField.h"
#include "platform/StringTableFile.h"
#include "protocol/RegisterCatalogue.h"
#include "tests/editor/ShippedScreen.h"
#include "tests/support/ShippedLanguages.h"
#include "ui_PortDialog.h"

#include <QAccessible>
#include <QAccessibleWidget>
#include <QComboBox>
#include <QDialog>
#include <QFile>
#include <QLabel>
#include <QPlainTextEdit>
#include <QPushButton>

namespace tavril {
namespace {

/// Once for each language that came with the program.
class ScreenTextsTest : public testing::TestWithParam<QString> {
 protected:
  ScreenTextsTest() { shipped_.show(); }

  QString text(QStringView key) const { return shipped_.strings.text(key); }

  ShippedScreen shipped_{GetParam()};
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
  QFile file(QCoreApplication::applicationDirPath() + QStringLiteral("/strings/") + GetParam() +
             QStringLiteral(".strings"));
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
}

TEST_P(ScreenTextsTest, EveryNoticeCanBeReadWithoutScrolling) {
  auto &view = shipped_.widget<QPlainTextEdit>("MsgView");
  for (const RegisterRow &row : registerCatalogue()) {
    view.setPlainText(text(row.noticeKey()));
    // Of a plain text document the height counts lines.
    const double height = view.document()->size().height() * view.fontMetrics().lineSpacing();
    EXPECT_LE(height, view.viewport()->height()) << row.number;
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

TEST_P(ScreenTextsTest, ThePortDialogHasItsElementsAndCutsNoText) {
  QDialog dialog;
  Ui::PortDialog ui;
  ui.setupUi(&dialog);
  ui.parameter->setText(text(u"config_parameter"));
  ui.serialport->setText(text(u"config_serialport"));
  ui.doneBT->setText(text(u"Confirm"));
  ui.cancel->setText(text(u"CancelBT"));
  EXPECT_EQ(ui.portCombo->property("identifier").toString(), QStringLiteral("port"));
  for (const QLabel *label : {ui.parameter, ui.serialport}) EXPECT_TRUE(fits(*label));
  for (const QPushButton *button : {ui.doneBT, ui.cancel}) EXPECT_TRUE(fits(*button));
  const QList<QWidget *> elements{ui.parameter, ui.serialport, ui.portCombo, ui.doneBT, ui.cancel};
  for (const QWidget *one : elements) {
    EXPECT_TRUE(dialog.rect().contains(one->geometry()));
    for (const QWidget *other : elements) {
      EXPECT_EQ(one->geometry().intersects(other->geometry()), one == other);
    }
  }
}

INSTANTIATE_TEST_SUITE_P(InEveryLanguage, ScreenTextsTest, testing::ValuesIn(shippedLanguages()),
                         languageTestName);

}  // namespace
}  // namespace tavril
