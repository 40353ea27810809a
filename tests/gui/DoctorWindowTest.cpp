#include "editor/windows/DoctorRow.h"
#include "editor/windows/DoctorWindow.h"
#include "tests/gui/GuiBench.h"

#include <QAction>
#include <QClipboard>
#include <QLabel>
#include <QPushButton>

#include <future>

namespace tavril {
namespace {

using doctor::CheckId;
using doctor::State;

class DoctorWindowTest : public GuiBench {
 protected:
  DoctorWindow &open() {
    shortcut(Qt::Key_D, Qt::ControlModifier | Qt::ShiftModifier);
    doctor_ = window->findChild<DoctorWindow *>();
    EXPECT_NE(doctor_, nullptr);
    return *doctor_;
  }
  /// From the menu, for the keys belong to the window in front.
  void openFromMenu() {
    for (QAction *action : window->findChildren<QAction *>()) {
      if (action->text() != strings.text(u"connection_doctor")) continue;
      action->trigger();
      return;
    }
    FAIL() << "no menu item opens the doctor";
  }
  template <typename Widget>
  Widget *part(const char *name) {
    auto *found = doctor_->findChild<Widget *>(QString::fromLatin1(name));
    EXPECT_NE(found, nullptr) << name;
    return found;
  }
  void untilDone() {
    ASSERT_TRUE(waitFor([this] { return part<QWidget>("again")->isEnabled(); }));
  }
  DoctorRow *row(CheckId check) {
    return doctor_->findChild<DoctorRow *>(QStringLiteral("row_") + nameOf(check));
  }
  State stateOf(CheckId check) {
    const auto &result = row(check)->result();
    EXPECT_TRUE(result.has_value()) << nameOf(check).toStdString();
    return result ? result->state : State::Failed;
  }
  QString outcome() { return part<QLabel>("outcome")->text(); }

