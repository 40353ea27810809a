#pragma once

#include "wire/Frames.h"

#include <chrono>
#include <deque>
#include <optional>
#include <vector>

namespace tavril {

/// Decides who may send on the one line to the servo, the editor or one of its guests, and to whom belongs
/// what comes in. The editor comes first; guests get the time that it leaves, one exchange after the other.
/// Sends nothing itself and knows no clock but the times it is given, which must not go back. Not
/// thread-safe.
class LinkArbiter {
 public:
  using Time = std::chrono::steady_clock::time_point;

  /// Tells the guests apart. A guest asks one question at a time.
  enum class Guest : int {};

  /// How long a command of the editor waits at most for the exchange of a guest.
  static constexpr std::chrono::milliseconds longestEditorWait{30};
  /// How long a question of the editor keeps the guests waiting, and how long it is known whose an answer is.
  static constexpr std::chrono::seconds memory{1};

  // ---- The editor

  /// Puts the command behind those of the editor that wait.
  void editorAsks(const wire::CommandBuffer &command, Time now);
  /// The editor's next command if it is to be sent now. It must be sent at once, before anything else.
  std::optional<wire::CommandBuffer> nextOfEditor(Time now);

  // ---- Guests

  /// Whether guests are served at all; at first they are not.
  void setServesGuests(bool serve) { servesGuests_ = serve; }

  /// Only one guest at a time may move the servo or write to it. Returns false if another one may.
  bool claimChanges(Guest guest);
  void releaseChanges(Guest guest);

  enum class Turn {
    Now,         ///< the command must be sent at once, before anything else
    Later,       ///< asking again makes sense after the next event, at nextChange() at the latest
    NotServed,   ///< no guest is served at present
    NotAllowed,  ///< the command changes something, and the guest has no claim to that
    TooSoon,     ///< the question was not answered the last time, and no other register was read since then
  };
  /// Whether it is the guest's turn. A guest that is told "later" keeps its place before those that come
  /// after it.
  Turn turnOf(Guest guest, const wire::CommandBuffer &command, Time now);
  /// The guest no longer waits for its turn.
  void leaves(Guest guest);
  /// The guest gives its question up, because its time is over or because what came is enough although it is
  /// no reply. Not before longestEditorWait has passed, since a bridge may still be busy with the question.
  void givesUp(Guest guest, Time now);
  /// Whether the guest has a question open.
  bool isOpen(Guest guest) const;
  /// A command by which a guest stops the servo: to be sent at once, whoever waits for what. False if the
  /// guest has no claim to change anything. Its answer is nobody's.
  bool stops(Guest guest, const wire::CommandBuffer &command, Time now);

  // ---- What comes in

  enum class Receiver { Editor, Guest, Nobody };
  struct Route {
    Receiver receiver = Receiver::Editor;
    LinkArbiter::Guest guest{};  ///< if the receiver is a guest
    bool isAnswer = false;       ///< to the guest's question, whose exchange has ended with it
  };
  /// Whose the delivery is, whose first byte was read at `came`: what came before a question was sent is no
  /// answer to it.
  Route routeOf(wire::Bytes delivery, Time came, Time now);

  /// When somebody's turn may come although nothing happens before.
  Time nextChange(Time now) const;
  /// The port was opened or closed: nobody awaits anything from it any more. Those who wait for a turn still
  /// do.
  void forget();

 private:
  /// What an answer is recognised by. The replies of two codes name a register; it is 0 for the others.
  struct Subject {
    wire::CommandCode code{};
    int registerNumber = 0;
    bool operator==(const Subject &) const = default;
  };
  struct EditorCommand {
    wire::CommandBuffer bytes;
    Time asked;
  };
  struct EditorQuestion {
    Subject subject;
    Time sent;
  };
  struct GuestQuestion {
    Subject subject;
    Guest guest;
    Time sent;
    bool isOpen = true;
    Time ended{};  ///< once it is not open
    /// It was given up: its answer may still come, and it is not asked again until a read of another register
    /// was answered.
    bool mayBeLate = false;
    bool mayBeAskedAnew = true;
  };

  static Subject subjectOf(wire::Bytes frame);
  bool mayChange(Guest guest) const { return changer_ == guest; }
  static bool isRead(wire::CommandCode code);

  std::optional<Turn> refusalOf(Guest guest, const Subject &subject) const;
  void noteEditorCommand(const wire::CommandBuffer &command, Time now);
  void noteAnsweredRead(const Subject &subject, Time sent);
  void forgetOld(Time now);
  bool isGuestExchangeOpen() const;
  bool isLineFree(Time now) const;
  Route routeOfReply(const Subject &subject, Time came, Time now);

  std::deque<EditorCommand> editorCommands_;  // that wait
  std::vector<EditorQuestion> editorQuestions_;
  Time sweepMayGoOnUntil_{};
  std::vector<GuestQuestion> guestQuestions_;
  std::deque<Guest> waitingGuests_;
  bool servesGuests_ = false;
  std::optional<Guest> changer_;
};

}  // namespace tavril
