#include "editor/windows/DoctorRow.h"

#include "doctor/ResultTexts.h"
#include "look/Style.h"
#include "platform/PlainTitle.h"
#include "platform/StringTable.h"

#include <QApplication>
#include <QClipboard>
#include <QColor>
#include <QFont>
#include <QGridLayout>
#include <QHBoxLayout>
#include <QLabel>
#include <QPaintEvent>
#include <QPainter>
#include <QPen>
#include <QPointF>
#include <QPolygonF>
#include <QPushButton>
#include <QRectF>
#include <QString>

namespace tavril {

namespace {

constexpr int markSide = 22;
constexpr double discRadius = 8;

/// The text contains words from devices and programs, so it must be shown as plain text.
QLabel *plainLabel(const char *name, QWidget *parent) {
  auto *label = new QLabel(parent);
  label->setObjectName(QString::fromLatin1(name));
  label->setTextFormat(Qt::PlainText);
  label->setWordWrap(true);
  return label;
}

QString stateKey(const std::optional<doctor::Result> &result, bool isRunning) {
  if (result) return QStringLiteral("doctor_") + nameOf(result->state);
  return isRunning ? QStringLiteral("doctor_running") : QStringLiteral("doctor_waiting");
}

}  // namespace

/// The outcome of a check as a sign, which differs in shape as well as in colour.
class DoctorMark final : public QWidget {
 public:
  explicit DoctorMark(QWidget *parent = nullptr);

  /// No value for a check that has not begun.
  void setState(std::optional<doctor::State> state);
  void setRunning();

 protected:
  void paintEvent(QPaintEvent *event) override;

 private:
  std::optional<doctor::State> state_;
  bool isRunning_ = false;
};

DoctorMark::DoctorMark(QWidget *parent) : QWidget(parent) {
  setFixedSize(markSide, markSide);
}

void DoctorMark::setState(std::optional<doctor::State> state) {
  state_ = state;
  isRunning_ = false;
  update();
}

void DoctorMark::setRunning() {
  state_.reset();
  isRunning_ = true;
  update();
}

void DoctorMark::paintEvent(QPaintEvent *) {
  QPainter painter(this);
  painter.setRenderHint(QPainter::Antialiasing);
  painter.translate(markSide / 2.0, markSide / 2.0);
  const QRectF disc(-discRadius, -discRadius, 2 * discRadius, 2 * discRadius);
  const auto pen = [&](const QColor &colour) {
    painter.setPen(QPen(colour, 2.2, Qt::SolidLine, Qt::RoundCap, Qt::RoundJoin));
  };
  if (!state_) {
    pen(isRunning_ ? Style::warningText() : Style::mutedText());
    painter.drawEllipse(disc);
    if (isRunning_) {
      painter.setBrush(Style::warningText());
      painter.drawPie(disc, 90 * 16, 180 * 16);
    }
    return;
  }
  switch (*state_) {
    case doctor::State::Passed:
      pen(Style::accent());
      painter.drawPolyline(QPolygonF{{-6, 0}, {-2, 5}, {7, -5}});
      break;
    case doctor::State::Warning:
      pen(Style::warningText());
      painter.drawPolygon(QPolygonF{{0, -8}, {8.5, 7}, {-8.5, 7}});
      painter.drawLine(QPointF(0, -2), QPointF(0, 2));
      break;
    case doctor::State::Failed:
      pen(Style::warningText());
      painter.setBrush(Style::warningText());
      painter.drawEllipse(disc);
      pen(Style::card());
      painter.drawLine(QPointF(-3.5, -3.5), QPointF(3.5, 3.5));
      painter.drawLine(QPointF(-3.5, 3.5), QPointF(3.5, -3.5));
      break;
    case doctor::State::Skipped:
      pen(Style::mutedText());
      painter.drawLine(QPointF(-5, 0), QPointF(5, 0));
      break;
  }
}

DoctorRow::DoctorRow(doctor::CheckId check, QWidget *parent)
    : QWidget(parent),
      check_(check),
      mark_(new DoctorMark(this)),
      title_(plainLabel("title", this)),
      state_(plainLabel("state", this)),
      finding_(plainLabel("finding", this)),
      advice_(plainLabel("advice", this)),
      remedy_(new QWidget(this)),
      command_(plainLabel("command", remedy_)),
      copy_(new QPushButton(remedy_)) {
  setObjectName(QStringLiteral("row_") + nameOf(check));
  copy_->setObjectName(QStringLiteral("copy_") + nameOf(check));
  QFont bold = Style::textFont();
  bold.setWeight(QFont::DemiBold);
  title_->setFont(bold);
  title_->setWordWrap(false);
  state_->setProperty("muted", true);
  state_->setAlignment(Qt::AlignRight | Qt::AlignVCenter);
  state_->setWordWrap(false);
  command_->setFont(Style::valueFont());
  command_->setTextInteractionFlags(Qt::TextSelectableByMouse);

  auto *remedy = new QHBoxLayout(remedy_);
  remedy->setContentsMargins({});
  remedy->addWidget(command_, 1);
  remedy->addWidget(copy_, 0, Qt::AlignTop);
  auto *grid = new QGridLayout(this);
  grid->setContentsMargins(0, 0, 0, 0);
  grid->setHorizontalSpacing(12);
  grid->setVerticalSpacing(2);
  grid->setColumnStretch(1, 1);
  grid->addWidget(mark_, 0, 0, Qt::AlignTop);
  grid->addWidget(title_, 0, 1);
  grid->addWidget(state_, 0, 2);
  grid->addWidget(finding_, 1, 1, 1, 2);
  grid->addWidget(advice_, 2, 1, 1, 2);
  grid->addWidget(remedy_, 3, 1, 1, 2);
  connect(copy_, &QPushButton::clicked, this,
          [this] { QApplication::clipboard()->setText(command_->text()); });
  clear();
}

void DoctorRow::clear() {
  result_.reset();
  isRunning_ = false;
  mark_->setState(std::nullopt);
}

void DoctorRow::setRunning() {
  result_.reset();
  isRunning_ = true;
  mark_->setRunning();
}

void DoctorRow::setResult(const doctor::Result &result) {
  result_ = result;
  isRunning_ = false;
  mark_->setState(result.state);
}

void DoctorRow::setTexts(const StringTable &strings) {
  const doctor::ResultTexts texts =
      result_ ? doctor::ResultTexts::of(*result_, strings) : doctor::ResultTexts();
  const QString command = result_ ? result_->command : QString();
  const QString state = strings.text(stateKey(result_, isRunning_));
  title_->setText(strings.text(titleKeyOf(check_)));
  state_->setText(state);
  finding_->setText(texts.finding);
  finding_->setVisible(!texts.finding.isEmpty());
  advice_->setText(texts.advice);
  advice_->setVisible(!texts.advice.isEmpty());
  command_->setText(command);
  remedy_->setVisible(!command.isEmpty());
  copy_->setText(plainTitle(strings.text(u"doctor_copy")));
  // A screen reader reads only the name, and several buttons have the same text.
  copy_->setAccessibleName(QStringLiteral("%1: %2").arg(strings.text(u"doctor_copy"), command));
  setAccessibleName(QStringLiteral("%1: %2").arg(title_->text(), state));
  setAccessibleDescription(texts.finding);
}

}  // namespace tavril
