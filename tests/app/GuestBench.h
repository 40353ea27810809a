#pragma once

#include "tests/app/LinkBench.h"

#include <QByteArray>

#include <optional>

namespace tavril {

/// The editor's link on a terminal, with a servo that can be used and no question open. The test runs the
/// main queue, or holds it.
class GuestBench : public LinkBench {
 protected:
  void SetUp() override {
    bench.devices.add(QStringLiteral("usbport-test"), pty->path());
    launch();
    connect(*pty);
    pty->write(QByteArray::fromHex("FF059002FE"));  // an answer that makes nobody read
    ASSERT_TRUE(bench.mainQueue.runNext());
    state.CanUseTavril = QStringLiteral("true");
  }

  std::optional<Pty> pty{std::in_place};
};

}  // namespace tavril
