#include "editor/MainScreen.h"

#include "editor/AccessibleRoles.h"
#include "editor/AccessibleTexts.h"
#include "editor/NoticeTypography.h"
#include "editor/ScreenPointer.h"
#include "look/Style.h"
#include "platform/IntegerValue.h"
#include "platform/StringTable.h"
#include "ui_MainScreen.h"
#include "wire/Range.h"

#include <QChar>
#include <QFont>
#include <QLabel>
#include <QLineEdit>

#include <algorithm>

namespace tavril {

namespace {

QFont demiBold(int pixelSize) {
  QFont font = Style::textFont(pixelSize);
  font.setWeight(QFont::DemiBold);
  return font;
}

}  // namespace

MainScreen::MainScreen(QWidget *parent) : QWidget(parent), ui_(std::make_unique<Ui::MainScreen>()) {
  AccessibleRoles::install();
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
  // The text then begins at the frame's edge, in line with its caption.
  ui_->MsgView->document()->setDocumentMargin(0);
  // Read and copied with the keys alone, too.
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
  AccessibleTexts::put(*this, strings);
}

void MainScreen::followPosition(const QString &entry) {
  // What is no position is being refused elsewhere; until then the dial stays as it is.
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
