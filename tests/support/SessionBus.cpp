#include "tests/support/SessionBus.h"

#include "tests/support/WaitFor.h"

#include <QDBusArgument>
#include <QDBusConnectionInterface>
#include <QDBusMessage>
#include <QDBusReply>
#include <QFile>
#include <QProcessEnvironment>

#include <gtest/gtest.h>

#include <csignal>

#include <sys/prctl.h>

namespace tavril {
namespace {

const QString notifications = QStringLiteral("org.freedesktop.Notifications");
/// The system's own Python has the mock; another one may come first on the path.
const QString python = QStringLiteral("/usr/bin/python3");

QString connectionName() {
  static int number = 0;
  return QStringLiteral("session bus %1").arg(++number);
}

void writeFile(const QString &path, const QString &text) {
  QFile file(path);
  EXPECT_TRUE(file.open(QIODevice::WriteOnly));
  file.write(text.toUtf8());
}

/// A test that is killed leaves no bus behind.
void endWithThisProgram(QProcess &process) {
  process.setChildProcessModifier([] { prctl(PR_SET_PDEATHSIG, SIGKILL); });
}

void end(QProcess &process) {
  if (process.state() == QProcess::NotRunning) return;
  process.kill();
  EXPECT_TRUE(process.waitForFinished());
}

/// D-Bus values within values arrive still packed; this unpacks those that the service's calls have.
QVariant unpacked(const QVariant &value) {
  if (value.canConvert<QDBusVariant>()) return unpacked(value.value<QDBusVariant>().variant());
  if (!value.canConvert<QDBusArgument>()) return value;
  const auto argument = value.value<QDBusArgument>();
  if (argument.currentType() == QDBusArgument::MapType) return qdbus_cast<QVariantMap>(argument);
  if (argument.currentType() == QDBusArgument::ArrayType) return qdbus_cast<QStringList>(argument);
  ADD_FAILURE() << "unexpected argument " << argument.currentSignature().toStdString();
  return {};
}

}  // namespace

SessionBus::SessionBus() : connection_(QString()) {
  // The standard configuration would let the bus start whatever services this machine has installed.
  const QString configuration = folder_.filePath(QStringLiteral("bus.conf"));
  writeFile(
      configuration,
      QStringLiteral(
          "<busconfig><type>session</type><listen>unix:dir=%1</listen>"
          "<servicedir>%1</servicedir><policy context=\"default\">"
          "<allow send_destination=\"*\" eavesdrop=\"true\"/><allow eavesdrop=\"true\"/><allow own=\"*\"/>"
          "</policy></busconfig>")
          .arg(folder_.path()));
  endWithThisProgram(bus_);
  bus_.setProcessChannelMode(QProcess::ForwardedErrorChannel);
  bus_.start(QStringLiteral("dbus-daemon"), {QStringLiteral("--config-file=") + configuration,
                                             QStringLiteral("--nofork"), QStringLiteral("--print-address")});
  EXPECT_TRUE(waitFor([this] { return bus_.canReadLine(); }));
  address_ = QString::fromUtf8(bus_.readLine()).trimmed();
  connection_ = QDBusConnection::connectToBus(address_, connectionName());
  EXPECT_TRUE(connection_.isConnected());
}

SessionBus::~SessionBus() {
  QDBusConnection::disconnectFromBus(connection_.name());
  end(service_);
  end(bus_);
}

void SessionBus::startNotificationService(const QString &capabilities) {
  QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
  environment.insert(QStringLiteral("DBUS_SESSION_BUS_ADDRESS"), address_);
  endWithThisProgram(service_);
  service_.setProcessEnvironment(environment);
  service_.setStandardOutputFile(QProcess::nullDevice());
  service_.setProcessChannelMode(QProcess::ForwardedErrorChannel);
  service_.start(python, {QStringLiteral("-m"), QStringLiteral("dbusmock"), QStringLiteral("--template"),
                          QStringLiteral("notification_daemon"), QStringLiteral("--parameters"),
                          QStringLiteral("{\"capabilities\": \"%1\"}").arg(capabilities)});
  // The name is taken before the template's methods are there, so that only a call shows that they are.
  EXPECT_TRUE(waitFor([this] {
    QDBusMessage call =
        QDBusMessage::createMethodCall(notifications, QStringLiteral("/org/freedesktop/Notifications"),
                                       notifications, QStringLiteral("GetServerInformation"));
    call.setAutoStartService(false);
    return connection_.call(call).type() == QDBusMessage::ReplyMessage;
  }));
}

void SessionBus::offerNotificationService() {
  writeFile(folder_.filePath(notifications + QStringLiteral(".service")),
            QStringLiteral("[D-BUS Service]\nName=%1\nExec=%2 -m dbusmock --template notification_daemon\n")
                .arg(notifications, python));
  QDBusMessage reload = QDBusMessage::createMethodCall(
      QStringLiteral("org.freedesktop.DBus"), QStringLiteral("/org/freedesktop/DBus"),
      QStringLiteral("org.freedesktop.DBus"), QStringLiteral("ReloadConfig"));
  EXPECT_EQ(connection_.call(reload).type(), QDBusMessage::ReplyMessage);
}

void SessionBus::replaceMethod(const QString &method, const QString &in, const QString &out,
                               const QString &code) {
  QDBusMessage call = QDBusMessage::createMethodCall(
      notifications, QStringLiteral("/org/freedesktop/Notifications"),
      QStringLiteral("org.freedesktop.DBus.Mock"), QStringLiteral("AddMethod"));
  call << notifications << method << in << out << code;
  EXPECT_EQ(connection_.call(call).type(), QDBusMessage::ReplyMessage);
}

std::vector<QVariantList> SessionBus::callsOf(const QString &method) const {
  QDBusMessage call = QDBusMessage::createMethodCall(
      notifications, QStringLiteral("/org/freedesktop/Notifications"),
      QStringLiteral("org.freedesktop.DBus.Mock"), QStringLiteral("GetMethodCalls"));
  call << method;
  const QDBusMessage reply = connection_.call(call);
  EXPECT_EQ(reply.type(), QDBusMessage::ReplyMessage) << reply.errorMessage().toStdString();
  std::vector<QVariantList> calls;
  if (reply.arguments().isEmpty()) return calls;
  const auto packed = reply.arguments().constFirst().value<QDBusArgument>();
  packed.beginArray();
  while (!packed.atEnd()) {
    quint64 when = 0;
    QVariantList arguments;
    packed.beginStructure();
    packed >> when >> arguments;
    packed.endStructure();
    for (QVariant &argument : arguments) argument = unpacked(argument);
    calls.push_back(arguments);
  }
  packed.endArray();
  return calls;
}

void SessionBus::stop() {
  end(service_);
  end(bus_);
}

}  // namespace tavril
