#pragma once

#include "wire/Frames.h"

#include <chrono>
#include <deque>
#include <optional>
#include <vector>

namespace tavril {

/// Decides who may send to the servo, the editor or one of its guests, and who gets what comes in. The editor
/// comes first; guests get the time that it leaves, one exchange after the other. The arbiter itself sends
/// nothing and has no clock: it gets all times, which must not go back. Not thread-safe.
class LinkArbiter {
 public:
  using Time = std::chrono::steady_clock::time_point;

  /// Tells the guests apart. A guest asks one question at a time.
  enum class Guest : int {};

  /// The longest time for which a command of the editor waits for the exchange of a guest.
  static constexpr std::chrono::milliseconds longestEditorWait{30};
  /// How long a question of the editor keeps guests waiting, and how long after a question its answer is
  /// recognised.
  static constexpr std::chrono::seconds memory{1};

  // ---- The editor

  /// Adds the command to those of the editor that wait.
  void editorAsks(const wire::CommandBuffer &command, Time now);
  /// The editor's next command if it is to be sent now. The caller must send it at once, before anything
  /// else.
  std::optional<wire::CommandBuffer> nextOfEditor(Time now);

  // ---- Guests

  /// Whether guests are served. At first they are not.
  void setServesGuests(bool serve) { servesGuests_ = serve; }

  /// Only one guest at a time may move the servo or write to it. Returns false if another guest may.
  bool claimChanges(Guest guest);
  void releaseChanges(Guest guest);

  enum class Turn {
    Now,         ///< the command must be sent at once, before anything else
    Later,       ///< asking again makes sense after the next event, at nextChange() at the latest
    NotServed,   ///< no guest is served at present
    NotAllowed,  ///< the command changes something, and the guest has no claim to that
    TooSoon,     ///< the question was not answered the last time, and no other register was read since then
  };
  /// Whether it is the guest's turn. A guest that is told "later" stays before those that come after it.
  Turn turnOf(Guest guest, const wire::CommandBuffer &command, Time now);
  /// The guest no longer waits for its turn.
  void leaves(Guest guest);
  /// The guest gives up its question: the time is over, or what came is enough although it is not the reply.
  /// This must not happen before longestEditorWait has passed, because a bridge may still be busy with the
  /// question.
  void givesUp(Guest guest, Time now);
  /// Whether the guest has a question open.
  bool isOpen(Guest guest) const;
  /// A command by which a guest stops the servo. It must be sent at once, whoever waits. Returns false if the
  /// guest has no claim to changes. Nobody gets its answer.
  bool stops(Guest guest, const wire::CommandBuffer &command, Time now);

  // ---- What comes in

  enum class Receiver { Editor, Guest, Nobody };
  struct Route {
    Receiver receiver = Receiver::Editor;
    LinkArbiter::Guest guest{};  ///< if the receiver is a guest
    bool isAnswer = false;       ///< to the guest's question, whose exchange has ended with it
  };
  /// Decides who gets the delivery. Its first byte was read at `came`; a question that was sent later is not
  /// answered by it.
  Route routeOf(wire::Bytes delivery, Time came, Time now);

  /// The next time at which somebody's turn may come without another event.
  Time nextChange(Time now) const;
  /// The port was opened or closed. No answer is awaited any more; those who wait for their turn continue to
  /// wait.
  void forget();

 private:
  /// Identifies an answer. The replies of two codes name a register; for the others it is 0.
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
    /// It was given up. Its answer may still come, and it may not be asked again until a read of another
    /// register was answered.
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
