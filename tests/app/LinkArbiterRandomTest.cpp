#include "app/LinkArbiter.h"
#include "app/ReplyDelivery.h"
#include "platform/Bytes.h"
#include "serial/DeliveryAssembler.h"
#include "tests/app/FaultyServo.h"

#include <QByteArray>
#include <QString>

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cstdio>
#include <deque>
#include <functional>
#include <map>
#include <optional>
#include <random>
#include <span>
#include <vector>

namespace tavril {
namespace {

using namespace std::chrono_literals;
using Guest = LinkArbiter::Guest;
using Receiver = LinkArbiter::Receiver;
using Subject = FaultyServo::Subject;
using Time = LinkArbiter::Time;
using Turn = LinkArbiter::Turn;

constexpr int editor = 0;  // among those who send; the guests are 1 and 2

/// Over all runs.
struct Totals {
  long editorFrames = 0;
  long editorFramesThatWaited = 0;
  long editorAnswers = 0;
  long guestFrames = 0;
  long guestAnswers = 0;
  long guestQuestionsGivenUp = 0;
  long repetitionsRefused = 0;
  long answersOfGuestsThatCameLate = 0;
  long answersExchanged = 0;  // to a question that both asked
};

QByteArray frame(std::initializer_list<int> middle) {
  QByteArray bytes("\xFF");
  bytes.append(static_cast<char>(middle.size() + 3));
  for (const int value : middle) bytes.append(static_cast<char>(value));
  return bytes.append('\xFE');
}

/// One stretch of virtual time in which the editor and two guests use a bad line.
class BusyLine {
 public:
  BusyLine(std::uint32_t seed, Totals &totals)
      : random_(seed),
        servo_(seed + 1, random_() % 4 != 0),
        totals_(totals),
        assembler_(replyDeliveryRule()) {
    arbiter_.setServesGuests(true);
    EXPECT_TRUE(arbiter_.claimChanges(Guest{2}));
  }

  void play() {
    end_ = now_ + someTime(300, 1500);
    after(0ms, [this] { editorActs(); });
    for (Asker &guest : guests_) after(someTime(0, 20), [this, &guest] { guestAsks(guest); });
    while (!events_.empty() && !testing::Test::HasFailure()) {
      const auto first = events_.begin();
      now_ = first->first;
      const auto job = std::move(first->second);
      events_.erase(first);
      job();
      letThemSend();
    }
    EXPECT_TRUE(editorAsked_.empty()) << "every command of the editor is sent";
  }

 private:
  struct Sent {
    int by;
    Subject subject;
    Time at;
  };
  struct Asker {
    int id;
    std::optional<QByteArray> waiting;
    std::optional<int> open{};  // the number of the command
    Guest guest() const { return Guest{id}; }
  };

  // ---- Chance and time

  int below(int end) { return static_cast<int>(random_() % static_cast<unsigned>(end)); }
  std::chrono::microseconds someTime(int least_ms, int most_ms) {
    return std::chrono::microseconds(least_ms * 1000 + below((most_ms - least_ms) * 1000));
  }
  void at(Time time, std::function<void()> job) { events_.emplace(time, std::move(job)); }
  void after(std::chrono::nanoseconds time, std::function<void()> job) { at(now_ + time, std::move(job)); }
  bool isOver() const { return now_ >= end_; }
  bool isGuestExchangeOpen() const {
    return std::ranges::any_of(guests_, [](const Asker &guest) { return guest.open.has_value(); });
  }
  bool isGuestWaiting() const {
    return std::ranges::any_of(guests_, [](const Asker &guest) { return guest.waiting.has_value(); });
  }

  // ---- The line

  int transmit(int by, const QByteArray &command) {
    const int number = static_cast<int>(sent_.size());
    sent_.push_back({by, FaultyServo::subjectOf(command), now_});
    for (auto &emission : servo_.answersTo(command, number, now_)) {
      at(emission.at, [this, bytes = std::move(emission.bytes)] { adapterGets(bytes); });
    }
    return number;
  }

