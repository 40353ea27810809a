#include "editor/windows/EditorWindow.h"

#include "app/LanguageChoice.h"
#include "editor/panels/MsgPanel.h"
#include "editor/panels/PanelBackdrop.h"
#include "editor/panels/WaitPanel.h"
#include "editor/screen/ConnectionLine.h"
#include "editor/screen/EntryField.h"
#include "editor/screen/MainScreen.h"
#include "editor/screen/ScreenCoordinates.h"
#include "editor/screen/ScreenPointer.h"
#include "editor/screen/ValueField.h"
#include "look/Style.h"
#include "platform/Desktop.h"
#include "platform/Languages.h"
#include "platform/MainQueue.h"
#include "platform/NotificationCenter.h"
#include "platform/StringTable.h"
#include "protocol/RegisterCatalogue.h"
#include "protocol/SharedState.h"

#include <QAbstractButton>
#include <QApplication>
#include <QCloseEvent>
#include <QFrame>
#include <QLayout>
#include <QList>
#include <QMenuBar>
#include <QObject>
#include <QPoint>
#include <QPointF>
#include <QScreen>
#include <QScrollArea>
#include <QString>
#include <QWidget>
#include <QWindow>

#include <utility>

namespace tavril {

namespace {

/// Connects the clickable labels and buttons of a screen or panel to one action, which gets the identifier.
template <typename Action>
void connectButtons(const QList<QAbstractButton *> &buttons, QObject *context, Action action) {
  for (QAbstractButton *button : buttons) {
    const QString identifier = button->property("identifier").toString();
    if (identifier.isEmpty()) continue;
    QObject::connect(button, &QAbstractButton::clicked, context,
                     [action, identifier] { action(identifier); });
  }
}

constexpr int focusMargin = 24;

/// The panel of the widget, or nothing.
QWidget *panelOf(QWidget *widget) {
  for (QWidget *ancestor = widget; ancestor; ancestor = ancestor->parentWidget()) {
    if (qobject_cast<PanelBackdrop *>(ancestor->parentWidget())) return ancestor;
  }
  return nullptr;
}

/// Shows the whole screen, with scroll bars if there is not enough space. The widget that gets the keyboard's
/// focus is scrolled into view; for a button of a panel, the whole panel as far as it fits.
class ScreenScroller final : public QScrollArea {
 public:
  explicit ScreenScroller(QWidget *parent = nullptr);

