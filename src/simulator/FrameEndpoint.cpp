#include "simulator/FrameEndpoint.h"

#include "simulator/FrameWords.h"
#include "simulator/ServoModel.h"

#include <QString>

#include <algorithm>
#include <utility>

namespace tavril::simulator {
namespace {

using std::chrono::nanoseconds;

Bytes frameOf(std::uint8_t code, const Bytes &data = {}) {
  const std::size_t length = data.size() + wire::shortestFrame;
  Bytes frame;
  frame.reserve(length);
  frame.push_back(wire::startMark);
  frame.push_back(static_cast<std::uint8_t>(length));
  frame.push_back(code);
  for (const std::uint8_t byte : data) frame.push_back(byte);
  frame.push_back(wire::endMark);
  return frame;
}

Bytes report(wire::Error error) {
  return frameOf(wire::errorReport, {static_cast<std::uint8_t>(error)});
}

std::uint16_t word(std::uint8_t high, std::uint8_t low) {
  return static_cast<std::uint16_t>(high << 8 | low);
}
std::uint8_t highByte(unsigned value) {
  return static_cast<std::uint8_t>(value >> 8 & 0xFF);
}
std::uint8_t lowByte(unsigned value) {
  return static_cast<std::uint8_t>(value & 0xFF);
}

std::uint8_t detected(Options::Servos servos) {
  switch (servos) {
    case Options::Servos::None:
      return 0;
    case Options::Servos::One:
      return 1;
    case Options::Servos::Several:
      break;
  }
  return 2;
}

}  // namespace

FrameEndpoint::FrameEndpoint(ServoModel &model, const Options &options)
    : model_(model), options_(options), replies_(options_), losses_(options.seed) {}

void FrameEndpoint::plugIn() {
  parser_ = FrameParser();
  replies_.clear();
  log_.endLine();
  framesSincePlugIn_ = 0;
  unplugged_ = false;
  now_ = lastArrival_ = nanoseconds{0};
  frameDeadline_.reset();
  logDeadline_.reset();
}

void FrameEndpoint::receive(std::span<const std::uint8_t> bytes) {
  if (unplugged_ || bytes.empty()) return;
  if (now_ < options_.startUp) {
    log_.fromHost(QStringLiteral("%1  lost in the start-up  (%2 bytes)").arg(inHex(bytes)).arg(bytes.size()));
    return;
  }
  lastArrival_ = std::max(lastArrival_, now_);
  for (std::size_t i = 0; i < bytes.size() && !unplugged_; ++i) {
    if (options_.pace) lastArrival_ += wire::byteTime;
    const bool wasPending = parser_.pending();
    const std::vector<ParsedItem> items = parser_.feed(bytes[i]);
    if (!parser_.pending()) {
      frameDeadline_.reset();
    } else if (!wasPending || !items.empty()) {
      frameDeadline_ = lastArrival_ + frameTimeout;
    }
    // The bridge replies when the whole delivery has arrived, padding included.
    nanoseconds answerAt = lastArrival_;
    if (options_.pace) {
      for (std::size_t next = i + 1; next < bytes.size() && bytes[next] == 0; ++next)
        answerAt += wire::byteTime;
    }
    for (const ParsedItem &item : items) take(item, answerAt);
  }
  awaitPadding();
}

void FrameEndpoint::awaitPadding() {
  logDeadline_.reset();
  if (log_.lineUnderWay()) logDeadline_ = std::max(lastArrival_, now_) + paddingPause;
}

void FrameEndpoint::advance(nanoseconds elapsed) {
  using std::chrono::floor;
  using std::chrono::microseconds;
  const nanoseconds before = now_;
  now_ += elapsed;
  model_.advance(floor<microseconds>(now_) - floor<microseconds>(before));
  if (frameDeadline_ && *frameDeadline_ <= now_) giveUpFrame();
  if (logDeadline_ && *logDeadline_ <= now_) {
    log_.endLine();
    logDeadline_.reset();
  }
}

void FrameEndpoint::giveUpFrame() {
  frameDeadline_.reset();
  for (const ParsedItem &item : parser_.timeOut()) take(item, now_);
  awaitPadding();
}

void FrameEndpoint::take(const ParsedItem &item, nanoseconds answerAt) {
  switch (item.kind) {
    case ParsedItem::Kind::Padding:
      log_.padding();
      return;
    case ParsedItem::Kind::Garbage:
      for (const std::uint8_t byte : item.bytes) log_.stray(byte);
      return;
    case ParsedItem::Kind::BrokenFrame:
      // The rest is parsed again and may hold a good frame, so no error is reported.
      model_.notePacketError();
      log_.stray(item.bytes.front());
      return;
    case ParsedItem::Kind::TimedOut:
      model_.notePacketError();
      log_.fromHost(
          QStringLiteral("%1  never finished  (%2 bytes)").arg(inHex(item.bytes)).arg(item.bytes.size()));
      reply(report(wire::Error::TimedOut), answerAt);
      return;
    case ParsedItem::Kind::Frame:
      takeFrame(item.bytes, answerAt);
      return;
  }
}

void FrameEndpoint::takeFrame(const Bytes &frame, nanoseconds answerAt) {
  if (unplugged_) return;
  ++framesSeen_;
  ++framesSincePlugIn_;
  log_.command(frame, commandInWords(frame));
  if (options_.unplugAfter > 0 && framesSincePlugIn_ >= options_.unplugAfter) {
    unplugged_ = true;
    log_.endLine();
    return;
  }
  Bytes reply = answer(frame);
  if (isAnswered(frame)) {
    this->reply(std::move(reply), answerAt);
  } else {
    log_.toHost(inHex(reply) + QStringLiteral("  not sent, by the reply policy"));
  }
}

bool FrameEndpoint::isAnswered(const Bytes &frame) const {
  const std::uint8_t code = frame[2];
  if (!options_.obeysReplyPolicy || code == wire::detect) return true;
  const std::uint16_t policy = model_.read(registers::replyPolicy).value_or(2);
  if (policy == 0) return code == wire::readRegister && frame[3] >= registers::statusError;
  if (policy == 1) return code == wire::readRegister || code == wire::readPosition;
  return true;
}

void FrameEndpoint::reply(Bytes reply, nanoseconds answerAt) {
  if (options_.mute) return;
  if (options_.loseOneIn > 0 && losses_() % static_cast<unsigned>(options_.loseOneIn) == 0) {
    log_.toHost(inHex(reply) + QStringLiteral("  lost on its way"));
    return;
  }
  replies_.add(std::move(reply), answerAt);
}

Bytes FrameEndpoint::answer(const Bytes &frame) {
  const std::uint8_t code = frame[2];
  const auto row = std::find_if(wire::commands.begin(), wire::commands.end(),
                                [&](const wire::CommandRow &r) { return r.code == code; });
  if (row == wire::commands.end()) {
    model_.noteUnknownCommand();
    return report(wire::Error::UnknownCommand);
  }
  if (frame.size() != row->length) {
    model_.notePacketError();
    return report(wire::Error::WrongLength);
  }
  if (code == wire::errorReport) return frameOf(code, {frame[3]});
  if (code == wire::detect) return frameOf(code, {detected(options_.servos)});
  if (options_.servos == Options::Servos::None) return report(wire::Error::LostServo);
  return answerForServo(frame);
}

Bytes FrameEndpoint::answerForServo(const Bytes &frame) {
  const std::uint8_t code = frame[2];
  switch (code) {
    case wire::readRegister: {
      if (options_.readError) return frameOf(wire::errorReport, {*options_.readError});
      const std::optional<std::uint16_t> value = model_.read(frame[3]);
      if (!value) return report(wire::Error::OverRange);
      return frameOf(code, {frame[3], highByte(*value), lowByte(*value)});
    }
    case wire::writeRegister:
      if (options_.writeError) return frameOf(wire::errorReport, {*options_.writeError});
      if (!model_.write(frame[3], word(frame[4], frame[5]))) return report(wire::Error::OverRange);
      return frameOf(code, {frame[3]});
    case wire::setPosition:
      if (!model_.setGoal(word(frame[3], frame[4]))) return report(wire::Error::OverRange);
      break;
    case wire::readPosition: {
      const auto position = static_cast<unsigned>(model_.position());
      return frameOf(code, {highByte(position), lowByte(position)});
    }
    case wire::release:
      model_.release();
      break;
    case wire::reboot:
      model_.reboot();
      break;
    case wire::factoryReset:
      model_.factoryReset();
      break;
    default:
      break;
  }
  return frameOf(code);
}

std::optional<Bytes> FrameEndpoint::takeDelivery() {
  if (unplugged_) return std::nullopt;
  std::optional<Delivery> delivery = replies_.take(now_);
  if (!delivery) return std::nullopt;
  for (const QString &line : delivery->lines) log_.toHost(line);
  return std::move(delivery->bytes);
}

std::optional<nanoseconds> FrameEndpoint::timeToNextEvent() const {
  return timeToFirst({replies_.nextDue(), frameDeadline_, logDeadline_});
}

std::optional<nanoseconds> FrameEndpoint::timeToEndOfPatience() const {
  return timeToFirst({frameDeadline_, logDeadline_});
}

std::optional<nanoseconds> FrameEndpoint::timeToFirst(
    std::initializer_list<std::optional<nanoseconds>> times) const {
  std::optional<nanoseconds> first;
  for (const std::optional<nanoseconds> &due : times) {
    if (due) first = first ? std::min(*first, *due) : *due;
  }
  if (!first) return std::nullopt;
  return std::max(*first - now_, nanoseconds{0});
}

}  // namespace tavril::simulator