  /// The adapter hands over at once, or holds what came for up to 15 ms together with what comes after it.
  void adapterGets(const std::vector<FaultyServo::Byte> &bytes) {
    adapter_.insert(adapter_.end(), bytes.begin(), bytes.end());
    const bool holds = below(8) == 0;
    after(holds ? someTime(1, 15) : 0us, [this] { handOver(); });
  }

  void handOver() {
    QByteArray read;
    for (const auto &byte : adapter_) {
      read.append(byte.value);
      causes_.push_back(byte.cause);
    }
    adapter_.clear();
    if (read.isEmpty()) return;
    assembler_.add(std::as_bytes(std::span(read.constData(), static_cast<std::size_t>(read.size()))), now_);
    deliver();
  }

  void deliver() {
    while (assembler_.isWaiting()) {
      const Time came = assembler_.firstCame();
      auto delivery = assembler_.next();
      if (!delivery && assembler_.timeLeft(now_) == 0ms) delivery = assembler_.takeFirstRead();
      if (!delivery) return after(assembler_.timeLeft(now_), [this] { deliver(); });
      const int cause = causes_.front();
      causes_.erase(causes_.begin(), causes_.begin() + delivery->size());
      take(*delivery, came, cause);
    }
  }

  void take(const QByteArray &delivery, Time came, int cause) {
    const LinkArbiter::Route route = arbiter_.routeOf(asBytes(delivery), came, now_);
    const bool isReply = FaultyServo::isReply(delivery);
    SCOPED_TRACE(testing::Message() << delivery.toHex().constData() << " caused by " << cause);
    std::erase_if(editorOpen_, [this](int number) { return now_ >= sentOf(number).at + 1s; });
    switch (route.receiver) {
      case Receiver::Editor:
        isReply ? expectReplyIsEditors(delivery, came, cause) : expectNoiseIsEditors(delivery, cause);
        editorGets(delivery);
        break;
      case Receiver::Guest:
        guestGets(guests_[static_cast<std::size_t>(route.guest) - 1], delivery, route.isAnswer, cause);
        break;
      case Receiver::Nobody:
        if (isReply) {
          EXPECT_NE(ownerOf(cause), editor) << "what answers the editor is not dropped";
          ++totals_.answersOfGuestsThatCameLate;
        } else {
          EXPECT_TRUE(editorOpen_.empty());
        }
        break;
    }
  }

  const Sent &sentOf(int number) const { return sent_[static_cast<std::size_t>(number)]; }
  /// Whose answer it is; an answer that the editor has no use for any more is nobody's.
  std::optional<int> ownerOf(int cause) const {
    if (cause == FaultyServo::noise) return std::nullopt;
    if (sentOf(cause).by == editor && std::ranges::find(editorOpen_, cause) == editorOpen_.end())
      return std::nullopt;
    return sentOf(cause).by;
  }

  // ---- The editor, and what must hold for it

  void editorActs() {
    if (isOver()) return;
    std::chrono::nanoseconds pause = someTime(20, 300);
    switch (below(10)) {
      case 0:
      case 1:
        editorAsks(frame({145, 1}));
        break;
      case 2:
      case 3:
        for (int times = 0; times < 3; ++times) after(times * 15ms, [this] { editorAsks(frame({151})); });
        break;
      case 4:
        for (int step = 0; step < 10; ++step) {
          after(step * someTime(8, 12), [this, step] { editorAsks(frame({150, 1, step})); });
        }
        break;
      case 5:
      case 6:
        editorAsks(frame({147}));
        break;
      case 7:
        editorAsks(frame({144}));
        break;
      case 8:
        mainIsHeldUntil_ = now_ + someTime(50, 300);  // by an alert
        pause = mainIsHeldUntil_ - now_;
        break;
      case 9:
        if (below(3) != 0) break;
        sweep(1);
        pause = 1600ms;
        break;
    }
    after(pause, [this] { editorActs(); });
  }

