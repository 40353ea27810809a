#include "app/LinkGuest.h"
#include "platform/Bytes.h"
#include "tests/app/FaultyServo.h"
#include "tests/app/GuestBench.h"

#include <algorithm>
#include <future>
#include <map>
#include <mutex>
#include <random>
#include <stop_token>
#include <thread>
#include <vector>

namespace tavril {
namespace {

using namespace std::chrono_literals;
using Time = LinkArbiter::Time;

/// The faulty servo at the other end of a terminal, on a thread of its own.
class ServoOnPty {
 public:
  struct Command {
    QByteArray frame;
    Time came;
  };

  ServoOnPty(const Pty &pty, std::uint32_t seed)
      : pty_(pty),
        servo_(seed, true, FaultyServo::Faults::OfWholeAnswers),
        thread_([this](const std::stop_token &stop) { run(stop); }) {}

  /// All commands, by their numbers.
  std::vector<Command> end() {
    thread_.request_stop();
    thread_.join();
    return commands_;
  }

 private:
  void run(const std::stop_token &stop) {
    QByteArray came;
    for (;;) {
      const bool isToEnd = stop.stop_requested();  // asked first: what was written before that is still read
      const qsizetype before = came.size();
      came += pty_.read(50 - came.size(), 1ms);
      if (isToEnd && came.size() == before) return;
      const Time now = std::chrono::steady_clock::now();
      if (came.size() == 50) {
        take(came.first(FaultyServo::byteAt(came, 1)), now);
        came.clear();
      }
      for (; !emissions_.empty() && emissions_.begin()->first <= now; emissions_.erase(emissions_.begin())) {
        pty_.write(emissions_.begin()->second);
      }
    }
  }

  void take(const QByteArray &frame, Time now) {
    const int number = static_cast<int>(commands_.size());
    commands_.push_back({frame, now});
    // Without an answer to a move the guests would wait for a second.
    if (FaultyServo::byteAt(frame, 2) == 150) {
      pty_.write(QByteArray::fromHex("FF0496FE"));
      return;
    }
    for (const FaultyServo::Emission &emission : servo_.answersTo(frame, number, now)) {
      QByteArray bytes;
      for (const FaultyServo::Byte &byte : emission.bytes) bytes.append(byte.value);
      emissions_.emplace(emission.at, bytes);
    }
  }

  const Pty &pty_;
  FaultyServo servo_;
  std::multimap<Time, QByteArray> emissions_;
  std::vector<Command> commands_;
  std::jthread thread_;
};

struct Asked {
  QByteArray frame;
  LinkAnswer answer;
};

/// What a guest asks, one question after the other.
std::vector<Asked> askAtRandom(LinkGuest &guest, std::uint32_t seed, bool writes) {
  std::mt19937 random(seed);
  std::vector<Asked> asked;
  for (int times = 0; times < 5; ++times) {
    const auto registerNumber = static_cast<std::uint8_t>(1 + random() % 15);
    wire::CommandBuffer command{0xFF, 5, 145, registerNumber, 0xFE};
    if (random() % 2 == 0) command = {0xFF, 4, 151, 0xFE};
    if (writes && random() % 3 == 0) command = {0xFF, 7, 146, registerNumber, 0, 1, 0xFE};
    std::stop_source source;
    if (random() % 10 == 0) source.request_stop();
    const LinkAnswer answer = guest.ask(command, {}, random() % 2 == 0 ? 40ms : 100ms, source.get_token());
    asked.push_back({toByteArray(command).first(command[1]), answer});
  }
  return asked;
}

class ServoLinkAtRandom : public GuestBench {
 protected:
  void move() {
    state.SerialCMD = {
        0xFF, 6, 150, static_cast<std::uint8_t>(moves_ / 200), static_cast<std::uint8_t>(moves_ % 200), 0xFE};
    ++moves_;
    application->SendCMDtoMCU();
  }

