#pragma once

#include "protocol/CommandSender.h"
#include "protocol/Function.h"
#include "protocol/SharedState.h"
#include "tests/support/PlainScreen.h"
#include "tests/support/TestDesktop.h"

#include <QByteArray>
#include <QStringList>

#include <gtest/gtest.h>

#include <vector>

namespace tavril {

/// Takes each command as it would go out, whole, and clears the buffer as the link does.
class RecordingSender final : public CommandSender {
 public:
  explicit RecordingSender(SharedState &state) : state_(state) {}

  void SendCMDtoMCU() override {
    sent.emplace_back(reinterpret_cast<const char *>(state_.SerialCMD.data()),
                      static_cast<qsizetype>(state_.SerialCMD.size()));
    state_.SerialCMD.fill(0);
  }

  std::vector<QByteArray> sent;

 private:
  SharedState &state_;
};

/// The 50 bytes of a transmission whose frame is given in hexadecimal.
inline QByteArray transmission(const char *frame) {
  const QByteArray bytes = QByteArray::fromHex(frame);
  return bytes + QByteArray(50 - bytes.size(), '\0');
}

class FunctionFixture : public testing::Test {
 protected:
  FunctionFixture() { registerPlainScreen(state.ObjectDictionaryArray, elements); }

  QString textOf(const char *key) { return elements.at(QString::fromLatin1(key)).text(); }

  TestDesktop fakes;
  SharedState state;
  RecordingSender sender{state};
  PlainScreen elements;
  Function function{state, sender, fakes.desktop};
};

}  // namespace tavril
