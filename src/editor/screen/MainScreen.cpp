#include "editor/screen/MainScreen.h"

#include "editor/panels/MsgPanel.h"
#include "editor/panels/WaitPanel.h"
#include "editor/screen/NoticeTypography.h"
#include "editor/screen/ScreenPointer.h"
#include "editor/screen/ServoPicture.h"
#include "look/Style.h"
#include "platform/IntegerValue.h"
#include "platform/StringTable.h"
#include "protocol/RegisterCatalogue.h"
#include "ui_MainScreen.h"
#include "wire/Range.h"

#include <QAccessible>
#include <QAccessibleInterface>
#include <QAccessibleWidget>
#include <QChar>
#include <QFont>
#include <QLabel>
#include <QLineEdit>
#include <QObject>
#include <QString>
#include <QStringView>
#include <QWidget>

#include <algorithm>

namespace tavril {

namespace {

QFont demiBold(int pixelSize) {
  QFont font = Style::textFont(pixelSize);
  font.setWeight(QFont::DemiBold);
  return font;
}

/// A panel for assistive technologies. Its texts are read from its labels on request, because the rest of the
/// program sets only the labels.
class AccessiblePanel final : public QAccessibleWidget {
 public:
  explicit AccessiblePanel(QWidget *panel) : QAccessibleWidget(panel, QAccessible::Dialog) {}

  QString text(QAccessible::Text kind) const override {
    const auto labels = widget()->findChildren<QLabel *>(QString(), Qt::FindDirectChildrenOnly);
    if (kind == QAccessible::Name) return labels.value(0)->text();
    if (kind == QAccessible::Description) return labels.value(1)->text();
    return QAccessibleWidget::text(kind);
  }
};

/// The roles of our own widgets: a panel is a dialog, named by its title and described by its text, and the
/// picture of the servo is a graphic.
QAccessibleInterface *interfaceFor(const QString &, QObject *object) {
  auto *panel = qobject_cast<QWidget *>(object);
  if (qobject_cast<MsgPanel *>(object) || qobject_cast<WaitPanel *>(object)) {
    return new AccessiblePanel(panel);
  }
  if (qobject_cast<ServoPicture *>(object)) return new QAccessibleWidget(panel, QAccessible::Graphic);
  return nullptr;
}

/// An element without a caption, and the key of the name that a screen reader says.
struct NameRow {
  QStringView element;
  QStringView key;
};

constexpr NameRow names[]{
    {u"servoPicture", u"motor_kx_90"},
    {u"TXcmd", u"sent_frame"},
    {u"RXcmd", u"received_frame"},
    {u"MsgView", u"detail_about"},
};

void setAccessibleTexts(QWidget &screen, const StringTable &strings) {
  for (const NameRow &row : names) {
    if (auto *element = screen.findChild<QWidget *>(row.element.toString())) {
      element->setAccessibleName(strings.text(row.key));
    }
  }
  // Fields are named by their captions. Their description is what the tool tip and the notice say.
  for (const RegisterRow &row : settingRegisters()) {
    if (auto *field = screen.findChild<QWidget *>(row.valueKey.toString())) {
      field->setAccessibleDescription(strings.text(row.toolTipKey()) + u'\n' + strings.text(row.noticeKey()));
    }
  }
}

}  // namespace

MainScreen::MainScreen(QWidget *parent) : QWidget(parent), ui_(std::make_unique<Ui::MainScreen>()) {
  QAccessible::installFactory(interfaceFor);
  ui_->setupUi(this);
  Style::softenBold(*this);
  setAttribute(Qt::WA_StyledBackground);
  ui_->product->setFont(demiBold(26));
  ui_->productLine->setFont(Style::textFont(12));
  ui_->ConnectStatus->setFont(demiBold(15));
  for (QLabel *caption : {ui_->txCaption, ui_->rxCaption}) caption->setFont(demiBold(11));
  for (QLabel *mark : {ui_->scale0, ui_->scale204, ui_->scale511, ui_->scale818, ui_->scale1023}) {
    mark->setFont(Style::textFont(11));
  }
  ui_->MsgView->setFont(Style::textFont(Style::noticeSize));
  // Aligns the text with the caption above the frame.
  ui_->MsgView->document()->setDocumentMargin(0);
  // The text can be selected and copied with the keyboard alone.
  ui_->MsgView->setTextInteractionFlags(Qt::TextSelectableByMouse | Qt::TextSelectableByKeyboard);
  new NoticeTypography(ui_->MsgView->document());
  connect(ui_->angle, &QLineEdit::textChanged, this, &MainScreen::followPosition);
  connect(ui_->StatusError_value, &QLineEdit::textChanged, this,
          [this](const QString &text) { ui_->StatusError_value->setAlarm(integerValueOf(text) > 0); });
  wireDial();
}

MainScreen::~MainScreen() = default;

void MainScreen::setTexts(const StringTable &strings) {
  ui_->product->setText(strings.text(u"tavril"));
  ui_->productLine->setText(strings.text(u"product_line"));
  ui_->imageView->setAccessibleName(strings.text(u"dial"));
  ui_->imageView->setAccessibleDescription(strings.text(u"dial_help"));
  setAccessibleTexts(*this, strings);
}

void MainScreen::followPosition(const QString &entry) {
  // The position entry refuses any other text; until then the dial does not change.
  const bool isNumber =
      std::all_of(entry.begin(), entry.end(), [](QChar c) { return c >= u'0' && c <= u'9'; });
  const int position = integerValueOf(entry);
  if (isNumber && position <= wire::positionRange.maximum) {
    ui_->imageView->setPosition(position);
    ui_->MotorPoint->setKnown(true);
  }
}

void MainScreen::wireDial() {
  pointer_ = new ScreenPointer(*this);
  connect(pointer_, &ScreenPointer::followed, this, &MainScreen::followPointer);
  connect(ui_->imageView, &DialView::focusChanged, ui_->MotorPoint, &KnobView::setFocused);
  connect(ui_->imageView, &DialView::positionRequested, this, [this](int position) {
    if (!pointer_->isPanelUp()) Q_EMIT positionRequested(position);
  });
}

void MainScreen::followPointer() {
  const bool isTurning = pointer_->isDown() && pointer_->isOverDial();
  ui_->MotorPoint->setPointer(pointer_->isOverDial(), isTurning);
  setCursor(pointer_->isOverDial() ? Qt::PointingHandCursor : Qt::ArrowCursor);
  // The dial takes the focus after it has written the position, which ends an edit of the position without
  // sending it. Any other unfinished edit stays: leaving it could bring up an alert in the middle of a press.
  const auto *edited = qobject_cast<EditLine *>(focusWidget());
  if (isTurning && !(edited && edited->isModified())) ui_->imageView->setFocus(Qt::MouseFocusReason);
}

}  // namespace tavril
