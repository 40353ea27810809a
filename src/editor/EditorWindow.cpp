#include "editor/EditorWindow.h"

#include "app/LanguageChoice.h"
#include "editor/ButtonLabel.h"
#include "editor/ConnectionLine.h"
#include "editor/EntryField.h"
#include "editor/LanguageMenu.h"
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
#include "platform/PlainTitle.h"
#include "platform/StringTable.h"
#include "protocol/RegisterCatalogue.h"
#include "protocol/SharedState.h"

#include <QAbstractButton>
#include <QAction>
#include <QCloseEvent>
#include <QKeySequence>
#include <QMenu>
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

/// Connects all push labels and buttons below the panel to one action that is told the identifier.
template <typename Action>
void connectButtons(QWidget &panel, Action action) {
  const auto buttons = panel.findChildren<QAbstractButton *>();
  for (QAbstractButton *button : buttons) {
    const QString identifier = button->property("identifier").toString();
    if (identifier.isEmpty()) continue;
    QObject::connect(button, &QAbstractButton::clicked, &panel, [action, identifier] { action(identifier); });
  }
}

}  // namespace

EditorWindow::EditorWindow(SharedState &state, AppDelegate &appdelegate, const Desktop &desktop,
                           Actions actions)
    : appdelegate_(appdelegate), desktop_(desktop), actions_(std::move(actions)) {
  buildScreen(state, appdelegate);
  buildMenus(appdelegate);
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

void EditorWindow::buildMenus(AppDelegate &appdelegate) {
  const auto add = [](QMenu &menu, const QKeySequence &keys, std::function<void()> act) {
    QAction *action = menu.addAction(QString());
    action->setShortcut(keys);
    QObject::connect(action, &QAction::triggered, &menu, [act = std::move(act)] {
      if (act) act();
    });
    return action;
  };
  QMenu *tavril = menuBar()->addMenu(QString());
  QAction *about = add(*tavril, QKeySequence(), actions_.about);
  about->setMenuRole(QAction::AboutRole);
  about->setVisible(actions_.about != nullptr);
  if (actions_.language) addLanguageMenu(*tavril);
  QAction *quit = add(*tavril, QKeySequence(Qt::CTRL | Qt::Key_Q), actions_.quit);
  quit->setMenuRole(QAction::QuitRole);

  QMenu *config = menuBar()->addMenu(QString());
  QAction *port = add(*config, QKeySequence(Qt::CTRL | Qt::Key_P), actions_.openPortSetting);
  QAction *detect =
      add(*config, QKeySequence(Qt::CTRL | Qt::Key_D), [&appdelegate] { appdelegate.DetectionMotro(); });

  QAction *doctor = add(*config, QKeySequence(Qt::CTRL | Qt::SHIFT | Qt::Key_D), actions_.openDoctor);

  QMenu *tool = menuBar()->addMenu(QString());
  QAction *reboot = add(*tool, QKeySequence(Qt::CTRL | Qt::SHIFT | Qt::Key_R),
                        [&appdelegate] { appdelegate.RebootServo(); });
  QAction *reset = add(*tool, QKeySequence(Qt::CTRL | Qt::SHIFT | Qt::Key_Delete),
                       [&appdelegate] { appdelegate.ResetServo(); });
  tool->addSeparator();
  converter_ = add(*tool, QKeySequence(Qt::CTRL | Qt::SHIFT | Qt::Key_S), actions_.openConverter);
  tables_ = add(*tool, QKeySequence(Qt::CTRL | Qt::SHIFT | Qt::Key_T), actions_.openTables);
  setToolTexts();

  QMenu *help = menuBar()->addMenu(QString());
  QAction *guide = add(*help, QKeySequence(Qt::Key_F1), actions_.userGuide);

  outlets_.tavril = item(tavril->menuAction());
  outlets_.abouttavril = item(about);
  outlets_.quittavril = item(quit);
  outlets_.tool = item(tool->menuAction());
  outlets_.rebootservo = item(reboot);
  outlets_.resetservo = item(reset);
  outlets_.config = item(config->menuAction());
  outlets_.port = item(port);
  outlets_.detectionmotor = item(detect);
  outlets_.doctor = item(doctor);
  outlets_.help = item(help->menuAction());
  outlets_.userguide = item(guide);
}

void EditorWindow::setToolTexts() {
  converter_->setText(plainTitle(desktop_.strings.text(u"strings_converter")));
  tables_->setText(plainTitle(desktop_.strings.text(u"string_tables")));
}

void EditorWindow::addLanguageMenu(QMenu &tavril) {
  QMenu *menu = tavril.addMenu(QString());
  tavril.addSeparator();
  languageMenu_ = new LanguageMenu(*menu, *actions_.language);
  outlets_.language = item(menu->menuAction());
  outlets_.systemlanguage = item(languageMenu_->systemAction());
}

ScreenElement *EditorWindow::item(QAction *action) {
  items_.push_back(std::make_unique<ActionElement>(action));
  return items_.back().get();
}

MenuOutlets EditorWindow::menuOutlets() {
  return outlets_;
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
  appdelegate_.setMenuTitles(outlets_);
  setToolTexts();
  if (languageMenu_) languageMenu_->mark();
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

  for (const char *name : {"relax", "capture", "motor_set", "read", "detail_set"}) {
    auto *button = screen_->findChild<ButtonLabel *>(QString::fromLatin1(name));
    connect(button, &ButtonLabel::clicked, this,
            [this, button] { controller_->LabelTouchEvent(button->property("identifier").toString()); });
  }
  // The one thing that can be used from the start, so that the keyboard has a place to begin from.
  angle->setFocus(Qt::OtherFocusReason);
  connectButtons(*msgPanel_, [this](const QString &identifier) { message_->MsgButton(identifier); });
  connect(waitPanel_, &WaitPanel::doctorWanted, this, [this] {
    if (actions_.openDoctor) actions_.openDoctor();
  });
  connectButtons(*waitPanel_, [this](const QString &identifier) { waiting_->WaitButton(identifier); });
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