  void sweep(int registerNumber) {
    isSweeping_ = true;
    mainIsHeldUntil_ = now_ + 100ms;
    editorAsks(frame({146, registerNumber, 0, 1}));
    if (registerNumber < 15) {
      after(100ms, [this, registerNumber] { sweep(registerNumber + 1); });
    } else {
      isSweeping_ = false;
    }
  }

  /// A question that is asked again before it was answered is left out: then nobody can tell an answer from a
  /// copy.
  void editorAsks(const QByteArray &bytes) {
    const Subject subject = FaultyServo::subjectOf(bytes);
    const bool isQuestion = subject.first == 144 || subject.first == 145 || subject.first == 151;
    const auto isAsked = [&](int number) { return sentOf(number).subject == subject; };
    const auto waits = [&](const auto &one) { return one.first == bytes; };
    const bool isOpen = std::ranges::any_of(editorOpen_, isAsked) || std::ranges::any_of(editorAsked_, waits);
    if (isQuestion && isOpen) return;
    wire::CommandBuffer buffer{};
    std::ranges::copy(bytes, buffer.begin());
    const bool mustGoAtOnce = editorAsked_.empty() && !isGuestExchangeOpen();
    editorAsked_.push_back({bytes, now_});
    arbiter_.editorAsks(buffer, now_);
    letTheEditorSend();
    EXPECT_TRUE(!mustGoAtOnce || editorAsked_.empty());
  }

  void letTheEditorSend() {
    while (const auto buffer = arbiter_.nextOfEditor(now_)) {
      ASSERT_FALSE(editorAsked_.empty());
      const auto [asked, time] = editorAsked_.front();
      editorAsked_.pop_front();
      EXPECT_TRUE(std::ranges::equal(asked, std::span(*buffer).first(static_cast<std::size_t>(asked.size())),
                                     {}, [](char byte) { return static_cast<std::uint8_t>(byte); }))
          << "in their order";
      EXPECT_LE(now_ - time, 30ms);
      ++totals_.editorFrames;
      if (now_ > time) ++totals_.editorFramesThatWaited;
      const int number = transmit(editor, asked);
      if (sentOf(number).subject.first != 147) editorOpen_.push_back(number);
    }
  }

  /// A reply that the editor gets is one that it awaits, or a copy of one that it got.
  void expectReplyIsEditors(const QByteArray &reply, Time came, int cause) {
    ASSERT_NE(cause, FaultyServo::noise);
    const Subject subject = FaultyServo::subjectOf(reply);
    EXPECT_EQ(subject, sentOf(cause).subject);
    EXPECT_TRUE(FaultyServo::isValueOf(reply, cause));
    const auto open = std::ranges::find_if(editorOpen_, [&](int number) {
      return sentOf(number).subject == subject && sentOf(number).at <= came;
    });
    if (open == editorOpen_.end()) {
      EXPECT_EQ(sentOf(cause).by, editor) << "an exchange of a guest makes the editor read";
      return;
    }
    ++totals_.editorAnswers;
    if (sentOf(cause).by != editor) ++totals_.answersExchanged;
    editorOpen_.erase(open);
  }

  void expectNoiseIsEditors(const QByteArray &delivery, int cause) {
    const bool makesTheEditorRead =
        delivery.startsWith('\xFF') && FaultyServo::byteAt(delivery, 2 % delivery.size()) != 249;
    if (makesTheEditorRead && cause != FaultyServo::noise) {
      EXPECT_EQ(sentOf(cause).by, editor) << "a piece of a guest's answer makes the editor read";
    }
    EXPECT_TRUE(!editorOpen_.empty() || !isGuestExchangeOpen());
  }

