#include "app/LinkArbiter.h"

#include "wire/Registers.h"

#include <algorithm>
#include <utility>

namespace tavril {

using wire::CommandCode;

namespace {

bool changesSomething(CommandCode code) {
  switch (code) {
    case CommandCode::WriteServoSettingValue:
    case CommandCode::ReleaseServo:
    case CommandCode::RebootServo:
    case CommandCode::ResetServo:
    case CommandCode::SetServoPosition:
      return true;
    default:
      return false;
  }
}

bool hasNoAnswer(CommandCode code) {
  return code == CommandCode::ReleaseServo || code == CommandCode::ErrorMessage;
}

/// Whether the servo's settings decide if there is an answer.
bool mayHaveNoAnswer(CommandCode code) {
  return code == CommandCode::WriteServoSettingValue || code == CommandCode::SetServoPosition;
}

}  // namespace

LinkArbiter::Subject LinkArbiter::subjectOf(wire::Bytes frame) {
  const auto code = static_cast<CommandCode>(frame[wire::FrameByte::code]);
  const bool namesRegister =
      code == CommandCode::ReadServoSettingValue || code == CommandCode::WriteServoSettingValue;
  return {code, namesRegister ? frame[wire::FrameByte::firstData] : 0};
}

bool LinkArbiter::isRead(CommandCode code) {
  return code == CommandCode::ReadServoSettingValue || code == CommandCode::ReadServoPosition;
}

// ---------------------------------------------------------------------------------------------- the editor

void LinkArbiter::editorAsks(const wire::CommandBuffer &command, Time now) {
  forgetOld(now);
  editorCommands_.push_back({command, now});
}

std::optional<wire::CommandBuffer> LinkArbiter::nextOfEditor(Time now) {
  if (editorCommands_.empty()) return std::nullopt;
  // Nobody knows whether a bridge takes a second command before it has answered the first one.
  if (isGuestExchangeOpen() && now < editorCommands_.front().asked + longestEditorWait) return std::nullopt;
  const wire::CommandBuffer command = editorCommands_.front().bytes;
  editorCommands_.pop_front();
  noteEditorCommand(command, now);
  return command;
}

void LinkArbiter::noteEditorCommand(const wire::CommandBuffer &command, Time now) {
  const Subject subject = subjectOf(command);
  if (hasNoAnswer(subject.code)) return;
  editorQuestions_.push_back({subject, now});
  // The editor only writes in sweeps over all settings, with pauses in which answers come. After the last
  // setting the sweep is over.
  if (subject.code == CommandCode::WriteServoSettingValue) {
    sweepMayGoOnUntil_ = subject.registerNumber < wire::settingCount ? now + memory : now;
  }
}

// ------------------------------------------------------------------------------------------------- guests

bool LinkArbiter::claimChanges(Guest guest) {
  if (!changer_) changer_ = guest;
  return changer_ == guest;
}

void LinkArbiter::releaseChanges(Guest guest) {
  if (changer_ == guest) changer_.reset();
}

LinkArbiter::Turn LinkArbiter::turnOf(Guest guest, const wire::CommandBuffer &command, Time now) {
  forgetOld(now);
  const Subject subject = subjectOf(command);
  if (const auto refusal = refusalOf(guest, subject)) {
    leaves(guest);
    return *refusal;
  }
  if (std::ranges::find(waitingGuests_, guest) == waitingGuests_.end()) waitingGuests_.push_back(guest);
  if (waitingGuests_.front() != guest || !isLineFree(now)) return Turn::Later;
  waitingGuests_.pop_front();
  GuestQuestion question{.subject = subject, .guest = guest, .sent = now};
  if (hasNoAnswer(subject.code)) {
    question.isOpen = false;
    question.ended = now;
  }
  guestQuestions_.push_back(question);
  return Turn::Now;
}

std::optional<LinkArbiter::Turn> LinkArbiter::refusalOf(Guest guest, const Subject &subject) const {
  if (!servesGuests_) return Turn::NotServed;
  if (changesSomething(subject.code) && !mayChange(guest)) return Turn::NotAllowed;
  const bool wasLost = std::ranges::any_of(guestQuestions_, [&](const GuestQuestion &question) {
    return question.subject == subject && !question.mayBeAskedAnew;
  });
  return wasLost ? std::optional(Turn::TooSoon) : std::nullopt;
}

void LinkArbiter::leaves(Guest guest) {
  std::erase(waitingGuests_, guest);
}

void LinkArbiter::givesUp(Guest guest, Time now) {
  const auto question = std::ranges::find_if(
      guestQuestions_, [&](const GuestQuestion &one) { return one.isOpen && one.guest == guest; });
  if (question == guestQuestions_.end()) return;
  question->isOpen = false;
  question->ended = now;
  question->mayBeLate = true;
  question->mayBeAskedAnew = mayHaveNoAnswer(question->subject.code);
}

bool LinkArbiter::isOpen(Guest guest) const {
  return std::ranges::any_of(guestQuestions_, [&](const GuestQuestion &question) {
    return question.isOpen && question.guest == guest;
  });
}

bool LinkArbiter::stops(Guest guest, const wire::CommandBuffer &command, Time now) {
  if (!mayChange(guest)) return false;
  guestQuestions_.push_back(
      {.subject = subjectOf(command), .guest = guest, .sent = now, .isOpen = false, .ended = now});
  return true;
}

bool LinkArbiter::isGuestExchangeOpen() const {
  return std::ranges::any_of(guestQuestions_, &GuestQuestion::isOpen);
}

bool LinkArbiter::isLineFree(Time now) const {
  return editorCommands_.empty() && editorQuestions_.empty() && now >= sweepMayGoOnUntil_ &&
         !isGuestExchangeOpen();
}

// ------------------------------------------------------------------------------------------ what comes in

LinkArbiter::Route LinkArbiter::routeOf(wire::Bytes delivery, Time came, Time now) {
  forgetOld(now);
  const auto reply = wire::replyAt(delivery);
  const bool isOneReply = reply && reply->frame.size() == delivery.size();
  if (isOneReply && reply->code() != CommandCode::ErrorMessage) {
    return routeOfReply(subjectOf(delivery), came, now);
  }
  // An error report, or bytes that are no reply. Neither says which question it belongs to.
  if (!editorQuestions_.empty()) return {};
  const auto open = std::ranges::find_if(guestQuestions_, &GuestQuestion::isOpen);
  if (open != guestQuestions_.end()) return {.receiver = Receiver::Guest, .guest = open->guest};
  if (std::ranges::any_of(guestQuestions_, &GuestQuestion::mayBeLate)) return {.receiver = Receiver::Nobody};
  return {};
}

LinkArbiter::Route LinkArbiter::routeOfReply(const Subject &subject, Time came, Time now) {
  const auto isAnswered = [&](const auto &question) {
    return question.subject == subject && question.sent <= came;
  };
  const auto ofEditor = std::ranges::find_if(editorQuestions_, isAnswered);
  if (ofEditor != editorQuestions_.end()) {
    noteAnsweredRead(subject, ofEditor->sent);
    // If this was the late answer to a guest, the answer to the editor is still to come.
    for (GuestQuestion &question : guestQuestions_) {
      if (question.subject != subject || question.mayBeAskedAnew) continue;
      question.sent = ofEditor->sent;
      question.ended = now;
    }
    editorQuestions_.erase(ofEditor);
    return {};
  }
  const auto open = std::ranges::find_if(guestQuestions_, [&](const GuestQuestion &question) {
    return question.isOpen && isAnswered(question);
  });
  if (open != guestQuestions_.end()) {
    open->isOpen = false;
    open->ended = now;
    noteAnsweredRead(subject, open->sent);
    return {.receiver = Receiver::Guest, .guest = open->guest, .isAnswer = true};
  }
  // A late answer to a question that was given up, or a second copy of an answer.
  const bool wasAsked = std::ranges::any_of(guestQuestions_, [&](const GuestQuestion &question) {
    return !question.isOpen && isAnswered(question);
  });
  return {.receiver = wasAsked ? Receiver::Nobody : Receiver::Editor};
}

/// The bridge answers in order. Earlier questions that are still open will not be answered any more.
void LinkArbiter::noteAnsweredRead(const Subject &subject, Time sent) {
  if (!isRead(subject.code)) return;
  for (GuestQuestion &question : guestQuestions_) {
    if (question.subject != subject && question.sent < sent) question.mayBeAskedAnew = true;
  }
}

// -------------------------------------------------------------------------------------------------- time

LinkArbiter::Time LinkArbiter::nextChange(Time now) const {
  Time next = now + memory;
  const auto consider = [&](Time time) {
    if (time > now) next = std::min(next, time);
  };
  if (!editorCommands_.empty()) next = std::min(next, editorCommands_.front().asked + longestEditorWait);
  for (const EditorQuestion &question : editorQuestions_) consider(question.sent + memory);
  consider(sweepMayGoOnUntil_);
  return next;
}

void LinkArbiter::forgetOld(Time now) {
  std::erase_if(editorQuestions_,
                [&](const EditorQuestion &question) { return now >= question.sent + memory; });
  std::erase_if(guestQuestions_, [&](const GuestQuestion &question) {
    return !question.isOpen && now >= question.ended + memory;
  });
}

void LinkArbiter::forget() {
  editorCommands_.clear();
  editorQuestions_.clear();
  guestQuestions_.clear();
  sweepMayGoOnUntil_ = {};
}

}  // namespace tavril