 private:
  void follow(QWidget *focus);
  void bringIntoView(const QWidget &element);
};

ScreenScroller::ScreenScroller(QWidget *parent) : QScrollArea(parent) {
  setFrameShape(QFrame::NoFrame);
  setAlignment(Qt::AlignCenter);
  // The scroller itself uses no keys, so it must not take the focus when Tab is pressed.
  setFocusPolicy(Qt::NoFocus);
  connect(qApp, &QApplication::focusChanged, this, [this](QWidget *, QWidget *now) { follow(now); });
}

void ScreenScroller::follow(QWidget *focus) {
  if (!focus || !widget() || !widget()->isAncestorOf(focus)) return;
  // A panel that was just shown gets its place only when its layout has run.
  if (QWidget *panel = panelOf(focus)) {
    panel->parentWidget()->layout()->activate();
    bringIntoView(*panel);
  }
  bringIntoView(*focus);
}

void ScreenScroller::bringIntoView(const QWidget &element) {
  // By the widget's place, because Qt would use its text cursor, which may be elsewhere.
  const QPoint middle = element.mapTo(widget(), element.rect().center());
  ensureVisible(middle.x(), middle.y(), element.width() / 2 + focusMargin,
                element.height() / 2 + focusMargin);
}

}  // namespace

EditorWindow::EditorWindow(SharedState &state, AppDelegate &appdelegate, const Desktop &desktop,
                           Actions actions)
    : desktop_(desktop), actions_(std::move(actions)) {
  buildScreen(state, appdelegate);
  menu_ = std::make_unique<MainMenu>(*menuBar(), actions_, appdelegate, actions_.language, desktop_.strings);
  wireScreen();
  windowController_->windowDidLoad();
  desktop_.notifications.addObserver(this, QString::fromUtf16(LanguageDidChangeNotification),
                                     [this](const Notification &) { languageDidChange(); });
}

EditorWindow::~EditorWindow() {
  desktop_.notifications.removeObserver(this);
  // The controllers are destroyed before the widgets, which still report the end of a press or an edit while
  // they are hidden.
  for (QObject *child : findChildren<QObject *>()) child->disconnect(this);
}

void EditorWindow::buildScreen(SharedState &state, AppDelegate &appdelegate) {
  auto *scroll = new ScreenScroller(this);
  screen_ = new MainScreen;
  scroll->setWidget(screen_);
  screen_->pointer().watchAround(*scroll->viewport());
  setCentralWidget(scroll);

  msgPanel_ = new MsgPanel;
  waitPanel_ = new WaitPanel;
  screen_->findChild<ConnectionLine *>(QStringLiteral("ConnectStatus"))->follow(state.connection);
  screen_->findChild<PanelBackdrop *>(QStringLiteral("ContrainerView_MsgView"))->setPanel(msgPanel_);
  auto *waitBackdrop = screen_->findChild<PanelBackdrop *>(QStringLiteral("ContrainerView_WaitView"));
  waitBackdrop->setPanel(waitPanel_);
  connect(waitBackdrop, &PanelBackdrop::changing, waitPanel_, &WaitPanel::hideCloseButton);
  setTexts();

  screenView_ = std::make_unique<WidgetView>(*screen_);
  msgView_ = std::make_unique<WidgetView>(*msgPanel_);
  waitView_ = std::make_unique<WidgetView>(*waitPanel_);
  controller_ = std::make_unique<ViewController>(state, appdelegate, *screenView_, desktop_);
  message_ = std::make_unique<MsgMain>(state, appdelegate, *msgView_, desktop_);
  waiting_ = std::make_unique<WaitMain>(state, *waitView_, desktop_);
  windowController_ = std::make_unique<WindowsCtrl>(*screenView_, desktop_, actions_.endProcess);
  controller_->viewDidLoad();
  message_->viewDidLoad();
  waiting_->viewDidLoad();
}

void EditorWindow::fitInto(const QSize &available) {
  const int menuHeight = menuBar()->sizeHint().height();
  resize(QSize(ScreenCoordinates::width, ScreenCoordinates::height + menuHeight).boundedTo(available));
}

void EditorWindow::setTexts() {
  screen_->setTexts(desktop_.strings);
  msgPanel_->setTexts(desktop_.strings);
  waitPanel_->setTexts(desktop_.strings);
}

void EditorWindow::languageDidChange() {
  // First, because the layout of texts depends on their fonts.
  if (actions_.language) Style::setLanguage(actions_.language->language());
  setTexts();
  message_->setTexts();
  waiting_->setTexts();
  controller_->languageDidChange();
  menu_->setTexts();
}

void EditorWindow::wireScreen() {
  for (const RegisterRow &row : settingRegisters()) {
    auto *field = screen_->findChild<ValueField *>(row.valueKey.toString());
    connect(field, &ValueField::committed, this,
            [this, name = row.valueKey] { controller_->text(screenView_->element(name)); });
    connect(field, &ValueField::entered, this,
            [this, key = row.noticeKey()] { controller_->focusCame(key); });
  }
  auto *angle = screen_->findChild<EntryField *>(QStringLiteral("angle"));
  connect(angle, &EntryField::began, this,
          [this] { controller_->positionEntry().controlTextDidBeginEditing(QStringLiteral("angle")); });
  connect(angle, &EntryField::changed, this, [this] { controller_->positionEntry().controlTextDidChange(); });
  connect(angle, &EntryField::ended, this,
          [this] { controller_->positionEntry().controlTextDidEndEditing(); });

  const ScreenPointer &pointer = screen_->pointer();
  connect(&pointer, &ScreenPointer::pressed, this, [this](QPointF at) { controller_->mouseDown(at); });
  connect(&pointer, &ScreenPointer::dragged, this, [this](QPointF at) { controller_->mouseDragged(at); });
  connect(&pointer, &ScreenPointer::released, this, [this] { controller_->mouseUp(); });
  connect(&pointer, &ScreenPointer::moved, this, [this](QPointF at) { controller_->mouseMoved(at); });
  connect(screen_, &MainScreen::positionRequested, this, [this](int to) { controller_->dragTo(to); });

  connectButtons(screen_->findChildren<QAbstractButton *>(QString(), Qt::FindDirectChildrenOnly), this,
                 [this](const QString &identifier) { controller_->LabelTouchEvent(identifier); });
  // The only element that can be used from the start, so the keyboard's focus begins here.
  angle->setFocus(Qt::OtherFocusReason);
  connectButtons(msgPanel_->findChildren<QAbstractButton *>(), this,
                 [this](const QString &identifier) { message_->MsgButton(identifier); });
  connect(waitPanel_, &WaitPanel::doctorWanted, this, [this] {
    if (actions_.openDoctor) actions_.openDoctor();
  });
  connectButtons(waitPanel_->findChildren<QAbstractButton *>(), this,
                 [this](const QString &identifier) { waiting_->WaitButton(identifier); });
}

void EditorWindow::showEvent(QShowEvent *event) {
  QMainWindow::showEvent(event);
  controller_->viewWillLayout();
  if (actions_.seen) windowHandle()->installEventFilter(this);
}

bool EditorWindow::eventFilter(QObject *watched, QEvent *event) {
  if (watched == windowHandle() && event->type() == QEvent::Expose && windowHandle()->isExposed() &&
      actions_.seen) {
    // Later, when the window has been painted.
    desktop_.mainQueue.async(std::exchange(actions_.seen, nullptr));
  }
  return QMainWindow::eventFilter(watched, event);
}

void EditorWindow::resizeEvent(QResizeEvent *event) {
  QMainWindow::resizeEvent(event);
  controller_->viewWillLayout();
}

void EditorWindow::closeEvent(QCloseEvent *event) {
  event->accept();
  windowController_->windowShouldClose();
}

}  // namespace tavril
