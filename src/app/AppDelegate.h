#pragma once

#include "app/PortAnnouncements.h"
#include "platform/Error.h"
#include "platform/UserNotifications.h"
#include "protocol/CommandSender.h"
#include "serial/LinkOpener.h"
#include "serial/SerialPortDelegate.h"
#include "serial/SerialPortManager.h"
#include "store/StoreController.h"

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
/// sends the commands and accepts the replies.
class AppDelegate final : public SerialPortDelegate,
                          public CommandSender,
                          public LinkOpener,
                          public UserNotificationCenterDelegate,
                          public std::enable_shared_from_this<AppDelegate> {
  struct Token {};

 public:
  /// How long after the opening of its port a bridge does not answer. Kept: C32.
  static constexpr std::chrono::milliseconds bridgeStartUp{5000};

  static std::shared_ptr<AppDelegate> make(SharedState &state, const Desktop &desktop,
                                           const SerialEnvironment &serial, StoreController &store,
                                           std::chrono::milliseconds startUpWait = bridgeStartUp);
  AppDelegate(Token, SharedState &state, const Desktop &desktop, const SerialEnvironment &serial,
              StoreController &store, std::chrono::milliseconds startUpWait);
  ~AppDelegate() override;
  AppDelegate(const AppDelegate &) = delete;
  AppDelegate &operator=(const AppDelegate &) = delete;

  /// Sets the menu titles and the shared state, makes the decoder, and begins to watch the ports. Sends
  /// nothing.
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
  /// The link, for guests.
  const std::shared_ptr<ServoLink> &link() const { return link_; }
  /// The last error since the link was last asked to open, if any.
  const std::optional<Error> &lastSerialError() const { return lastSerialError_; }

  /// The path of the port that the link has open; empty when it has none.
  QString openPath() const;
  /// The path of the port that is open or would be opened; empty when there is none.
  QString pathToOpen() const;
  /// The first few thousand bytes that came since the port was opened or, if that was later, since a servo
  /// was last looked for.
  const QByteArray &received() const { return received_; }

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

  /// Ports that come and go, and what the user is told of them, see PortAnnouncements.
  void serialPortsWereConnected(const Notification &notification) {
    announcements_.serialPortsWereConnected(notification);
  }
  void serialPortsWereDisconnected(const Notification &notification) {
    announcements_.serialPortsWereDisconnected(notification);
  }
  void postUserNotificationForConnectedPorts(const SerialPortList &ports) {
    announcements_.postUserNotificationForConnectedPorts(ports);
  }
  void postUserNotificationForDisconnectedPorts(const SerialPortList &ports) {
    announcements_.postUserNotificationForDisconnectedPorts(ports);
  }
  void didDeliverNotification(UserNotificationCenter &center, const UserNotification &notification) override {
    announcements_.didDeliverNotification(center, notification);
  }
  bool shouldPresentNotification(UserNotificationCenter &, const UserNotification &) override { return true; }

 private:
  bool acceptFrame(const QByteArray &data, const QStringList &decimal, const QStringList &hexadecimal);
  void remember(const QByteArray &data);
  void restartReading(const QStringList &decimal);
  void request(const QString &word);
  void showWhetherGuestsAreServed();

  SharedState &state_;
  const Desktop &desktop_;
  const SerialEnvironment &serial_;
  StoreController &store_;
  const std::chrono::milliseconds startUpWait_;
  PortAnnouncements announcements_;
  std::shared_ptr<SerialPortManager> serialPortManager_;
  std::shared_ptr<SerialPort> serialPort_;
  const std::shared_ptr<ServoLink> link_;
  std::optional<Error> lastSerialError_;
  QByteArray received_;
};

}  // namespace tavril
