#include "protocol/CommandSender.h"
#include "protocol/Function.h"
#include "protocol/RegisterCatalogue.h"
#include "protocol/SharedState.h"
#include "tests/fuzz/FuzzInput.h"
#include "tests/fuzz/FuzzTarget.h"
#include "tests/fuzz/Invariant.h"
#include "tests/support/PlainScreen.h"
#include "tests/support/TestDesktop.h"

#include <bit>
#include <map>
#include <vector>

// The decoder on whole frames only, so that the fuzzer need not find the marks: each reply shows exactly what
// its bytes say, reckoned here a second time, and changes no other register.
//
// Input: frames as a command code, the number of data bytes (its lower four bits; the uppermost bit drags the
// dial meanwhile), and the data.

namespace tavril {
namespace {

class CountingSender final : public CommandSender {
 public:
  explicit CountingSender(SharedState &state) : state_(state) {}
  void SendCMDtoMCU() override {
    commands.push_back(state_.SerialCMD);
    state_.SerialCMD.fill(0);
  }
  std::vector<wire::CommandBuffer> commands;

 private:
  SharedState &state_;
};

QString keyOf(int number) {
  return findRegister(number)->valueKey.toString();
}

class Decoder {
 public:
  Decoder() { registerPlainScreen(state_.ObjectDictionaryArray, elements_); }

  void take(int code, const QByteArray &data, bool dragging) {
    state_.limitFlag = dragging ? QStringLiteral("MouseIn") : QString();
    const int length = static_cast<int>(data.size()) + 4;
    QStringList frame{QStringLiteral("255"), QString::number(length), QString::number(code)};
    for (const char byte : data) frame.append(QString::number(static_cast<std::uint8_t>(byte)));
    frame.append(QStringLiteral("254"));

    const std::map<QString, QString> before = texts();
    const QHash<QString, KeyedText> listsBefore = state_.ErrorMsgShowToMegView;
    sender_.commands.clear();
    const QString answer = function_.returnErrorCode(frame);
    state_.returnSTR = answer;
    mustHold(sender_.commands.size() <= 1, "at most one command answers a reply");
    // Where the last byte is missing, the end mark counts as it.
    const QByteArray places = data + '\xFE';
    if (code == 145) {
      checkRegister(before, places, dragging);
    } else {
      const std::map<QString, QString> after = texts();
      for (int number = 1; number <= 20; ++number) {
        const QString key = keyOf(number);
        mustHold(after.at(key) == before.at(key), "only a register reply shows a register");
      }
    }
    if (code != 145 || dragging) {
      mustHold(state_.ErrorMsgShowToMegView == listsBefore, "only a register reply changes a list");
    }
    if (code == 151 && places.size() >= 2) {
      mustHold(answer == QString::number(byteOf(places, 0) * 256 + byteOf(places, 1)),
               "a position is its two bytes");
    }
    if (code == 144 && data.size() >= 1 && byteOf(data, 0) <= 2) {
      mustHold(state_.CanUseTavril == (byteOf(data, 0) == 1 ? u"true" : u"fail"), "one servo can be used");
    }
  }

 private:
  static int byteOf(const QByteArray &data, qsizetype index) {
    return static_cast<std::uint8_t>(data[index]);
  }

  std::map<QString, QString> texts() const {
    std::map<QString, QString> all;
    for (const auto &[key, element] : elements_) all[key] = element.text();
    return all;
  }

  /// `data`: what the decoder finds from the first data byte on.
  void checkRegister(const std::map<QString, QString> &before, const QByteArray &data, bool dragging) {
    const auto after = texts();
    if (data.size() < 3 || dragging) {
      mustHold(after == before && sender_.commands.empty(),
               "a reply without a value, or one in a drag, changes nothing");
      return;
    }
    const int named = byteOf(data, 0);
    const int low = byteOf(data, 2);
    int changed = 0;
    for (int number = 1; number <= 20; ++number) {
      if (after.at(keyOf(number)) != before.at(keyOf(number))) ++changed;
    }
    mustHold(changed <= 1, "one reply shows one register");
    if (named >= 1 && named <= 15) {
      mustHold(after.at(keyOf(named)) == settingText(named, byteOf(data, 1), low),
               "the value is that of its bytes");
      mustHold(sender_.commands.size() == 1 && sender_.commands[0][3] == named + 1,
               "the next one is asked for");
    }
    if (!sender_.commands.empty()) {
      const wire::CommandBuffer &command = sender_.commands[0];
      mustHold(command[2] == 0x91 && command[3] >= 2 && command[3] <= 20, "only registers are asked for");
    }
    checkLists(after, before, low);
  }
  static QString settingText(int number, int high, int low) {
    if (number >= 8 && number <= 11) return QString::number(high * 256 + low);
    if (number == 15) return QString::number(low < 128 ? low : low - 256);
    return QString::number(low);
  }
  /// A status register shows how many of its bits have a text.
  static void checkLists(const std::map<QString, QString> &after, const std::map<QString, QString> &before,
                         int low) {
    const std::map<QString, unsigned> masks{{keyOf(16), 0xEFu}, {keyOf(17), 0xF0u}};
    for (const auto &[key, mask] : masks) {
      const QString text = after.at(key);
      if (text == before.at(key) || text == QString::number(low)) continue;
      const int count = std::popcount(static_cast<unsigned>(low) & mask);
      mustHold(text == QStringLiteral("%1 Items").arg(count), "the items are counted");
    }
  }

  TestDesktop fakes_;
  SharedState state_;
  CountingSender sender_{state_};
  PlainScreen elements_;
  Function function_{state_, sender_, fakes_.desktop};
};

}  // namespace
}  // namespace tavril

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size) {
  tavril::Decoder decoder;
  tavril::FuzzInput input(data, size);
  // More would teach nothing new and only take longer.
  for (int frames = 0; frames < 32 && !input.isEmpty(); ++frames) {
    const int code = input.byte();
    const std::uint8_t shape = input.byte();
    decoder.take(code, input.bytes(shape & 0x0F), (shape & 0x80) != 0);
  }
  return 0;
}
