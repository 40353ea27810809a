#include "editor/windows/DoctorWindow.h"

#include "app/AppDelegate.h"
#include "editor/windows/DoctorRow.h"
#include "look/Style.h"
#include "platform/Desktop.h"
#include "platform/PlainTitle.h"
#include "platform/StringTable.h"

#include <QAbstractSlider>
#include <QFrame>
#include <QHBoxLayout>
#include <QKeyEvent>
#include <QLabel>
#include <QPalette>
#include <QPushButton>
#include <QScreen>
#include <QScrollArea>
#include <QScrollBar>
#include <QSize>
#include <QString>
#include <QVBoxLayout>

#include <algorithm>
#include <utility>

namespace tavril {

namespace {

constexpr QSize doctorSize(680, 760);
constexpr int margin = 24;

QLabel *label(const char *name, QWidget *parent) {
  auto *made = new QLabel(parent);
  made->setObjectName(QString::fromLatin1(name));
  made->setTextFormat(Qt::PlainText);
  made->setWordWrap(true);
  return made;
}

QPushButton *button(const char *name, QWidget *parent) {
  auto *made = new QPushButton(parent);
  made->setObjectName(QString::fromLatin1(name));
  return made;
}

}  // namespace

DoctorWindow::DoctorWindow(const Desktop &desktop, const doctor::Services &services, Background &background,
                           MakeRequest makeRequest, QWidget *parent)
    : SideWindow(desktop.strings, desktop.notifications, parent, Qt::Window),
      desktop_(desktop),
      services_(services),
      background_(background),
      makeRequest_(std::move(makeRequest)),
      intro_(label("intro", this)),
      scroll_(new QScrollArea(this)),
      outcome_(label("outcome", this)),
      again_(button("again", this)),
      close_(button("close", this)) {
  setObjectName(QStringLiteral("DoctorWindow"));
  build();
  connect(again_, &QPushButton::clicked, this, &DoctorWindow::begin);
  connect(close_, &QPushButton::clicked, this, &QWidget::close);
  setTexts();
}

void DoctorWindow::open(QWidget &parent, const Desktop &desktop, const doctor::Services &services,
                        Background &background, const MakeRequest &makeRequest) {
  auto *window = openOnce<DoctorWindow>(parent, [&] {
    auto *made = new DoctorWindow(desktop, services, background, makeRequest, &parent);
    made->resize(doctorSize.boundedTo(parent.screen()->availableSize()));
    return made;
  });
  if (!window->isAtWork()) window->begin();
}

doctor::Request DoctorWindow::requestFor(const AppDelegate &link, std::chrono::milliseconds bootWait) {
  doctor::Request request;
  request.path = link.pathToOpen();
  request.bootWait = bootWait;
  if (const QString open = link.openPath(); !open.isEmpty())
    request.link = doctor::OwnLink{open, doctor::Heard::in(link.received())};
  return request;
}

void DoctorWindow::build() {
  QPalette colours = palette();
  colours.setColor(QPalette::Window, Style::card());
  setPalette(colours);
  setAutoFillBackground(true);

  auto *checks = new QWidget;
  auto *list = new QVBoxLayout(checks);
  list->setContentsMargins(0, 0, 8, 0);
  list->setSpacing(12);
  for (const doctor::CheckId check : doctor::allChecks) {
    rows_[check] = new DoctorRow(check);
    list->addWidget(rows_[check]);
  }
  list->addStretch();
  scroll_->setWidget(checks);
  scroll_->setWidgetResizable(true);
  scroll_->setFrameShape(QFrame::NoFrame);
  scroll_->setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
  scroll_->setFocusPolicy(Qt::NoFocus);
  scroll_->viewport()->setAutoFillBackground(false);
  checks->setAutoFillBackground(false);
  checks->installEventFilter(this);

  auto *buttons = new QHBoxLayout;
  buttons->setSpacing(10);
  buttons->addWidget(outcome_, 1);
  buttons->addWidget(again_);
  buttons->addWidget(close_);
  auto *whole = new QVBoxLayout(this);
  whole->setContentsMargins(margin, 20, margin, 20);
  whole->setSpacing(14);
  whole->addWidget(intro_);
  whole->addWidget(scroll_, 1);
  whole->addLayout(buttons);
  close_->setFocus();
}

void DoctorWindow::begin() {
  run_.reset();
  isDone_ = false;
  for (const auto &[check, shown] : rows_) shown->clear();
  again_->setEnabled(false);
  setTexts();
  run_ = std::make_unique<doctor::DiagnosisRun>(services_, makeRequest_(), background_, desktop_.mainQueue,
                                                doctor::Listener{[this](doctor::CheckId check) {
                                                                   row(check).setRunning();
                                                                   row(check).setTexts(strings_);
                                                                 },
                                                                 [this](const doctor::Result &result) {
                                                                   row(result.check).setResult(result);
                                                                   row(result.check).setTexts(strings_);
                                                                 }},
                                                [this] {
                                                  isDone_ = true;
                                                  again_->setEnabled(true);
                                                  showOutcome();
                                                });
}

bool DoctorWindow::isAtWork() const {
  return run_ && !isDone_;
}

void DoctorWindow::stop() {
  if (!isAtWork()) return;
  run_.reset();
  for (const auto &[check, shown] : rows_) {
    if (!shown->result()) shown->clear();
  }
  again_->setEnabled(true);
  setTexts();
}

void DoctorWindow::setTexts() {
  setWindowTitle(strings_.text(u"connection_doctor"));
  intro_->setText(strings_.text(u"doctor_intro"));
  again_->setText(plainTitle(strings_.text(u"doctor_again")));
  close_->setText(plainTitle(strings_.text(u"close")));
  for (const auto &[check, shown] : rows_) shown->setTexts(strings_);
  showOutcome();
}

void DoctorWindow::showOutcome() {
  const bool isHealthy = std::ranges::none_of(rows_, [](const auto &entry) {
    return entry.second->result() && entry.second->result()->state == doctor::State::Failed;
  });
  outcome_->setText(isDone_ ? strings_.text(isHealthy ? u"doctor_all_well" : u"doctor_trouble") : QString());
}

bool DoctorWindow::eventFilter(QObject *watched, QEvent *event) {
  QWidget *checks = scroll_->widget();
  if (watched == checks && (event->type() == QEvent::Resize || event->type() == QEvent::LayoutRequest)) {
    // A scroll area uses the minimum height of its content, which is too small for texts that wrap.
    checks->setMinimumHeight(checks->layout()->heightForWidth(checks->width()));
  }
  return QWidget::eventFilter(watched, event);
}

void DoctorWindow::keyPressEvent(QKeyEvent *event) {
  QScrollBar *bar = scroll_->verticalScrollBar();
  switch (event->key()) {
    case Qt::Key_PageDown:
      bar->triggerAction(QAbstractSlider::SliderPageStepAdd);
      break;
    case Qt::Key_PageUp:
      bar->triggerAction(QAbstractSlider::SliderPageStepSub);
      break;
    default:
      SideWindow::keyPressEvent(event);
  }
}

}  // namespace tavril
