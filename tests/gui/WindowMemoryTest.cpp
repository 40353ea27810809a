#include "look/WindowMemory.h"
#include "tests/support/MemoryPreferences.h"

#include <QGuiApplication>
#include <QScreen>
#include <QTest>

#include <gtest/gtest.h>

namespace tavril {
namespace {

const QString key = QString::fromUtf16(WindowMemory::key);

class WindowMemoryTest : public testing::Test {
 protected:
  /// What a window that comes up next looks like.
  struct Shown {
    explicit Shown(WindowMemoryTest &test, bool placesWindows = true)
        : memory(window, test.preferences, placesWindows), restored(memory.restore()) {
      window.show();
      EXPECT_TRUE(QTest::qWaitForWindowExposed(&window));
    }
    QWidget window;
    WindowMemory memory;
    bool restored;
  };

  /// A place that there is room for, a little off the upper left corner.
  QPoint corner(int dx, int dy) const {
    return QGuiApplication::primaryScreen()->availableGeometry().topLeft() + QPoint(dx, dy);
  }

  MemoryPreferences preferences;
};

TEST_F(WindowMemoryTest, TheFirstTimeThereIsNothingToGoBackTo) {
  Shown first(*this);
  EXPECT_FALSE(first.restored);
}

TEST_F(WindowMemoryTest, AWindowComesBackWhereAndAsLargeAsItWas) {
  {
    Shown first(*this);
    first.window.resize(400, 300);
    first.window.move(corner(70, 60));
    ASSERT_TRUE(QTest::qWaitFor([&] { return first.window.pos() == corner(70, 60); }));
    first.memory.keep();
  }
  Shown second(*this);
  EXPECT_TRUE(second.restored);
  EXPECT_TRUE(QTest::qWaitFor([&] { return second.window.pos() == corner(70, 60); }));
  EXPECT_EQ(second.window.size(), QSize(400, 300));
}

TEST_F(WindowMemoryTest, AWindowThatWasClosedIsKeptAsItWasLast) {
  {
    Shown first(*this);
    first.window.resize(410, 310);
    ASSERT_TRUE(QTest::qWaitFor([&] { return first.window.size() == QSize(410, 310); }));
    first.window.close();
    first.memory.keep();
  }
  Shown second(*this);
  EXPECT_EQ(second.window.size(), QSize(410, 310));
}

TEST_F(WindowMemoryTest, AMaximizedWindowComesBackMaximizedAndKnowsItsOldSize) {
  {
    Shown first(*this);
    first.window.resize(420, 320);
    ASSERT_TRUE(QTest::qWaitFor([&] { return first.window.size() == QSize(420, 320); }));
    first.window.showMaximized();
    ASSERT_TRUE(QTest::qWaitFor([&] { return first.window.width() > 420; }));
    first.memory.keep();
  }
  EXPECT_TRUE(preferences.values[key].startsWith(QStringLiteral("420x320")))
      << preferences.values[key].toStdString();
  Shown second(*this);
  EXPECT_TRUE(second.window.isMaximized());
  second.window.showNormal();
  EXPECT_TRUE(QTest::qWaitFor([&] { return second.window.size() == QSize(420, 320); }));
}

TEST_F(WindowMemoryTest, WhereTheDesktopPlacesWindowsOnlyTheSizeIsKept) {
  {
    Shown first(*this, false);
    first.window.resize(430, 330);
    ASSERT_TRUE(QTest::qWaitFor([&] { return first.window.size() == QSize(430, 330); }));
    first.memory.keep();
  }
  EXPECT_EQ(preferences.values[key], QStringLiteral("430x330"));
}

TEST_F(WindowMemoryTest, APlaceKeptElsewhereIsNotUsedWhereTheDesktopPlacesWindows) {
  preferences.values[key] = QStringLiteral("430x330+90+80");
  QWidget window;
  const QPoint before = window.pos();
  EXPECT_TRUE(WindowMemory(window, preferences, false).restore());
  EXPECT_EQ(window.pos(), before);
  EXPECT_EQ(window.size(), QSize(430, 330));
}

TEST_F(WindowMemoryTest, AWindowThatWouldBeOffTheScreenComesBackOnIt) {
  preferences.values[key] = QStringLiteral("300x200+90000-90000");
  Shown shown(*this);
  const QRect screen = QGuiApplication::primaryScreen()->availableGeometry();
  EXPECT_TRUE(screen.contains(QRect(shown.window.pos(), shown.window.size())));
}

TEST_F(WindowMemoryTest, WhatIsDamagedCountsAsNothing) {
  preferences.values[key] = QStringLiteral("large");
  EXPECT_FALSE(Shown(*this).restored);
}

}  // namespace
}  // namespace tavril
