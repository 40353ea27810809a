#include "platform/linux/SingleInstance.h"

#include <QDBusConnectionInterface>
#include <QDBusMessage>
#include <QDBusReply>
#include <QDBusVirtualObject>
#include <QVariantMap>

#include <chrono>
#include <utility>

namespace tavril {
namespace {

const QString name = QStringLiteral("org.tavril.Tavril");
const QString path = QStringLiteral("/org/tavril/Tavril");
const QString interface = QStringLiteral("org.freedesktop.Application");
const QString activate = QStringLiteral("Activate");
const QString activationToken = QStringLiteral("activation-token");

/// Reading a servo may keep the other process busy for a while.
constexpr std::chrono::milliseconds patience{5000};

/// Unpacks the one argument of the call.
QVariantMap platformData(const QDBusMessage &call) {
  return qdbus_cast<QVariantMap>(call.arguments().value(0));
}

}  // namespace

/// Answers the calls of other starts.
class SingleInstance::Object final : public QDBusVirtualObject {
 public:
  QString introspect(const QString &) const override {
    return QStringLiteral(
        "<interface name=\"org.freedesktop.Application\"><method name=\"Activate\">"
        "<arg name=\"platform_data\" type=\"a{sv}\" direction=\"in\"/></method></interface>");
  }

  bool handleMessage(const QDBusMessage &message, const QDBusConnection &connection) override {
    if (message.interface() != interface || message.member() != activate) return false;
    connection.send(message.createReply());
    if (raise) raise(platformData(message).value(activationToken).toString());
    return true;
  }

  Raise raise;
};

SingleInstance::SingleInstance(QDBusConnection bus)
    : bus_(std::move(bus)), object_(std::make_unique<Object>()) {}

SingleInstance::~SingleInstance() {
  if (!bus_.isConnected()) return;
  bus_.unregisterService(name);
  bus_.unregisterObject(path);
}

bool SingleInstance::claim() {
  if (!bus_.isConnected()) return true;
  // Before the name is taken: who finds it may call at once.
  bus_.registerVirtualObject(path, object_.get());
  const auto reply = bus_.interface()->registerService(name, QDBusConnectionInterface::DontQueueService,
                                                       QDBusConnectionInterface::DontAllowReplacement);
  // A bus that answers with an error, as one that confines its programs may, is as good as none.
  if (!reply.isValid()) return true;
  return reply.value() == QDBusConnectionInterface::ServiceRegistered;
}

void SingleInstance::setRaise(Raise raise) {
  object_->raise = std::move(raise);
}

bool SingleInstance::raiseOther(const QString &token) const {
  QDBusMessage call = QDBusMessage::createMethodCall(name, path, interface, activate);
  QVariantMap data;
  if (!token.isEmpty()) data.insert(activationToken, token);
  call << data;
  call.setAutoStartService(false);
  const QDBusMessage reply = bus_.call(call, QDBus::Block, static_cast<int>(patience.count()));
  return reply.type() == QDBusMessage::ReplyMessage;
}

}  // namespace tavril
