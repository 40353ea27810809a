#include "platform/NotificationCenter.h"

#include <gtest/gtest.h>

namespace tavril {
namespace {

const QString name = QStringLiteral("PortCame");

TEST(NotificationCenter, TellsTheObserversOfTheNameInOrder) {
  NotificationCenter center;
  QString order;
  int a = 0;
  int b = 0;
  center.addObserver(&a, name, [&](const Notification &) { order += u'a'; });
  center.addObserver(&b, name, [&](const Notification &) { order += u'b'; });
  center.addObserver(&b, QStringLiteral("Other"), [&](const Notification &) { order += u'x'; });
  center.post({name, nullptr, {}});
  EXPECT_EQ(order, QStringLiteral("ab"));
}

TEST(NotificationCenter, CarriesSenderAndUserInformation) {
  NotificationCenter center;
  int observer = 0;
  Notification seen;
  center.addObserver(&observer, name, [&](const Notification &n) { seen = n; });
  center.post({name, &center, {{QStringLiteral("Ports"), std::any(7)}}});
  EXPECT_EQ(seen.sender, &center);
  EXPECT_EQ(std::any_cast<int>(seen.userInfo.value(QStringLiteral("Ports"))), 7);
}

TEST(NotificationCenter, ARemovedObserverHearsNothing) {
  NotificationCenter center;
  int observer = 0;
  int told = 0;
  center.addObserver(&observer, name, [&](const Notification &) { ++told; });
  center.removeObserver(&observer);
  center.post({name, nullptr, {}});
  EXPECT_EQ(told, 0);
}

TEST(NotificationCenter, AnObserverMayRemoveALaterOneWhileItIsCalled) {
  NotificationCenter center;
  int first = 0;
  int second = 0;
  int told = 0;
  center.addObserver(&first, name, [&](const Notification &) { center.removeObserver(&second); });
  center.addObserver(&second, name, [&](const Notification &) { ++told; });
  center.post({name, nullptr, {}});
  EXPECT_EQ(told, 0);
}

TEST(NotificationCenter, AnObserverMayRemoveItself) {
  NotificationCenter center;
  int observer = 0;
  int told = 0;
  center.addObserver(&observer, name, [&](const Notification &) {
    ++told;
    center.removeObserver(&observer);
  });
  center.post({name, nullptr, {}});
  center.post({name, nullptr, {}});
  EXPECT_EQ(told, 1);
}

}  // namespace
}  // namespace tavril
