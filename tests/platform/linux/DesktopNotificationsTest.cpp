#include "platform/linux/DesktopNotifications.h"
#include "tests/support/SessionBus.h"
#include "tests/support/WaitFor.h"

#include <QVariantMap>

#include <gtest/gtest.h>

namespace tavril {
namespace {

using namespace Qt::StringLiterals;

using Center = UserNotificationCenter;

class NotedDelegate : public UserNotificationCenterDelegate {
 public:
  void didDeliverNotification(Center &center, const UserNotification &notification) override {
    told = &center;
    delivered.push_back(notification);
  }
  bool shouldPresentNotification(Center &, const UserNotification &notification) override {
    asked += notification.title;
    return answer;
  }

  bool answer = true;
  Center *told = nullptr;
  QStringList asked;
  std::vector<UserNotification> delivered;
};

UserNotification silent(const QString &title, const QString &text = {}) {
  return {title, text, std::nullopt};
}

class DesktopNotificationsTest : public testing::Test {
 protected:
  /// Delivers and waits until the service has taken it.
  UserNotification deliver(DesktopNotifications &center, const UserNotification &notification) {
    const auto delegate = std::make_shared<NotedDelegate>();
    center.setDelegate(delegate);
    center.deliver(notification);
    EXPECT_TRUE(waitFor([&] { return !delegate->delivered.empty(); }));
    return delegate->delivered.empty() ? UserNotification() : delegate->delivered.front();
  }