  void run(std::uint32_t seed) {
    std::mt19937 random(seed);
    const int firstMove = moves_;
    ServoOnPty servo(*pty, seed);
    LinkGuest sampler(application->link());
    LinkGuest plan(application->link());
    ASSERT_TRUE(plan.claimChanges());
    auto samples = std::async(std::launch::async, [&] { return askAtRandom(sampler, seed + 1, false); });
    auto changes = std::async(std::launch::async, [&] { return askAtRandom(plan, seed + 2, true); });
    for (const auto *guest : {&samples, &changes}) {
      while (guest->wait_for(std::chrono::milliseconds(1 + random() % 10)) != std::future_status::ready) {
        bench.mainQueue.runAll();
        if (random() % 2 == 0) move();
      }
    }
    std::vector<Asked> asked = samples.get();
    std::ranges::copy(changes.get(), std::back_inserter(asked));
    const auto commands = servo.end();
    expectTheCommandsAre(commands, asked, firstMove);
    for (const Asked &one : asked) expectRightAnswer(one, commands);
  }

  /// Those that were sent and no others: nothing that came for a guest has made the editor read.
  void expectTheCommandsAre(const std::vector<ServoOnPty::Command> &commands, const std::vector<Asked> &asked,
                            int firstMove) {
    std::vector<QByteArray> ofGuests;
    int move = firstMove;
    for (const auto &[frame, came] : commands) {
      if (FaultyServo::byteAt(frame, 2) != 150) {
        ofGuests.push_back(frame);
      } else {
        EXPECT_EQ(FaultyServo::byteAt(frame, 3) * 200 + FaultyServo::byteAt(frame, 4), move++);
      }
    }
    EXPECT_EQ(move, moves_) << "every command of the editor is sent, in its order";
    std::vector<QByteArray> sent;
    for (const Asked &one : asked) {
      if (one.answer.sent != Time()) sent.push_back(one.frame);
    }
    std::ranges::sort(ofGuests);
    std::ranges::sort(sent);
    EXPECT_EQ(ofGuests, sent);
  }

  void expectRightAnswer(const Asked &asked, const std::vector<ServoOnPty::Command> &commands) {
    using Outcome = LinkAnswer::Outcome;
    const auto &[outcome, bytes, sent, arrived] = asked.answer;
    EXPECT_TRUE(outcome == Outcome::Answered || outcome == Outcome::Unanswered ||
                outcome == Outcome::Cancelled || outcome == Outcome::TooSoon);
    if (outcome != Outcome::Answered) return;
    ++answers_;
    EXPECT_LE(sent, arrived);
    const int code = FaultyServo::byteAt(asked.frame, 2);
    const QByteArray reply = toByteArray(bytes).last(code == 145   ? 7
                                                     : code == 151 ? 6
                                                                   : 5);  // after error reports
    EXPECT_TRUE(FaultyServo::isReply(reply)) << reply.toHex().constData();
    EXPECT_EQ(FaultyServo::subjectOf(reply), FaultyServo::subjectOf(asked.frame));
    if (code == 146) return;  // has no value
    int number = 0;
    while (number < static_cast<int>(commands.size()) && !FaultyServo::isValueOf(reply, number)) ++number;
    ASSERT_LT(number, static_cast<int>(commands.size()));
    const ServoOnPty::Command &answered = commands[static_cast<std::size_t>(number)];
    EXPECT_EQ(answered.frame, asked.frame);
    EXPECT_GE(answered.came, asked.answer.sent) << "the value is older than the question";
  }

  int moves_ = 0;
  long answers_ = 0;
};

TEST_F(ServoLinkAtRandom, NobodyGetsAWrongValueAndTheEditorIsNotDisturbed) {
  for (std::uint32_t seed = 0; seed < 200; ++seed) {
    SCOPED_TRACE(testing::Message() << "seed " << seed);
    run(seed);
    if (HasFailure()) return;
  }
  EXPECT_GT(answers_, 200 * 2);
}

}  // namespace
}  // namespace tavril
