#pragma once

#include "app/LinkArbiter.h"
#include "platform/KeyValueObservers.h"
#include "serial/DeliveryRule.h"
#include "wire/Frames.h"

#include <QByteArray>

#include <chrono>
#include <condition_variable>
#include <cstdint>
#include <functional>
#include <memory>
#include <mutex>
#include <stop_token>
#include <vector>

namespace tavril {

class SerialPort;

/// The outcome of a guest's question.
struct LinkAnswer {
  enum class Outcome {
    Answered,    ///< the reply came, or what came was enough
    Sent,        ///< to this command there is no reply
    Unanswered,  ///< the time was over
    Cancelled,
    Closed,      ///< the port is closed, or was meanwhile
    NotServed,   ///< no servo that can be used is connected
    NotAllowed,  ///< the command changes something, and the guest has not claimed that
    TooSoon,     ///< the last time there was no answer, and no other register was read since then
  };

  Outcome outcome = Outcome::Closed;
  std::vector<std::uint8_t> bytes{};  ///< what came for the guest
  LinkArbiter::Time sent{};           ///< when the question was handed to the port, if it was
  LinkArbiter::Time arrived{};        ///< when the last of the bytes came, if any came
};

/// The one link to the servo. The editor sends through it on the main thread; guests use the time that the
/// editor leaves, each on a thread of its own. LinkArbiter decides who may send and who gets a reply. This
/// happens on the reading thread, so guests continue while the main thread is held. Thread-safe unless it
/// says otherwise.
class ServoLink : public std::enable_shared_from_this<ServoLink> {
 public:
  using Until = std::function<bool(wire::Bytes)>;

  // ---- The editor, on the main thread

  /// Sets the port for all later commands, which may be none. Waiting guests are told that the old port is
  /// closed. If a command cannot be written, the port's delegate is told while the lock is held, so it must
  /// not use the link.
  void setPort(std::shared_ptr<SerialPort> port);
  /// The rule that the port needs before it is opened. It makes deliveries of replies and takes those of
  /// guests.
  std::shared_ptr<const DeliveryRule> deliveryRule();
  /// Sends the command. If the exchange of a guest is open, the guest's thread sends it afterwards. Does not
  /// wait.
  void send(const wire::CommandBuffer &command);
  void setServesGuests(bool serve);

  // ---- Guests

  /// A number for a new guest.
  LinkArbiter::Guest admit();
  /// Waits for the guest's turn, sends the command, and collects what comes. Ends when the reply has come,
  /// when `until` accepts what came, or when the time since the sending is over. Each guest may have one call
  /// at a time, and not on the main thread. `until` must be quick, must not throw and must not use the link.
  LinkAnswer ask(LinkArbiter::Guest guest, const wire::CommandBuffer &command, const Until &until,
                 std::chrono::microseconds timeout, const std::stop_token &cancelled);
  /// Sends at once, whoever waits, on any thread. Only for a guest that has claimed changes. Returns false if
  /// nothing was sent.
  bool stop(LinkArbiter::Guest guest, const wire::CommandBuffer &command);
  /// Moving the servo and writing to it is for one guest at a time. Returns false if another guest has
  /// claimed it.
  bool claimChanges(LinkArbiter::Guest guest);
  void releaseChanges(LinkArbiter::Guest guest);

 private:
  /// Waits for an event of the link. The lock is held except during the waiting.
  struct Exchange {
    LinkAnswer answer;
    bool isAnswered = false;
  };

  bool take(const QByteArray &delivery, LinkArbiter::Time came);
  void portOpenedOrClosed();
  bool isOpen() const;
  bool transmit(const wire::CommandBuffer &command);
  void sendCommandsOfEditor();
  void changed();
  void waitForChange(std::unique_lock<std::mutex> &lock, const std::stop_token &cancelled,
                     LinkArbiter::Time deadline);
  LinkAnswer::Outcome waitForTurn(std::unique_lock<std::mutex> &lock, LinkArbiter::Guest guest,
                                  const wire::CommandBuffer &command, const std::stop_token &cancelled);
  LinkAnswer::Outcome waitForAnswer(std::unique_lock<std::mutex> &lock, Exchange &exchange,
                                    const Until &until, std::chrono::microseconds timeout,
                                    const std::stop_token &cancelled);

  /// Held from noting a question until its bytes are written.
  std::mutex mutex_;
  std::condition_variable_any changed_;
  std::uint64_t changes_ = 0;  // counted, so that none is missed
  LinkArbiter arbiter_;
  std::shared_ptr<SerialPort> port_;
  std::uint64_t openings_ = 0;    // and closings, of the port
  Exchange *exchange_ = nullptr;  // of the guest whose question is open
  int lastGuest_ = 0;
  KeyValueObservers::Token openingObserver_;  // main thread only
};

}  // namespace tavril
