#include "tests/vm/host/Control.h"

#include "simulator/Registers.h"
#include "tests/support/WaitFor.h"
#include "tests/vm/host/Adapter.h"

#include <cstdio>

namespace tavril::vm {

namespace {

const QString ok = QStringLiteral("ok");

QString okWith(const QString &value) {
  return ok + u' ' + value;
}

QString error(const QString &why) {
  return QStringLiteral("error ") + why;
}

QString settingsOf(const simulator::ServoModel &servo) {
  QStringList values;
  for (int number = 1; number <= simulator::registers::settingCount; ++number) {
    values.append(QString::number(servo.read(number).value_or(0)));
  }
  return values.join(u' ');
}

}  // namespace

Control::Control(std::vector<std::unique_ptr<Adapter>> &adapters) : adapters_(adapters) {
  QObject::connect(&socket_, &QLocalSocket::readyRead, &socket_, [this] { receive(); });
}

bool Control::connectTo(const QString &socket) {
  sinceStart_.start();
  return waitFor([&] {
    if (socket_.state() == QLocalSocket::ConnectedState) return true;
    socket_.connectToServer(socket);
    return socket_.waitForConnected(1000);
  });
}

void Control::receive() {
  while (socket_.canReadLine()) {
    const QString line = QString::fromUtf8(socket_.readLine()).trimmed();
    socket_.write((answer(line.split(u' ')) + u'\n').toUtf8());
    socket_.flush();
  }
}

QString Control::answer(const QStringList &words) {
  const QString &verb = words.front();
  if (verb == u"result" && words.size() == 4) {
    results_.push_back({words[1], words[2] == u"pass", words[3].toInt()});
    std::printf("%s %s (%.1f s)\n", results_.back().passed ? "PASS" : "FAIL", qPrintable(words[1]),
                words[3].toInt() / 1000.0);
    std::fflush(stdout);
    return ok;
  }
  if (verb == u"begin") {
    std::printf("the machine has booted after %.1f s\n", static_cast<double>(sinceStart_.elapsed()) / 1000.0);
    return ok;
  }
  if (verb == u"end") {
    ended_ = true;
    return ok;
  }
  bool isNumber = false;
  const std::size_t index = words.value(1).toULongLong(&isNumber);
  if (!isNumber || index >= adapters_.size()) return error(QStringLiteral("no such adapter"));
  return act(*adapters_[index], verb, words.mid(2));
}

QString Control::act(Adapter &adapter, const QString &verb, const QStringList &values) {
  const int value = values.value(0).toInt();
  if (verb == u"plug") return adapter.plugIn() ? ok : error(QStringLiteral("the machine does not answer"));
  if (verb == u"unplug") {
    adapter.pullOut();
  } else if (verb == u"unplug-in") {
    adapter.pullOutIn(std::chrono::milliseconds(value));
  } else if (verb == u"unplug-after") {
    adapter.pullOutAfter(value);
  } else if (verb == u"renew") {
    adapter.renew();
  } else if (verb == u"send") {
    adapter.send(QByteArray::fromHex(values.value(0).toLatin1()));
  } else if (verb == u"option" && values.size() == 2) {
    return setOption(adapter, values[0], values[1].toInt());
  } else if (verb == u"settings") {
    return okWith(settingsOf(adapter.servo()));
  } else if (verb == u"position") {
    return okWith(QString::number(adapter.servo().position()));
  } else if (verb == u"frames") {
    return okWith(QString::number(adapter.framesSeen()));
  } else if (verb == u"bytes") {
    return okWith(QString::number(adapter.bytesSeen()));
  } else {
    return error(QStringLiteral("unknown request"));
  }
  return ok;
}

QString Control::setOption(Adapter &adapter, const QString &name, int value) {
  using Servos = simulator::Options::Servos;
  simulator::Options &options = adapter.options();
  if (name == u"mute") {
    options.mute = value != 0;
  } else if (name == u"servos") {
    options.servos = value == 0 ? Servos::None : value == 1 ? Servos::One : Servos::Several;
  } else if (name == u"delay") {
    options.delay = std::chrono::milliseconds(value);
  } else {
    return error(QStringLiteral("no such option"));
  }
  return ok;
}

}  // namespace tavril::vm
