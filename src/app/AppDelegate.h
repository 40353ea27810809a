#pragma once

#include "app/StoreController.h"
#include "platform/Error.h"
#include "platform/UserNotifications.h"
#include "protocol/CommandSender.h"
#include "serial/LinkOpener.h"
#include "serial/SerialPortDelegate.h"
#include "serial/SerialPortManager.h"

#include <QByteArray>
#include <QString>
#include <QStringList>
#include <QStringView>

#include <chrono>
#include <memory>
#include <optional>

namespace tavril {

class ScreenElement;
class ServoLink;
struct Desktop;
struct Notification;
struct SerialEnvironment;
struct SharedState;

/// The menu items whose titles are looked up at start-up. Those that are not there are left out.
struct MenuOutlets {
  ScreenElement *tavril = nullptr;
  ScreenElement *abouttavril = nullptr;
  ScreenElement *quittavril = nullptr;
  ScreenElement *tool = nullptr;
  ScreenElement *rebootservo = nullptr;
  ScreenElement *resetservo = nullptr;
  ScreenElement *config = nullptr;
  ScreenElement *port = nullptr;
  ScreenElement *detectionmotor = nullptr;
};

/// Such an item and the key of its title.
struct MenuTitle {
  ScreenElement *MenuOutlets::*outlet;
  QStringView key;
};
inline constexpr MenuTitle menuTitles[]{
    {&MenuOutlets::tavril, u"tavril"},
    {&MenuOutlets::abouttavril, u"about_tavril"},
    {&MenuOutlets::quittavril, u"quit_tavril"},
    {&MenuOutlets::tool, u"tool"},
    {&MenuOutlets::rebootservo, u"reboot_servo"},
    {&MenuOutlets::resetservo, u"reset_servo"},
    {&MenuOutlets::config, u"config"},
    {&MenuOutlets::port, u"port_setting"},
    {&MenuOutlets::detectionmotor, u"detection_motor"},
};

/// The application's delegate: start-up, menu actions, and the one link to the servo. It opens the port,
/// sends the commands, accepts the replies and reports ports that come, go or fail. Main thread only.
class AppDelegate final : public SerialPortDelegate,
                          public CommandSender,
                          public LinkOpener,
                          public UserNotificationCenterDelegate,
                          public std::enable_shared_from_this<AppDelegate> {
  struct Token {};

 public:
  /// How long the bridge behind a port needs after the port was opened, before it answers. Kept: C32.
  static constexpr std::chrono::milliseconds bridgeStartUp{5000};

  /// Owns nothing it is given; all of it must outlive the delegate.
  static std::shared_ptr<AppDelegate> make(SharedState &state, const Desktop &desktop,
                                           const SerialEnvironment &serial, StoreController &store,
                                           std::chrono::milliseconds startUpWait = bridgeStartUp);
  AppDelegate(Token, SharedState &state, const Desktop &desktop, const SerialEnvironment &serial,
              StoreController &store, std::chrono::milliseconds startUpWait);
  ~AppDelegate() override;
  AppDelegate(const AppDelegate &) = delete;
  AppDelegate &operator=(const AppDelegate &) = delete;

  /// Menu titles, shared state, the decoder, the ports; nothing is sent.
  void applicationDidFinishLaunching(const MenuOutlets &menu = {});
  void applicationWillTerminate() {}

  /// The object store and quitting, see StoreController.
  QString applicationDocumentsDirectory() const { return store_.applicationDocumentsDirectory(); }
  const ManagedObjectModel *managedObjectModel() { return store_.managedObjectModel(); }
  PersistentStoreCoordinator *persistentStoreCoordinator() { return store_.persistentStoreCoordinator(); }
  ManagedObjectContext *managedObjectContext() { return store_.managedObjectContext(); }
  void saveAction() { store_.saveAction(); }
  UndoManager *windowWillReturnUndoManager() { return store_.windowWillReturnUndoManager(); }
  TerminateReply applicationShouldTerminate() { return store_.applicationShouldTerminate(); }

  /// Lists the ports and starts watching them.
  void OSSerialInit();
  void serialFormat() override;
  void serialInit();
  std::shared_ptr<SerialPort> serialPort() const { return serialPort_; }
  /// Becomes the delegate of the new port, and stops being that of the old one.
  void setSerialPort(std::shared_ptr<SerialPort> port);
  const std::shared_ptr<SerialPortManager> &serialPortManager() const { return serialPortManager_; }
  /// For those who talk to the servo beside the editor, as LinkGuest.
  const std::shared_ptr<ServoLink> &link() const { return link_; }
  /// The last error since the link was last asked to open, if any.
  const std::optional<Error> &lastSerialError() const { return lastSerialError_; }

  /// The path of the port that the link has open; empty when it has none.
  QString openPath() const;
  /// The path of the port that is open or would be opened; empty when there is none.
  QString pathToOpen() const;
  /// What came since the port was opened or, once a servo was looked for again, since then: the first few
  /// thousand bytes of it.
  const QByteArray &received() const { return received_; }

  /// From now on a reply of another length than its command has, or one that no command has, is ignored: for
  /// a link that nobody sees, where a wrong value must not come out. The screen shows what the decoder makes
  /// of it.
  void takeExactRepliesOnly() { takesExactRepliesOnly_ = true; }

  void SendCMDtoMCU() override;
  /// The value key of registers 1 to 14, "CalibrationAngle" for 15, else nothing.
  QString cmdlabel(int registerNumber) const;

  /// Menu actions: each asks the screen for its action, unless one is pending.
  void RebootServo();
  void ResetServo();
  void DetectionMotro();  // Kept: C35.

  bool respondsTo(SerialPortCallback callback) const override;
  void serialPortWasRemovedFromSystem(const Port &port) override;
  void didReceiveData(const Port &port, const QByteArray &data) override;
  void didEncounterError(const Port &port, const Error &error) override;
  void serialPortWasOpened(const Port &port) override;
  void serialPortWasClosed(const Port &port) override;

  void serialPortsWereConnected(const Notification &notification);
  void serialPortsWereDisconnected(const Notification &notification);
  void postUserNotificationForConnectedPorts(const SerialPortList &ports);
  void postUserNotificationForDisconnectedPorts(const SerialPortList &ports);
  void didDeliverNotification(UserNotificationCenter &center, const UserNotification &notification) override;
  bool shouldPresentNotification(UserNotificationCenter &center,
                                 const UserNotification &notification) override;

 private:
  bool acceptFrame(const QByteArray &data, const QStringList &decimal, const QStringList &hexadecimal);
  void remember(const QByteArray &data);
  void restartReading(const QStringList &decimal);
  void clearSettings(bool disable) const;
  void forgetDisconnected(const SerialPort &port, std::size_t position);
  int alertUser(const QString &informativeText);
  void request(const QString &word);
  void showWhetherGuestsAreServed();
  void deliver(const QString &titleKey, const QString &formatKey, const SerialPort &port);

  SharedState &state_;
  const Desktop &desktop_;
  const SerialEnvironment &serial_;
  StoreController &store_;
  const std::chrono::milliseconds startUpWait_;
  std::shared_ptr<SerialPortManager> serialPortManager_;
  std::shared_ptr<SerialPort> serialPort_;
  const std::shared_ptr<ServoLink> link_;
  std::optional<Error> lastSerialError_;
  QByteArray received_;
  bool takesExactRepliesOnly_ = false;
};

}  // namespace tavril
