#include "look/SideWindow.h"
#include "tests/support/KeyTable.h"
#include "tests/support/WaitFor.h"

#include <QDialog>
#include <QTest>

#include <gtest/gtest.h>

#include <algorithm>

namespace tavril {
namespace {

template <typename Kind>
class Window final : public SideWindow<Kind> {
 public:
  Window(const StringTable &strings, NotificationCenter &notifications, QWidget *parent)
      : SideWindow<Kind>(strings, notifications, parent, Qt::Window) {
    setTexts();
  }
  void setTexts() override { this->setWindowTitle(this->strings_.text(u"title")); }
};

template <typename Kind>
class SideWindowTest : public testing::Test {
 protected:
  Window<Kind> *open() {
    return openOnce<Window<Kind>>(parent_,
                                  [this] { return new Window<Kind>(strings_, notifications_, &parent_); });
  }
  auto countOfWindows() const {
    return std::ranges::count_if(parent_.children(),
                                 [](QObject *child) { return dynamic_cast<Window<Kind> *>(child); });
  }

  KeyTable strings_;
  NotificationCenter notifications_;
  QWidget parent_;
};

using Kinds = testing::Types<QWidget, QDialog>;
TYPED_TEST_SUITE(SideWindowTest, Kinds);

TYPED_TEST(SideWindowTest, IsThereOnceAndComesBackWhenItWasMinimized) {
  auto *window = this->open();
  window->setWindowState(Qt::WindowMinimized);
  EXPECT_EQ(this->open(), window);
  EXPECT_EQ(this->countOfWindows(), 1);
  EXPECT_FALSE(window->isMinimized());
  EXPECT_TRUE(QTest::qWaitForWindowActive(window));
}

TYPED_TEST(SideWindowTest, IsClosedAndDeletedByEscapeAndByNoOtherKey) {
  auto *window = this->open();
  QTest::keyClick(window, Qt::Key_A);
  EXPECT_TRUE(window->isVisible());
  QTest::keyClick(window, Qt::Key_Escape);
  EXPECT_TRUE(waitFor([this] { return this->countOfWindows() == 0; }));
}

TYPED_TEST(SideWindowTest, HasItsTextsInTheNewLanguageUntilItIsClosed) {
  auto *window = this->open();
  EXPECT_EQ(window->windowTitle(), QStringLiteral("[title]"));
  this->strings_.texts.insert(QStringLiteral("title"), QStringLiteral("Titel"));
  const Notification change{QString::fromUtf16(LanguageDidChangeNotification), nullptr, {}};
  this->notifications_.post(change);
  EXPECT_EQ(window->windowTitle(), QStringLiteral("Titel"));
  delete window;
  this->notifications_.post(change);
}

TYPED_TEST(SideWindowTest, IsNotOpenedWhereNoneIsMade) {
  const auto *window =
      openOnce<Window<TypeParam>>(this->parent_, [] { return static_cast<Window<TypeParam> *>(nullptr); });
  EXPECT_EQ(window, nullptr);
}

}  // namespace
}  // namespace tavril
