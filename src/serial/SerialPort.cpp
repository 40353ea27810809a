#include "serial/SerialPort.h"

#include "platform/Background.h"
#include "platform/Log.h"
#include "platform/MainQueue.h"
#include "serial/DeliveryRule.h"
#include "serial/LineSession.h"
#include "serial/PortError.h"
#include "serial/PortRegistry.h"
#include "serial/PortRequests.h"
#include "serial/ReadLoop.h"
#include "serial/SerialEnvironment.h"
#include "terminal/LineTakeover.h"
#include "terminal/TerminalCalls.h"

#include <cerrno>
#include <chrono>
#include <cstdint>
#include <span>
#include <utility>

namespace tavril {

namespace {

constexpr std::chrono::milliseconds pinPollInterval{10};

/// One look at the input pins of a line. Is the first to notice that its device is gone, and waits for the
/// main thread to hear of that.
void pollPins(TerminalCalls &calls, const std::weak_ptr<PortLine> &watched,
              const std::shared_ptr<LineSession> &session) {
  const auto line = watched.lock();
  if (!line) return;
  const auto slot = session->takeBackpressureSlot({});
  if (!slot) return;
  int pins = 0;
  const CallResult read = line->withDescriptor([&](int descriptor) {
    return session->hasEnded() ? CallResult::failure(EBADF) : calls.pins(descriptor, pins);
  });
  if (session->hasEnded()) return;  // closed before or while we asked; close() has cancelled the polling
  if (!read.failed()) {
    line->showPins(pins);
    return;
  }
  const bool isGone = read.error == ENXIO;
  line->notifyDelegateOfPosixError(read.error, isGone, slot);
  if (isGone) line->deviceHasGone(session);
}

// Kept: C46.
void reportMisuse(const SerialEnvironment &environment, const QString &text) {
  environment.log.warn(QStringLiteral("*** Assertion failure: ") + text);
}

}  // namespace

// ---------------------------------------------------------------------------------- creation and identity

SerialPort::Ptr SerialPort::initWithPath(const SerialEnvironment &environment, const QString &path) {
  const RegistryHandle device = deviceFromBSDPath(environment, path);
  if (device == 0) return nullptr;
  Ptr port = initWithDevice(environment, device);
  environment.devices.release(device);
  return port;
}

SerialPort::Ptr SerialPort::serialPortWithPath(const SerialEnvironment &environment, const QString &path) {
  return initWithPath(environment, path);
}

SerialPort::Ptr SerialPort::initWithDevice(const SerialEnvironment &environment, RegistryHandle device) {
  if (device == 0) {
    reportMisuse(environment,
                 QStringLiteral("-[SerialPort initWithDevice:] requires non-zero device argument."));
    return nullptr;
  }
  const QString path = bsdCalloutPathFromDevice(environment, device);
  if (Ptr existing = environment.ports.existingPortWithPath(path)) return existing;
  auto port = std::make_shared<SerialPort>(Token{}, environment, device, path);
  if (environment.ports.addSerialPort(port)) {
    environment.log.write(QStringLiteral("Find Serial port ") + port->description());
  }
  return port;
}

SerialPort::Ptr SerialPort::serialPortWithDevice(const SerialEnvironment &environment,
                                                 RegistryHandle device) {
  return initWithDevice(environment, device);
}

SerialPort::Ptr SerialPort::init(const SerialEnvironment &environment) {
  reportMisuse(environment, QStringLiteral("SerialPort must be init'd using -initWithPath:"));
  return initWithPath(environment, QString());
}

SerialPort::SerialPort(Token, const SerialEnvironment &environment, RegistryHandle device,
                       const QString &path)
    : PortIdentity(environment, device, path),
      LineControl(environment),
      environment_(environment),
      delegate_(environment.mainQueue),
      requests_(std::make_unique<PortRequests>(
          *this, environment, [this](const QString &key, const Change &change) { changed(key, change); })) {}

SerialPort::~SerialPort() {
  environment_.ports.removeSerialPort(this);
  // The last reference may be dropped while the port is open, on any thread: nobody is left to be told.
  if (const auto running = session()) {
    running->setPinPollTimer(nullptr);
    running->end();
    takeover().restore(running->descriptor());
    releaseDescriptor();
  }
}

QSet<QString> SerialPort::keyPathsForValuesAffectingValueForKey(const QString &key) {
  if (key == u"isOpen") return {QStringLiteral("fileDescriptor")};
  if (key == u"queuedRequests") return {QStringLiteral("requestsQueue")};
  return {};
}

std::shared_ptr<const DeliveryRule> SerialPort::deliveryRule() const {
  const std::lock_guard lock(mutex_);
  return deliveryRule_;
}

void SerialPort::setDeliveryRule(std::shared_ptr<const DeliveryRule> rule) {
  const std::lock_guard lock(mutex_);
  deliveryRule_.swap(rule);
}

// ------------------------------------------------------------------------------------- opening and closing

bool SerialPort::open() {
  if (isOpen()) return true;
  awaitOlderClosing();
  if (isOpen()) return true;  // the delegate has opened it when it heard of that
  const CallResult opened = LineTakeover::openExclusively(environment_.terminal, path().toStdString());
  if (opened.failed()) {
    notifyDelegateOfPosixError(opened.error);
    return false;
  }
  const int descriptor = static_cast<int>(opened.value);
  if (const CallResult cleared = environment_.terminal.clearStatusFlags(descriptor); cleared.failed()) {
    environment_.log.warn(
        QStringLiteral("Could not make %1 blocking: error %2").arg(path()).arg(cleared.error));
  }
  const auto opening = std::make_shared<LineSession>(environment_.terminal, descriptor);
  takeover().forget();
  setSession(opening);
  latestSession_ = opening;
  requests_->beginOpening();
  setFileDescriptor(descriptor);
  // Observers and the delegate hear of each of these steps, and may close the port or even open it anew.
  for (const auto step : LineTakeover::steps) {
    if (session() != opening) return isOpen();
    take(step);
  }
  if (session() != opening) return isOpen();
  takeOverPins();
  if (session() != opening) return isOpen();

  if (whoHears(SerialPortCallback::WasOpened)) {
    environment_.mainQueue.async([self = shared_from_this()] {
      if (const auto delegate = self->whoHears(SerialPortCallback::WasOpened)) {
        delegate->serialPortWasOpened(self);
      }
    });
  }
  startLoops(opening);
  return true;
}

void SerialPort::startLoops(const std::shared_ptr<LineSession> &running) {
  const std::weak_ptr<PortLine> line = std::shared_ptr<PortLine>(shared_from_this(), this);
  TerminalCalls &calls = environment_.terminal;
  environment_.background.run(
      [loop = ReadLoop(calls, line, running, deliveryRule())]() mutable { loop.run(); });
  running->setPinPollTimer(environment_.background.repeat(
      pinPollInterval, [&calls, line, running] { pollPins(calls, line, running); }));
}

bool SerialPort::close() {
  return !isOpen() || closeSession(session());
}

bool SerialPort::closeSession(const std::shared_ptr<LineSession> &closing) {
  if (closing) {
    closing->setPinPollTimer(nullptr);
    closing->beginClosing();
  }
  selectSemaphore_.acquire();
  // The pin poller and the main thread may both have come to close; the port may even be open anew by now.
  if (!isOpen() || session() != closing) {
    selectSemaphore_.release();
    return true;
  }
  // A read may have been beaten to its bytes by another program on the terminal, and a write may be held up.
  takeover().giveBack(fileDescriptor_);
  if (closing) closing->end();
  setSession(nullptr);
  const std::uint64_t opening = requests_->opening();
  // Kept: C48.
  const auto told = whoHears(SerialPortCallback::WasClosed) ? std::make_shared<ToldOnce>(false) : nullptr;
  const CallResult closed = giveUpDescriptor(told);
  if (closed.failed()) {
    // Kept: C49.
    notifyDelegateOfPosixError(closed.error);
    return false;
  }
  selectSemaphore_.release();

  if (told) {
    delegate_.onMainThreadAndWait([self = shared_from_this(), told] { self->tellClosed(*told); });
    requests_->forget(opening);
  }
  return true;
}

CallResult SerialPort::giveUpDescriptor(const std::shared_ptr<ToldOnce> &closed) {
  const std::lock_guard giving(givingUp_);
  givesUp_ = std::this_thread::get_id();
  const CallResult released = releaseDescriptor();
  if (!released.failed()) {
    const std::lock_guard lock(mutex_);
    closedToTell_ = closed;
  }
  givesUp_ = std::thread::id();
  return released;
}

/// The port counts as closed a moment before its descriptor is given up: until then the terminal is still
/// locked, by ourselves.
void SerialPort::awaitOlderClosing() {
  // An observer that opens the port as it closes would wait for itself; it is refused by the lock.
  if (givesUp_ == std::this_thread::get_id()) return;
  std::shared_ptr<ToldOnce> closed;
  {
    const std::lock_guard given(givingUp_);
    const std::lock_guard lock(mutex_);
    closed.swap(closedToTell_);
  }
  if (closed) tellClosed(*closed);
}

void SerialPort::tellClosed(ToldOnce &closed) {
  if (closed.exchange(true)) return;
  if (const auto heardBy = whoHears(SerialPortCallback::WasClosed)) {
    heardBy->serialPortWasClosed(shared_from_this());
  }
}

CallResult SerialPort::releaseDescriptor() {
  const int descriptor = fileDescriptor_;
  setFileDescriptor(0);
  CallResult closed;
  {
    const std::unique_lock lock(descriptorGuard_);
    closed = LineTakeover::release(environment_.terminal, descriptor);
  }
  if (closed.failed()) setFileDescriptor(descriptor);
  return closed;
}

void SerialPort::whileClosed(const std::function<void()> &change) {
  const bool wasOpen = isOpen();
  close();
  change();
  if (wasOpen) open();
}

void SerialPort::cleanupAfterSystemRemoval() {
  if (const auto latest = latestSession_.lock()) latest->claimRemoval();
  tellRemoved();
  close();
}

// Two may see a removal, in either order, each for itself: the pin poller of the port that was open, and the
// registry. Whoever comes second finds a note of the first.
void SerialPort::deviceHasGone(const std::shared_ptr<LineSession> &session) {
  delegate_.onMainThreadAndWait([self = shared_from_this(), session] {
    const auto current = self->session();
    const bool isOpenAnew = current && current != session;  // so that its device is there
    if (isOpenAnew || !session->claimRemoval()) return;
    self->polledRemoval_ = PolledRemoval{self->delegate(), session};
    self->tellRemoved();
  });
  if (!session->hasEnded()) closeSession(session);
}

void SerialPort::deviceWasTerminated() {
  const auto polled = std::exchange(polledRemoval_, std::nullopt);
  const auto current = session();
  bool hasHeard = false;
  if (polled) {
    if (current && current != polled->session.lock()) return;
    const auto heardBy = polled->heardBy.lock();
    hasHeard = heardBy && heardBy == delegate();
  }
  if (const auto latest = latestSession_.lock()) latest->claimRemoval();
  if (!hasHeard) tellRemoved();
  const auto left = session();
  if (!left || left == current) close();  // and not what the delegate has opened anew
  awaitOlderClosing();                    // of the poller's: it is told before the port goes from the list
}

void SerialPort::deviceWasPublished(RegistryHandle device) {
  setIOKitDevice(device);
  polledRemoval_.reset();
}

void SerialPort::tellRemoved() {
  delegate_.onMainThreadAndWait([self = shared_from_this()] {
    if (const auto delegate = self->delegate()) delegate->serialPortWasRemovedFromSystem(self);
  });
}

void SerialPort::cleanup() {
  environment_.log.warn(QStringLiteral(
      "WARNING: Cleanup is deprecated and was never intended to be called publicly. You should "
      "update your code to avoid calling this method."));
  cleanupAfterSystemRemoval();
}

// ------------------------------------------------------------------------------------------------ requests

bool SerialPort::sendRequest(const std::shared_ptr<SerialRequest> &request) {
  return requests_->sendRequest(request);
}

std::shared_ptr<SerialRequest> SerialPort::pendingRequest() const {
  return requests_->pendingRequest();
}

void SerialPort::setPendingRequest(std::shared_ptr<SerialRequest> request) {
  requests_->setPendingRequest(std::move(request));
}

std::vector<std::shared_ptr<SerialRequest>> SerialPort::queuedRequests() const {
  return requests_->requestsQueue();
}

// --------------------------------------------------------------------------------- sending and receiving

bool SerialPort::sendData(const QByteArray &bytes) {
  if (!isOpen()) return false;
  const auto sending = session();
  bool wasTried = false;
  const auto all = std::as_bytes(std::span(bytes.constData(), static_cast<std::size_t>(bytes.size())));
  const CallResult written = writeAll(all, [&](std::span<const std::byte> remaining) {
    wasTried = false;
    return withDescriptor([&](int fd) {
      // What could not be sent before the port was closed is not sent once it has been opened anew.
      if (sending && sending->hasEnded()) return CallResult::failure(EBADF);
      wasTried = true;
      return environment_.terminal.write(fd, remaining);
    });
  });
  // Closing lets go whoever is held up in a write. Neither that nor a port that is closed is an error.
  const bool wasLetGo = written.error == EAGAIN && sending && sending->isClosing();
  if (written.failed() && wasTried && !wasLetGo) notifyDelegateOfPosixError(written.error);
  return !written.failed();
}

void SerialPort::receiveData(const QByteArray &bytes, const BackpressureSlot &slot) {
  if (whoHears(SerialPortCallback::DidReceiveData)) {
    // Bytes that wait to be told do not keep a port alive: under steady traffic it would otherwise never go.
    environment_.mainQueue.async([weak = weak_from_this(), bytes, slot] {
      const Ptr self = weak.lock();
      const auto delegate = self ? self->whoHears(SerialPortCallback::DidReceiveData) : nullptr;
      if (delegate) delegate->didReceiveData(self, bytes);
    });
  }
  requests_->receive(bytes);
}

CallResult SerialPort::withDescriptor(const std::function<CallResult(int)> &call) const {
  const std::shared_lock lock(descriptorGuard_);
  const int descriptor = fileDescriptor_;
  if (descriptor < 1) return CallResult::failure(EBADF);
  return call(descriptor);
}

// ------------------------------------------------------------------------------------------------ helpers

void SerialPort::setFileDescriptor(int descriptor) {
  fileDescriptor_ = descriptor;
  changed(QStringLiteral("fileDescriptor"));
}

std::shared_ptr<LineSession> SerialPort::session() const {
  const std::lock_guard lock(mutex_);
  return session_;
}

void SerialPort::setSession(std::shared_ptr<LineSession> session) {
  const std::lock_guard lock(mutex_);
  session_ = std::move(session);
}

KeyValueObservers::Token SerialPort::observe(const QString &key, KeyValueObservers::Handler handler) {
  return observers_.observe(key, std::move(handler));
}

void SerialPort::changed(const QString &key, const Change &change) {
  observers_.tell(key, change);
  for (const QString &dependent : {QStringLiteral("isOpen"), QStringLiteral("queuedRequests")}) {
    if (keyPathsForValuesAffectingValueForKey(dependent).contains(key)) observers_.tell(dependent);
  }
}

void SerialPort::notifyDelegateOfPosixError(int error, bool waitUntilDone, const BackpressureSlot &slot) {
  if (!whoHears(SerialPortCallback::DidEncounterError)) return;
  const auto tell = [self = shared_from_this(), failure = portError(error, path()), slot] {
    if (const auto delegate = self->whoHears(SerialPortCallback::DidEncounterError)) {
      delegate->didEncounterError(self, failure);
    }
  };
  if (waitUntilDone) {
    delegate_.onMainThreadAndWait(tell);
  } else {
    delegate_.onMainThread(tell);
  }
}

}  // namespace tavril