  SessionBus bus_;
};

TEST_F(DesktopNotificationsTest, TitleAndTextReachTheService) {
  bus_.startNotificationService();
  DesktopNotifications center(bus_.connection());
  deliver(center, {.title = u"Serial Port Connected"_s,
                   .informativeText = u"ttyUSB0 was connected."_s,
                   .soundName = u"default"_s});
  const auto calls = bus_.callsOf(u"Notify"_s);
  ASSERT_EQ(calls.size(), 1U);
  const QVariantList &call = calls.front();
  ASSERT_EQ(call.size(), 8);
  EXPECT_EQ(call[0].toString(), u"Tavril");
  EXPECT_EQ(call[1].toUInt(), 0U);
  EXPECT_EQ(call[2].toString(), u"tavril");
  EXPECT_EQ(call[3].toString(), u"Serial Port Connected");
  EXPECT_EQ(call[4].toString(), u"ttyUSB0 was connected.");
  EXPECT_EQ(call[5].toStringList(), QStringList());
  EXPECT_EQ(call[6].toMap(), QVariantMap());
  EXPECT_EQ(call[7].toInt(), -1);
}

TEST_F(DesktopNotificationsTest, TextIsEscapedForAServiceThatReadsMarkup) {
  bus_.startNotificationService(u"body body-markup"_s);
  DesktopNotifications center(bus_.connection());
  deliver(center, silent(u"<A> & B"_s, u"<b>1</b> & 2"_s));
  const auto calls = bus_.callsOf(u"Notify"_s);
  ASSERT_EQ(calls.size(), 1U);
  EXPECT_EQ(calls.front()[3].toString(), u"<A> & B");
  EXPECT_EQ(calls.front()[4].toString(), u"&lt;b&gt;1&lt;/b&gt; &amp; 2");
}

TEST_F(DesktopNotificationsTest, TextIsLeftAloneForAServiceThatReadsPlainText) {
  bus_.startNotificationService(u"body"_s);
  DesktopNotifications center(bus_.connection());
  deliver(center, silent(u"A"_s, u"<b>1</b> & 2"_s));
  const auto calls = bus_.callsOf(u"Notify"_s);
  ASSERT_EQ(calls.size(), 1U);
  EXPECT_EQ(calls.front()[4].toString(), u"<b>1</b> & 2");
}

TEST_F(DesktopNotificationsTest, WithoutASoundNameItIsSilent) {
  bus_.startNotificationService();
  DesktopNotifications center(bus_.connection());
  deliver(center, silent(u"A"_s));
  const auto calls = bus_.callsOf(u"Notify"_s);
  ASSERT_EQ(calls.size(), 1U);
  EXPECT_EQ(calls.front()[6].toMap(), QVariantMap({{u"suppress-sound"_s, true}}));
}

TEST_F(DesktopNotificationsTest, TheDelegateIsToldTheIdentifierOfEach) {
  bus_.startNotificationService();
  DesktopNotifications center(bus_.connection());
  const auto delegate = std::make_shared<NotedDelegate>();
  center.setDelegate(delegate);
  center.deliver(silent(u"A"_s, u"a"_s));
  center.deliver(silent(u"B"_s));
  EXPECT_TRUE(delegate->delivered.empty());
  ASSERT_TRUE(waitFor([&] { return delegate->delivered.size() == 2; }));
  EXPECT_EQ(delegate->told, &center);
  EXPECT_EQ(delegate->asked, QStringList({u"A"_s, u"B"_s}));
  EXPECT_EQ(delegate->delivered[0].title, u"A");
  EXPECT_EQ(delegate->delivered[0].informativeText, u"a");
  EXPECT_EQ(delegate->delivered[0].identifier, 1U);
  EXPECT_EQ(delegate->delivered[1].title, u"B");
  EXPECT_EQ(delegate->delivered[1].identifier, 2U);
}

TEST_F(DesktopNotificationsTest, ADelegateThatAnswersNoKeepsItBack) {
  bus_.startNotificationService();
  DesktopNotifications center(bus_.connection());
  const auto delegate = std::make_shared<NotedDelegate>();
  center.setDelegate(delegate);
  delegate->answer = false;
  center.deliver(silent(u"A"_s));
  delegate->answer = true;
  center.deliver(silent(u"B"_s));
  ASSERT_TRUE(waitFor([&] { return !delegate->delivered.empty(); }));
  EXPECT_EQ(delegate->asked, QStringList({u"A"_s, u"B"_s}));
  const auto calls = bus_.callsOf(u"Notify"_s);
  ASSERT_EQ(calls.size(), 1U);
  EXPECT_EQ(calls.front()[3].toString(), u"B");
}

TEST_F(DesktopNotificationsTest, WithoutADelegateItIsDelivered) {
  bus_.startNotificationService();
  DesktopNotifications center(bus_.connection());
  center.deliver(silent(u"A"_s));
  EXPECT_TRUE(waitFor([&] { return bus_.callsOf(u"Notify"_s).size() == 1; }));
}

TEST_F(DesktopNotificationsTest, ADelegateThatIsGoneIsNotTold) {
  bus_.startNotificationService();
  DesktopNotifications center(bus_.connection());
  auto delegate = std::make_shared<NotedDelegate>();
  const std::weak_ptr<NotedDelegate> seen = delegate;
  center.setDelegate(delegate);
  center.deliver(silent(u"A"_s));
  delegate.reset();
  EXPECT_TRUE(seen.expired());
  // The answer to the first comes before that to the second.
  DesktopNotifications other(bus_.connection());
  EXPECT_EQ(deliver(other, silent(u"B"_s)).identifier, 2U);
}

TEST_F(DesktopNotificationsTest, RemovingClosesTheNotification) {
  bus_.startNotificationService();
  DesktopNotifications center(bus_.connection());
  deliver(center, silent(u"A"_s));
  center.removeDeliveredNotification(deliver(center, silent(u"B"_s)));
  ASSERT_TRUE(waitFor([&] { return !bus_.callsOf(u"CloseNotification"_s).empty(); }));
  const auto calls = bus_.callsOf(u"CloseNotification"_s);
  ASSERT_EQ(calls.size(), 1U);
  ASSERT_EQ(calls.front().size(), 1);
  EXPECT_EQ(calls.front().front().toUInt(), 2U);
}

TEST_F(DesktopNotificationsTest, WhatWasNotDeliveredIsNotClosed) {
  bus_.startNotificationService();
  DesktopNotifications center(bus_.connection());
  center.removeDeliveredNotification(silent(u"A"_s));
  deliver(center, silent(u"B"_s));
  EXPECT_TRUE(bus_.callsOf(u"CloseNotification"_s).empty());
}

TEST_F(DesktopNotificationsTest, AnAnswerAfterItsEndIsDropped) {
  bus_.startNotificationService();
  const auto delegate = std::make_shared<NotedDelegate>();
  {
    DesktopNotifications center(bus_.connection());
    center.setDelegate(delegate);
    center.deliver(silent(u"A"_s));
  }
  DesktopNotifications other(bus_.connection());
  EXPECT_EQ(deliver(other, silent(u"B"_s)).identifier, 1U);
  EXPECT_TRUE(delegate->delivered.empty());
}

TEST_F(DesktopNotificationsTest, NoServiceIsStartedOnlyToCloseANotification) {
  bus_.offerNotificationService();
  DesktopNotifications center(bus_.connection());
  UserNotification delivered = silent(u"A"_s);
  delivered.identifier = 1;
  center.removeDeliveredNotification(delivered);
  deliver(center, silent(u"B"_s));
  EXPECT_TRUE(bus_.callsOf(u"CloseNotification"_s).empty());
}

TEST_F(DesktopNotificationsTest, ANotificationThatTheServiceRefusesIsNotTold) {
  bus_.startNotificationService();
  bus_.replaceMethod(
      u"Notify"_s, u"susssasa{sv}i"_s, u"u"_s,
      u"if args[3] == 'A': raise dbus.exceptions.DBusException('no', name='test.No')\nret = 7"_s);
  DesktopNotifications center(bus_.connection());
  const auto delegate = std::make_shared<NotedDelegate>();
  center.setDelegate(delegate);
  center.deliver(silent(u"A"_s));
  center.deliver(silent(u"B"_s));
  ASSERT_TRUE(waitFor([&] { return !delegate->delivered.empty(); }));
  EXPECT_EQ(delegate->delivered.front().title, u"B");
  EXPECT_EQ(delegate->delivered.front().identifier, 7U);
  EXPECT_EQ(bus_.callsOf(u"Notify"_s).size(), 2U);
}

TEST_F(DesktopNotificationsTest, AServiceThatDoesNotTellItsCapabilitiesIsSentNothing) {
  bus_.startNotificationService();
  bus_.replaceMethod(u"GetCapabilities"_s, QString(), u"as"_s,
                     u"raise dbus.exceptions.DBusException('no', name='test.No')"_s);
  DesktopNotifications center(bus_.connection());
  center.deliver(silent(u"A"_s));
  ASSERT_TRUE(waitFor([&] { return bus_.callsOf(u"GetCapabilities"_s).size() == 1; }));
  bus_.replaceMethod(u"GetCapabilities"_s, QString(), u"as"_s, u"ret = ['body']"_s);
  deliver(center, silent(u"B"_s));
  const auto calls = bus_.callsOf(u"Notify"_s);
  ASSERT_EQ(calls.size(), 1U);
  EXPECT_EQ(calls.front()[3].toString(), u"B");
}

TEST_F(DesktopNotificationsTest, AServiceThatRunsIsAvailable) {
  DesktopNotifications center(bus_.connection());
  EXPECT_FALSE(center.isAvailable());
  bus_.startNotificationService();
  EXPECT_TRUE(center.isAvailable());
}

TEST_F(DesktopNotificationsTest, AServiceThatTheBusCanStartIsAvailable) {
  bus_.offerNotificationService();
  DesktopNotifications center(bus_.connection());
  EXPECT_TRUE(center.isAvailable());
  EXPECT_EQ(deliver(center, silent(u"A"_s)).identifier, 1U);
}

TEST_F(DesktopNotificationsTest, NothingHappensWithoutAService) {
  DesktopNotifications center(bus_.connection());
  const auto delegate = std::make_shared<NotedDelegate>();
  center.setDelegate(delegate);
  center.deliver(silent(u"A"_s));
  UserNotification delivered = silent(u"B"_s);
  delivered.identifier = 1;
  center.removeDeliveredNotification(delivered);
  bus_.startNotificationService();
  EXPECT_EQ(deliver(center, silent(u"C"_s)).identifier, 1U);
  EXPECT_TRUE(delegate->delivered.empty());
  EXPECT_TRUE(bus_.callsOf(u"CloseNotification"_s).empty());
}

TEST_F(DesktopNotificationsTest, NothingHappensWithoutABus) {
  const QDBusConnection none = QDBusConnection::connectToBus(u"unix:path=/nowhere/bus"_s, u"no bus at all"_s);
  DesktopNotifications center(none);
  EXPECT_FALSE(center.isAvailable());
  const auto delegate = std::make_shared<NotedDelegate>();
  center.setDelegate(delegate);
  center.deliver(silent(u"A"_s));
  UserNotification delivered = silent(u"B"_s);
  delivered.identifier = 1;
  center.removeDeliveredNotification(delivered);
  // What is delivered on a real bus afterwards is told after all that could still have come of this.
  bus_.startNotificationService();
  DesktopNotifications other(bus_.connection());
  deliver(other, silent(u"C"_s));
  EXPECT_EQ(delegate->asked, QStringList({u"A"_s}));
  EXPECT_TRUE(delegate->delivered.empty());
}

TEST_F(DesktopNotificationsTest, NothingHappensOnceTheBusIsGone) {
  bus_.startNotificationService();
  DesktopNotifications center(bus_.connection());
  EXPECT_TRUE(center.isAvailable());
  const auto delegate = std::make_shared<NotedDelegate>();
  center.setDelegate(delegate);
  bus_.stop();
  center.deliver(silent(u"A"_s));
  EXPECT_TRUE(waitFor([&] { return !bus_.connection().isConnected(); }));
  EXPECT_FALSE(center.isAvailable());
  center.deliver(silent(u"B"_s));
  EXPECT_TRUE(delegate->delivered.empty());
}

}  // namespace
}  // namespace tavril
