#include "platform/linux/QtMainQueue.h"
#include "platform/linux/QtModalAlert.h"
#include "platform/linux/QtTimers.h"
#include "tests/support/ActiveWindow.h"
#include "tests/support/WaitFor.h"

#include <QApplication>
#include <QDialogButtonBox>
#include <QIcon>
#include <QLabel>
#include <QMessageBox>
#include <QPixmap>
#include <QProxyStyle>
#include <QPushButton>
#include <QTest>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace tavril {
namespace {

using namespace std::chrono_literals;
using testing::ElementsAre;

QMessageBox *shownBox() {
  return qobject_cast<QMessageBox *>(QApplication::activeModalWidget());
}

QAbstractButton *button(const QString &title) {
  for (QAbstractButton *button : shownBox()->buttons()) {
    if (button->text() == title) return button;
  }
  return nullptr;
}

/// A style that lays out a dialog's buttons as a given desktop does.
class ButtonLayoutStyle final : public QProxyStyle {
 public:
  explicit ButtonLayoutStyle(QDialogButtonBox::ButtonLayout layout) : layout_(layout) {}

  int styleHint(StyleHint hint, const QStyleOption *option, const QWidget *widget,
                QStyleHintReturn *data) const override {
    return hint == SH_DialogButtonLayout ? layout_ : QProxyStyle::styleHint(hint, option, widget, data);
  }

 private:
  QDialogButtonBox::ButtonLayout layout_;
};

class QtModalAlertTest : public testing::Test {
 protected:
  /// Runs the function from the event loop of the alert, `time` after it began.
  template <typename Function>
  void whileUp(Function function, std::chrono::milliseconds time = 0ms) {
    QTimer::singleShot(time, Qt::PreciseTimer, [function] {
      ASSERT_NE(shownBox(), nullptr);
      function();
    });
  }

