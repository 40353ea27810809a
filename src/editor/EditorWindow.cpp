#include "editor/EditorWindow.h"

#include "app/LanguageChoice.h"
#include "editor/ConnectionLine.h"
#include "editor/EntryField.h"
#include "editor/MainScreen.h"
#include "editor/MsgPanel.h"
#include "editor/PanelBackdrop.h"
#include "editor/ScreenCoordinates.h"
#include "editor/ScreenPointer.h"
#include "editor/ScreenScroller.h"
#include "editor/ValueField.h"
#include "editor/WaitPanel.h"
#include "look/Style.h"
#include "platform/Desktop.h"
#include "platform/Languages.h"
#include "platform/MainQueue.h"
#include "platform/NotificationCenter.h"
#include "platform/StringTable.h"
#include "protocol/RegisterCatalogue.h"
#include "protocol/SharedState.h"

#include <QAbstractButton>
#include <QCloseEvent>
#include <QList>
#include <QMenuBar>
#include <QObject>
#include <QPointF>
#include <QScreen>
#include <QString>
#include <QWidget>
#include <QWindow>

#include <utility>

namespace tavril {

namespace {

/// Connects the push labels and buttons of a screen or panel to one action that is told the identifier.
template <typename Action>
void connectButtons(const QList<QAbstractButton *> &buttons, QObject *context, Action action) {
  for (QAbstractButton *button : buttons) {
    const QString identifier = button->property("identifier").toString();
    if (identifier.isEmpty()) continue;
    QObject::connect(button, &QAbstractButton::clicked, context,
                     [action, identifier] { action(identifier); });
  }
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
  // The controllers go before the widgets, which still tell of a press or an edit that ends as they are
  // hidden.
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
  // First of all, for the texts are laid out in their faces.
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
  // The one thing that can be used from the start, so that the keyboard has a place to begin from.
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
    // In a moment, when it has been painted.
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
