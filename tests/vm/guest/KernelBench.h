#pragma once

#include "tests/support/WaitFor.h"
#include "tests/vm/guest/GuestEditor.h"
#include "tests/vm/guest/HostControl.h"
#include "tests/vm/guest/Residue.h"

#include <gtest/gtest.h>

#include <memory>
#include <optional>
#include <vector>

namespace tavril::vm {

using namespace std::chrono_literals;

/// The whole editor on a real kernel. Each test begins with no adapter plugged in and with servos as they
/// leave the factory, and ends with a check of what must hold whatever happened: nothing is left over in the
/// process, no thread spins, no port is listed that is not there, the node of every adapter can be opened,
/// and the servos' settings are those that the test says.
class KernelBench : public testing::Test {
 public:
  /// Set before the first test.
  static HostControl *host;

 protected:
  KernelBench();
  void SetUp() override;
  void TearDown() override;

  /// Starts the editor; a bridge here needs no time to start up unless a test wants it to.
  GuestEditor &start(std::chrono::milliseconds startUpWait = 0ms);
  /// Ends it and looks for what it has left.
  void finish();

  /// Waits until exactly these USB ports are listed, whatever built-in ports there are.
  testing::AssertionResult listed(const QStringList &names);
  /// Plugs in, waits for the port and reads the servo.
  void plugInAndRead(int adapter, const QString &name);
  testing::AssertionResult readOut();
  /// The user was told so often that the port in use is gone.
  int removalsTold() const;
  /// For half a second the process uses next to no processor time.
  void expectQuiet();
  /// The port is closed and forgotten, the user was told once, and the program goes on.
  void expectRemovalHandled();
  void expectSettings(int adapter, const std::vector<int> &settings);

  static const std::vector<int> factorySettings;
  static constexpr auto first = u"usbserial-ttyUSB0";
  static constexpr auto second = u"usbserial-ttyUSB1";

  std::unique_ptr<GuestEditor> editor;

 private:
  std::optional<Residue> before_;
};

/// The fields of registers 1 to 15, in their order.
const std::vector<const char *> &settingFields();

/// The names of serial ports' nodes in /dev, as the kernel has them now.
QStringList usbNodes();

}  // namespace tavril::vm