  QtMainQueue queue_;
  QtTimers timers_{queue_};
  QtModalAlert alert_{queue_};
  const AlertContent question_{QStringLiteral("Reset?"),
                               QStringLiteral("All settings are lost."),
                               {QStringLiteral("Reset"), QStringLiteral("Later"), QStringLiteral("Cancel")}};
};

TEST_F(QtModalAlertTest, AnswersWithTheButtonThatWasClicked) {
  for (int index = 0; index < 3; ++index) {
    whileUp([&] { QTest::mouseClick(button(question_.buttons[index]), Qt::LeftButton); });
    EXPECT_EQ(alert_.run(question_), ModalAlert::firstButton + index);
  }
}

TEST_F(QtModalAlertTest, ShowsItsTitleAndItsTexts) {
  whileUp([&] {
    const QMessageBox *box = shownBox();
    EXPECT_EQ(box->windowTitle(), QStringLiteral("Tavril"));
    EXPECT_EQ(box->text(), question_.messageText);
    EXPECT_EQ(box->informativeText(), question_.informativeText);
    EXPECT_EQ(box->windowModality(), Qt::ApplicationModal);
    button(QStringLiteral("Later"))->click();
  });
  EXPECT_EQ(alert_.run(question_), ModalAlert::secondButton);
}

TEST_F(QtModalAlertTest, IsAsWideAsASentenceIsComfortablyRead) {
  whileUp([&] {
    EXPECT_GE(shownBox()->width(), 360);
    button(QStringLiteral("Later"))->click();
  });
  EXPECT_EQ(alert_.run(question_), ModalAlert::secondButton);
}

TEST_F(QtModalAlertTest, ItsIconTakesNoMoreRoomThanAnIconWhicheverTextIsMissing) {
  QPixmap picture(48, 48);
  picture.fill(Qt::red);
  QApplication::setWindowIcon(QIcon(picture));
  const QString text = QStringLiteral("The servo was set up.");
  for (const auto &content :
       {AlertContent{text, {}, {}}, AlertContent{{}, text, {}}, AlertContent{text, text, {}}}) {
    whileUp([&] {
      const QLabel *icon = nullptr;
      int leftmostText = QWIDGETSIZE_MAX;
      for (const QLabel *label : shownBox()->findChildren<QLabel *>()) {
        if (!label->pixmap(Qt::ReturnByValue).isNull()) {
          icon = label;
        } else if (label->text() == text) {
          leftmostText = qMin(leftmostText, label->x());
          EXPECT_GE(label->width(), 360);
        }
      }
      ASSERT_NE(icon, nullptr);
      EXPECT_LT(icon->width(), 100);
      EXPECT_LT(leftmostText, icon->x() + 100);
      shownBox()->close();
    });
    alert_.run(content);
  }
  QApplication::setWindowIcon({});
}

TEST_F(QtModalAlertTest, SetsOffItsMessageOnlyWhereThereIsATextBelowIt) {
  const auto weightOf = [](const QString &text) {
    for (const QLabel *label : shownBox()->findChildren<QLabel *>()) {
      if (label->text() == text) return label->font().weight();
    }
    return QFont::Black;
  };
  whileUp([&] {
    EXPECT_EQ(weightOf(question_.messageText), QFont::DemiBold);
    EXPECT_EQ(weightOf(question_.informativeText), QFont::Normal);
    shownBox()->close();
  });
  alert_.run(question_);
  whileUp([&] {
    EXPECT_EQ(weightOf(question_.messageText), QFont::Normal);
    shownBox()->close();
  });
  alert_.run({question_.messageText, {}, {}});
}

TEST_F(QtModalAlertTest, KeepsTheOrderOfItsButtonsOnEveryDesktop) {
  for (const auto layout :
       {QDialogButtonBox::WinLayout, QDialogButtonBox::KdeLayout, QDialogButtonBox::GnomeLayout}) {
    QApplication::setStyle(new ButtonLayoutStyle(layout));
    whileUp([&] {
      EXPECT_LT(button(QStringLiteral("Reset"))->x(), button(QStringLiteral("Later"))->x()) << layout;
      EXPECT_LT(button(QStringLiteral("Later"))->x(), button(QStringLiteral("Cancel"))->x()) << layout;
      shownBox()->close();
    });
    alert_.run(question_);
  }
}

TEST_F(QtModalAlertTest, HasAnOkButtonWhenNoneIsNamed) {
  whileUp([] {
    EXPECT_EQ(shownBox()->buttons().size(), 1);
    button(QStringLiteral("OK"))->click();
  });
  EXPECT_EQ(alert_.run({QStringLiteral("Error"), {}, {}}), ModalAlert::firstButton);
}

TEST_F(QtModalAlertTest, TakesReturnForTheFirstButtonAndEscapeForTheLast) {
  whileUp([] { QTest::keyClick(shownBox(), Qt::Key_Return); });
  EXPECT_EQ(alert_.run(question_), ModalAlert::firstButton);
  whileUp([] { QTest::keyClick(shownBox(), Qt::Key_Escape); });
  EXPECT_EQ(alert_.run(question_), ModalAlert::firstButton + 2);
  whileUp([] { shownBox()->close(); });
  EXPECT_EQ(alert_.run(question_), ModalAlert::firstButton + 2);
}

TEST_F(QtModalAlertTest, ShowsMarkupAsItStands) {
  const QString markup = QStringLiteral("<b>bold</b> <a href=\"http://x/\">link</a>");
  whileUp([&] {
    int texts = 0;
    for (const QLabel *label : shownBox()->findChildren<QLabel *>()) {
      if (label->text() != markup) continue;
      ++texts;
      EXPECT_EQ(label->textFormat(), Qt::PlainText);
      EXPECT_FALSE(label->openExternalLinks());
      EXPECT_FALSE(label->textInteractionFlags() & Qt::LinksAccessibleByMouse);
    }
    EXPECT_EQ(texts, 2);
    EXPECT_NE(button(QStringLiteral("Save && quit")), nullptr);
    shownBox()->close();
  });
  EXPECT_EQ(alert_.run({markup, markup, {QStringLiteral("Save & quit")}}), ModalAlert::firstButton);
}

TEST_F(QtModalAlertTest, NoJobAndNoTimerRunsWhileItIsUpAndAllRunInOrderAfterwards) {
  std::vector<int> ran;
  queue_.async([&ran] { ran.push_back(1); });
  const auto tick = timers_.repeating(2ms, [&ran] { ran.push_back(2); });
  whileUp([&] { queue_.async([&ran] { ran.push_back(3); }); }, 10ms);
  whileUp(
      [&] {
        EXPECT_TRUE(ran.empty());
        shownBox()->close();
      },
      20ms);
  alert_.run(question_);
  EXPECT_TRUE(ran.empty());
  EXPECT_FALSE(queue_.isHeld());
  EXPECT_TRUE(waitFor([&ran] { return ran.size() >= 3; }));
  tick->stop();
  ran.resize(3);
  EXPECT_THAT(ran, ElementsAre(1, 2, 3));
}

TEST_F(QtModalAlertTest, AJobThatShowsAnAlertKeepsTheJobsBehindItWaiting) {
  std::vector<int> ran;
  queue_.async([&] {
    whileUp(
        [&] {
          EXPECT_TRUE(ran.empty());
          shownBox()->close();
        },
        10ms);
    alert_.run(question_);
    ran.push_back(1);
  });
  queue_.async([&ran] { ran.push_back(2); });
  timers_.oneShot(1ms, [&ran] { ran.push_back(3); });
  EXPECT_TRUE(waitFor([&ran] { return ran.size() == 3; }));
  EXPECT_THAT(ran, ElementsAre(1, 2, 3));
}

TEST_F(QtModalAlertTest, AnAlertOverAnAlertHoldsTheQueueUntilBothAreAnswered) {
  bool ran = false;
  queue_.async([&ran] { ran = true; });
  whileUp([&] {
    whileUp([] { button(QStringLiteral("Inner"))->click(); });
    EXPECT_EQ(alert_.run({QStringLiteral("Second"), {}, {QStringLiteral("No"), QStringLiteral("Inner")}}),
              ModalAlert::secondButton);
    EXPECT_TRUE(queue_.isHeld());
    whileUp(
        [&] {
          EXPECT_FALSE(ran);
          button(QStringLiteral("Reset"))->click();
        },
        5ms);
  });
  EXPECT_EQ(alert_.run(question_), ModalAlert::firstButton);
  EXPECT_FALSE(queue_.isHeld());
  EXPECT_TRUE(waitFor([&ran] { return ran; }));
}

TEST_F(QtModalAlertTest, StandsOverTheActiveWindowAndSurvivesItsEnd) {
  auto window = std::make_unique<QWidget>();
  window->show();
  makeActive(window.get());
  ASSERT_EQ(QApplication::activeWindow(), window.get());
  whileUp([&] {
    EXPECT_EQ(shownBox()->parentWidget(), window.get());
    window.reset();
  });
  EXPECT_EQ(alert_.run(question_), ModalAlert::firstButton + 2);
  EXPECT_FALSE(queue_.isHeld());
}

}  // namespace
}  // namespace tavril