  /// The main thread takes it when it gets to it, and does what the decoder does.
  void editorGets(const QByteArray &delivery) {
    mainIsHeldUntil_ = std::max(mainIsHeldUntil_, now_ + someTime(0, 2));
    at(mainIsHeldUntil_, [this, delivery] {
      if (isOver()) return;
      const bool isFrame = delivery.size() >= 4 && delivery.startsWith('\xFF') && delivery.endsWith('\xFE') &&
                           FaultyServo::byteAt(delivery, 1) == delivery.size();
      if (!isFrame) {
        if (delivery.startsWith('\xFF')) editorAsks(frame({145, 1}));
        return;
      }
      const auto [code, registerNumber] = FaultyServo::subjectOf(delivery);
      if (code == 144) editorAsks(frame({145, 1}));
      if (code == 145 && registerNumber < 20) editorAsks(frame({145, registerNumber + 1}));
    });
  }

  // ---- The guests, and what must hold for them

  void guestAsks(Asker &guest) {
    if (isOver() || guest.open) return;
    const int chance = below(10);
    if (guest.id == 2 && chance < 3) {
      guest.waiting = chance == 0   ? frame({147})
                      : chance == 1 ? frame({150, 2, 0})
                                    : frame({146, 1 + below(15), 0, 1});
    } else {
      guest.waiting = chance < 6 ? frame({151}) : frame({145, 1 + below(20)});
    }
  }

  void letThemSend() {
    letTheEditorSend();
    for (Asker &guest : guests_) letSend(guest);
    if (below(200) == 0 && !isOver()) {
      arbiter_.setServesGuests(false);
      isServing_ = false;
      after(someTime(5, 50), [this] {
        arbiter_.setServesGuests(true);
        isServing_ = true;
      });
    }
    const Time next = arbiter_.nextChange(now_);
    EXPECT_GT(next, now_) << "what was due by now has been sent";
    const bool isSomebodyWaiting = !editorAsked_.empty() || isGuestWaiting();
    if (isSomebodyWaiting && (next < nextLook_ || nextLook_ <= now_)) {
      nextLook_ = next;
      at(next, [] {});
    }
  }

  void letSend(Asker &guest) {
    if (!guest.waiting) return;
    if (below(100) == 0) {  // it is cancelled
      arbiter_.leaves(guest.guest());
      guest.waiting.reset();
      return after(someTime(0, 20), [this, &guest] { guestAsks(guest); });
    }
    wire::CommandBuffer buffer{};
    std::ranges::copy(*guest.waiting, buffer.begin());
    switch (arbiter_.turnOf(guest.guest(), buffer, now_)) {
      case Turn::Now:
        return send(guest);
      case Turn::Later:
        return;
      case Turn::NotServed:
        EXPECT_FALSE(isServing_);
        break;
      case Turn::TooSoon:
        ++totals_.repetitionsRefused;
        break;
      case Turn::NotAllowed:
        ADD_FAILURE() << "only the second guest changes anything";
    }
    guest.waiting.reset();
    after(someTime(0, 5), [this, &guest] { guestAsks(guest); });
  }

  void send(Asker &guest) {
    std::erase_if(editorOpen_, [this](int number) { return now_ >= sentOf(number).at + 1s; });
    EXPECT_TRUE(isServing_);
    EXPECT_TRUE(editorAsked_.empty() && editorOpen_.empty()) << "a guest takes its turn before the editor";
    EXPECT_FALSE(isSweeping_);
    EXPECT_TRUE(!isGuestExchangeOpen());
    ++totals_.guestFrames;
    const int number = transmit(guest.id, *guest.waiting);
    guest.waiting.reset();
    if (sentOf(number).subject.first == 147) return after(0us, [this, &guest] { guestAsks(guest); });
    guest.open = number;
    after(below(2) == 0 ? 100ms : 40ms, [this, &guest, number] {
      if (guest.open == number) endExchange(guest, false);
    });
  }

  void endExchange(Asker &guest, bool isAnswered) {
    if (!isAnswered) {
      arbiter_.givesUp(guest.guest(), now_);
      ++totals_.guestQuestionsGivenUp;
    }
    EXPECT_FALSE(arbiter_.isOpen(guest.guest()));
    guest.open.reset();
    after(0us, [this, &guest] { guestAsks(guest); });
  }