  QPointer<DoctorWindow> doctor_;
};

TEST_F(DoctorWindowTest, ExaminesThePortThatWouldBeOpenedAndSaysThatAllIsWell) {
  open();
  untilDone();
  EXPECT_EQ(doctor_->windowTitle(), QStringLiteral("Connection Doctor"));
  EXPECT_EQ(stateOf(CheckId::Servo), State::Passed);
  EXPECT_EQ(outcome(), strings.text(u"doctor_all_well"));
  EXPECT_EQ(row(CheckId::Node)->result()->values, QStringList(servo.path()));
  // Nothing of it went over the program's own link.
  EXPECT_EQ(application->serialPort(), nullptr);
}

TEST_F(DoctorWindowTest, FillsInWhileTheChecksAreMade) {
  QStringList states;
  terminal.atCall = [&](Call call) {
    if (call == Call::Write) {
      mainQueue.sync([&] {
        states = {row(CheckId::Opening)->accessibleName(), row(CheckId::Reply)->accessibleName(),
                  row(CheckId::Servo)->accessibleName()};
      });
    }
  };
  open();
  untilDone();
  EXPECT_EQ(states, (QStringList{QStringLiteral("Opening the port: OK"), QStringLiteral("Reply: Checking…"),
                                 QStringLiteral("Exactly one servo: Waiting")}));
}

TEST_F(DoctorWindowTest, CopiesTheCommandThatHelps) {
  DeviceNode &node = machine.node(servo.path());
  node.mayUse = false;
  node.group = QStringLiteral("dialout");
  open();
  untilDone();
  EXPECT_EQ(outcome(), strings.text(u"doctor_trouble"));
  auto *copy = part<QPushButton>("copy_permission");
  EXPECT_TRUE(copy->isVisible());
  EXPECT_FALSE(part<QPushButton>("copy_servo")->isVisible());
  copy->click();
  EXPECT_EQ(QApplication::clipboard()->text(), QStringLiteral("sudo usermod -aG dialout anna"));
}

TEST_F(DoctorWindowTest, ChecksAgainWhenItIsAskedTo) {
  servo.withOptions(
      [](simulator::Options &options) { options.servos = simulator::Options::Servos::Several; });
  open();
  untilDone();
  EXPECT_EQ(stateOf(CheckId::Servo), State::Failed);
  servo.withOptions([](simulator::Options &options) { options.servos = simulator::Options::Servos::One; });
  part<QPushButton>("again")->click();
  EXPECT_FALSE(part<QWidget>("again")->isEnabled());
  EXPECT_FALSE(row(CheckId::Servo)->result().has_value());
  untilDone();
  EXPECT_EQ(stateOf(CheckId::Servo), State::Passed);
}

TEST_F(DoctorWindowTest, LeavesTheProgramsOwnLinkAlone) {
  connectToServo();
  const int frames = servo.framesSeen();
  const int opened = terminal.count(Call::Open);
  open();
  untilDone();
  EXPECT_EQ(row(CheckId::Opening)->result()->finding, QStringLiteral("doctor_opening_own"));
  EXPECT_EQ(stateOf(CheckId::Servo), State::Passed);
  EXPECT_EQ(servo.framesSeen(), frames);
  EXPECT_EQ(terminal.count(Call::Open), opened);
}

TEST_F(DoctorWindowTest, IsOfferedWhereNobodyAnswersBesideTheButtonThatGivesUp) {
  servo.withOptions([](simulator::Options &options) { options.mute = true; });
  application->serialFormat();
  state.ObjectDictionaryArray.element(u"ContrainerView_WaitView").setHidden(false);
  EXPECT_FALSE(find<QWidget>("doctor")->isVisible());
  for (int second = 0; second < 30; ++second) controller().ConnectTimeout();
  EXPECT_EQ(textOf("WaitContent"), strings.text(u"Please_check_device_is_ready"));
  EXPECT_TRUE(find<QWidget>("CloseButton")->isVisible());
  ASSERT_TRUE(find<QWidget>("doctor")->isVisible());
  press("doctor");
  // The panel stays, with all that it offers.
  EXPECT_TRUE(find<QWidget>("ContrainerView_WaitView")->isVisible());
  doctor_ = window->findChild<DoctorWindow *>();
  ASSERT_NE(doctor_, nullptr);
  untilDone();
  EXPECT_EQ(row(CheckId::Reply)->result()->finding, QStringLiteral("doctor_reply_none_yet"));
  press("CloseButton");
  EXPECT_FALSE(find<QWidget>("doctor")->isVisible());
}

TEST_F(DoctorWindowTest, LetsGoOfThePortWhenTheLinkNeedsIt) {
  servo.withOptions([](simulator::Options &options) { options.mute = true; });
  open();
  ASSERT_TRUE(waitFor([this] { return terminal.count(Call::Write) > 0; }));
  doctor_->stop();
  EXPECT_EQ(terminal.closed().size(), 1U);
  EXPECT_FALSE(row(CheckId::Servo)->result().has_value());
  EXPECT_TRUE(part<QWidget>("again")->isEnabled());
  EXPECT_EQ(outcome(), QString());
}

TEST_F(DoctorWindowTest, EndsTheExaminationWhenItIsClosed) {
  servo.withOptions([](simulator::Options &options) { options.mute = true; });
  open();
  ASSERT_TRUE(waitFor([this] { return terminal.count(Call::Write) > 0; }));
  QTest::keyClick(doctor_, Qt::Key_Escape);
  ASSERT_TRUE(waitFor([this] { return doctor_.isNull(); }));
  EXPECT_EQ(terminal.closed().size(), 1U);
}

TEST_F(DoctorWindowTest, BeginsAgainWhenItIsAskedForAfterItLetGoOfThePort) {
  servo.withOptions([](simulator::Options &options) { options.mute = true; });
  open();
  ASSERT_TRUE(waitFor([this] { return terminal.count(Call::Write) > 0; }));
  doctor_->stop();
  servo.withOptions([](simulator::Options &options) { options.mute = false; });
  openFromMenu();
  EXPECT_FALSE(part<QWidget>("again")->isEnabled());
  untilDone();
  EXPECT_EQ(stateOf(CheckId::Servo), State::Passed);
}

TEST_F(DoctorWindowTest, GoesOnWhenItIsAskedForWhileItIsAtWork) {
  std::promise<void> asked;
  terminal.atCall = [isAsked = asked.get_future().share()](Call call) {
    if (call == Call::Write) isAsked.wait_for(std::chrono::seconds(20));
  };
  open();
  const auto isOpened = [this] { return row(CheckId::Opening)->result().has_value(); };
  ASSERT_TRUE(waitFor(isOpened));
  openFromMenu();
  EXPECT_TRUE(isOpened()) << "what was found stays";
  asked.set_value();
  untilDone();
  EXPECT_EQ(terminal.count(Call::Open), 1);
}

TEST_F(DoctorWindowTest, IsThereOnceAndBeginsAgainWhenItIsAskedForAgain) {
  DoctorWindow &first = open();
  untilDone();
  const int opened = terminal.count(Call::Open);
  openFromMenu();
  EXPECT_EQ(window->findChildren<DoctorWindow *>(), QList<DoctorWindow *>{&first});
  EXPECT_FALSE(part<QWidget>("again")->isEnabled());
  untilDone();
  EXPECT_EQ(terminal.count(Call::Open), opened + 1);
}

TEST_F(DoctorWindowTest, ChangesItsLanguageWithWhatItHasFound) {
  open();
  untilDone();
  languageChoice.choose(QStringLiteral("de"));
  EXPECT_EQ(doctor_->windowTitle(), QStringLiteral("Verbindungsdiagnose"));
  EXPECT_EQ(outcome(), QStringLiteral("Alles ist bereit für eine Verbindung."));
  EXPECT_EQ(row(CheckId::Servo)->accessibleDescription(), QStringLiteral("Genau ein Servo antwortet."));
}

TEST_F(DoctorWindowTest, ShowsWhatDevicesSayAsPlainText) {
  machine.plug(servo.path());
  machine.bus.adapters.front().product = QStringLiteral("<b>Adapter</b><img src=x>");
  open();
  untilDone();
  for (const QLabel *label : doctor_->findChildren<QLabel *>()) {
    EXPECT_EQ(label->textFormat(), Qt::PlainText) << label->objectName().toStdString();
  }
}

}  // namespace
}  // namespace tavril
