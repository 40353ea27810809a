#include "platform/linux/DesktopNotifications.h"
#include "tests/app/LinkBench.h"
#include "tests/support/SessionBus.h"
#include "tests/support/WaitFor.h"

namespace tavril {
namespace {

using namespace std::chrono_literals;
using PortNotifications = LinkBench;

TEST_F(PortNotifications, AServiceSeesAPortComeAndGoAndEachNotificationWithdrawnThreeSecondsLater) {
  SessionBus bus;
  bus.startNotificationService();
  DesktopNotifications real(bus.connection());
  desktop.userNotifications = &real;
  strings.texts["Serial Port Connected"] = "Connected";
  strings.texts["Serial Port %@ was disconnected from your Mac."] = "Port %@ went.";
  launch();

  bench.devices.plugIn("usbserial-ttyUSB0", "/dev/ttyUSB0");
  bench.mainQueue.runAll();
  ASSERT_TRUE(waitFor([&] { return timers.running() == 1; })) << "the service has not taken it";
  bench.devices.pullOut("/dev/ttyUSB0");
  bench.mainQueue.runAll();
  ASSERT_TRUE(waitFor([&] { return timers.running() == 2; }));

  const auto shown = bus.callsOf(QStringLiteral("Notify"));
  ASSERT_EQ(shown.size(), 2u);
  EXPECT_EQ(shown[0].at(3).toString(), "Connected");
  EXPECT_EQ(shown[1].at(4).toString(), "Port usbserial-ttyUSB0 went.");
  EXPECT_TRUE(bus.callsOf(QStringLiteral("CloseNotification")).empty());
  timers.advance(2999ms);
  EXPECT_EQ(timers.running(), 2u);
  timers.advance(1ms);
  ASSERT_TRUE(waitFor([&] { return bus.callsOf(QStringLiteral("CloseNotification")).size() == 2; }));
}

}  // namespace
}  // namespace tavril