  void guestGets(Asker &guest, const QByteArray &delivery, bool isAnswer, int cause) {
    ASSERT_TRUE(guest.open);
    if (!isAnswer) {
      EXPECT_TRUE(editorOpen_.empty());
      if (delivery.size() == 5 && FaultyServo::byteAt(delivery, 2) == 249) endExchange(guest, false);
      return;
    }
    ASSERT_NE(cause, FaultyServo::noise);
    const Subject subject = FaultyServo::subjectOf(delivery);
    EXPECT_EQ(subject, sentOf(*guest.open).subject);
    EXPECT_EQ(subject, sentOf(cause).subject);
    // A write or a move may be repeated at once, and its acknowledgement has no value that could be too old.
    const bool hasValue = subject.first != 146 && subject.first != 150;
    EXPECT_TRUE(!hasValue || cause >= *guest.open) << "the value is older than the question";
    EXPECT_TRUE(FaultyServo::isValueOf(delivery, cause));
    EXPECT_NE(ownerOf(cause), editor) << "an answer that the editor still awaits";
    ++totals_.guestAnswers;
    endExchange(guest, true);
  }

  std::mt19937 random_;
  FaultyServo servo_;
  Totals &totals_;
  LinkArbiter arbiter_;
  DeliveryAssembler assembler_;
  std::multimap<Time, std::function<void()>> events_;
  Time now_{1h};
  Time end_{};
  Time nextLook_{};
  std::vector<Sent> sent_;
  std::vector<FaultyServo::Byte> adapter_;
  std::deque<int> causes_;  // of the bytes in the assembler

  std::deque<std::pair<QByteArray, Time>> editorAsked_;  // and not sent yet
  std::vector<int> editorOpen_;                          // commands that the editor awaits an answer to
  Time mainIsHeldUntil_{};
  bool isSweeping_ = false;
  bool isServing_ = true;
  std::array<Asker, 2> guests_{Asker{1, {}}, Asker{2, {}}};
};

std::uint32_t fromEnvironment(const char *name, std::uint32_t usual) {
  bool isNumber = false;
  const uint value = qEnvironmentVariable(name).toUInt(&isNumber);
  return isNumber ? value : usual;
}

TEST(LinkArbiterAtRandom, NobodyGetsAWrongValueAndTheEditorIsNotDisturbed) {
  const std::uint32_t first = fromEnvironment("TAVRIL_LINK_SEED", 0);
  const std::uint32_t runs = fromEnvironment("TAVRIL_LINK_RUNS", 10'000);
  Totals totals;
  for (std::uint32_t seed = first; seed != first + runs; ++seed) {
    SCOPED_TRACE(testing::Message() << "seed " << seed);
    BusyLine(seed, totals).play();
    if (HasFailure()) return;
  }
  if (runs < 1000) return;
  EXPECT_GT(totals.editorFramesThatWaited, 0);
  EXPECT_GT(totals.editorAnswers, 0);
  EXPECT_GT(totals.guestAnswers, 0);
  EXPECT_GT(totals.guestQuestionsGivenUp, 0);
  EXPECT_GT(totals.repetitionsRefused, 0);
  EXPECT_GT(totals.answersOfGuestsThatCameLate, 0);
  EXPECT_GT(totals.answersExchanged, 0);
  std::printf(
      "editor: %ld frames, %ld of them waited, %ld answers; guests: %ld frames, %ld answers, %ld given up, "
      "%ld repetitions refused, %ld late answers and copies dropped; %ld answers exchanged\n",
      totals.editorFrames, totals.editorFramesThatWaited, totals.editorAnswers, totals.guestFrames,
      totals.guestAnswers, totals.guestQuestionsGivenUp, totals.repetitionsRefused,
      totals.answersOfGuestsThatCameLate, totals.answersExchanged);
}

}  // namespace
}  // namespace tavril
