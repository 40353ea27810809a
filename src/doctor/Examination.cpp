#include "doctor/Examination.h"

#include "doctor/MachineChecks.h"
#include "platform/Bytes.h"
#include "wire/Frames.h"

#include <QByteArray>

#include <algorithm>
#include <utility>

namespace tavril::doctor {

namespace {

/// Also a bridge that needs no time is given this: what stood in the line is read and gone before the
/// question goes out.
constexpr std::chrono::milliseconds settleTime{50};

}  // namespace

Examination::Examination(const Services &services, Request request)
    : services_(services), request_(std::move(request)), probe_(services.terminal) {}

std::vector<Result> Examination::run(const Listener &listener) {
  const ExaminedPort port = examinedPort(request_.path, services_.bus, services_.nodes);
  for (const CheckId check : allChecks) {
    if (isCancelled()) break;
    if (listener.began) listener.began(check);
    const Result result = examine(check, port);
    if (isCancelled()) break;
    results_.push_back(result);
    if (listener.found) listener.found(result);
  }
  probe_.close();
  return results_;
}

Result Examination::examine(CheckId check, const ExaminedPort &port) {
  switch (check) {
    case CheckId::UsbAdapter:
      return checkUsbAdapter(port);
    case CheckId::Driver:
      return checkDriver(port);
    case CheckId::Node:
      return checkNode(port);
    case CheckId::Permission:
      return checkPermission(port);
    case CheckId::Holder:
      return checkHolder(port, {services_.processes.holding(port.node.path), services_.processes.own(),
                                services_.processes.seesAll()});
    case CheckId::Daemons:
      return checkDaemons(services_.processes.named(troublesomeDaemons()));
    default:
      break;
  }
  if (isOwnLink(port)) return examineLink(check);
  // A port that somebody else has open is not opened: that alone would restart the bridge under his hands.
  for (const CheckId needed : {CheckId::Node, CheckId::Permission, CheckId::Holder, CheckId::Opening,
                               CheckId::LineSettings, CheckId::Reply, CheckId::Frame}) {
    if (needed < check && hasFailed(needed)) return notLookedAt(check);
  }
  if (!port.node.exists) return notLookedAt(check);
  return examinePort(check, port);
}

Result Examination::examinePort(CheckId check, const ExaminedPort &port) {
  const QString &path = port.node.path;
  switch (check) {
    case CheckId::Opening:
      return checkOpening(path, probe_.open(path));
    case CheckId::LineSettings:
      return checkLineSettings(path, probe_.takeSettings());
    case CheckId::Reply:
      ask();
      return checkReply(path, asked_, heard_, request_.timeout * (request_.retries + 1));
    case CheckId::Frame:
      return checkFrame(heard_);
    default:
      return checkServo(heard_);
  }
}

Result Examination::examineLink(CheckId check) const {
  const QString &path = request_.link->path;
  switch (check) {
    case CheckId::Opening:
      return {check, State::Passed, QStringLiteral("doctor_opening_own"), {path}};
    case CheckId::LineSettings:
      return {check, State::Skipped, QStringLiteral("doctor_opening_own"), {path}};
    case CheckId::Reply:
      if (request_.link->heard.bytes > 0) return checkReply(path, Asked::Done, request_.link->heard, {});
      return {check,
              State::Failed,
              QStringLiteral("doctor_reply_none_yet"),
              {path},
              QStringLiteral("doctor_advice_silent")};
    case CheckId::Frame:
      return hasFailed(CheckId::Reply) ? notLookedAt(check) : checkFrame(request_.link->heard);
    default:
      return hasFailed(CheckId::Reply) || hasFailed(CheckId::Frame) ? notLookedAt(check)
                                                                    : checkServo(request_.link->heard);
  }
}

void Examination::ask() {
  using End = servo::Received::End;
  // What the bridge says while it starts answers no question.
  if (probe_.pause(std::max(request_.bootWait, settleTime)) == End::Gone) {
    asked_ = Asked::Gone;
    return;
  }
  QByteArray all;
  for (int tries = 0; tries <= request_.retries && !isCancelled(); ++tries) {
    const servo::Received received =
        probe_.request(wire::encode(wire::Command::detect()), request_.timeout,
                       [all](wire::Bytes bytes) { return Heard::in(all + toByteArray(bytes)).isAnswered(); });
    all += toByteArray(received.bytes);
    if (received.end == End::Gone) asked_ = Asked::Gone;
    if (received.end == End::NotTaken) asked_ = Asked::NotTaken;
    if (received.end != End::TimedOut) break;
  }
  heard_ = Heard::in(all);
}

bool Examination::hasFailed(CheckId check) const {
  return std::ranges::any_of(results_, [check](const Result &result) {
    return result.check == check && result.state == State::Failed;
  });
}

bool Examination::isOwnLink(const ExaminedPort &port) const {
  return request_.link && port.node.exists &&
         services_.nodes.look(request_.link->path).path == port.node.path;
}

bool isHealthy(const std::vector<Result> &results) {
  return std::ranges::none_of(results, [](const Result &result) { return result.state == State::Failed; });
}

}  // namespace tavril::doctor
