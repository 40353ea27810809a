// Takes a picture of the window in each of its states and in each language. The pictures go to the folder
// that the environment variable TAVRIL_SCREENSHOTS names, which is what tools/screenshots does; else nowhere.
#include "platform/linux/QtModalAlert.h"
#include "tests/gui/GuiBench.h"
#include "tests/support/ShippedLanguages.h"

#include <QDir>
#include <QPlainTextEdit>
#include <QScrollBar>
#include <QTimer>

#include <map>

namespace tavril {
namespace {

class Screenshots : public GuiBench, public testing::WithParamInterface<QString> {
 protected:
  Screenshots() : GuiBench(GetParam()) {}

  void take(const QString &name, QWidget *widget = nullptr) {
    const QImage picture = (widget ? widget : window.get())->grab().toImage();
    ASSERT_FALSE(picture.isNull()) << name.toStdString();
    for (const auto &[other, taken] : pictures_) {
      EXPECT_NE(picture, taken) << name.toStdString() << " looks like " << other.toStdString();
    }
    pictures_[name] = picture;
    const QString folder = qEnvironmentVariable("TAVRIL_SCREENSHOTS");
    if (folder.isEmpty()) return;
    const QString file = QStringLiteral("%1/%2-%3.png").arg(folder, name, GetParam());
    EXPECT_TRUE(picture.save(file)) << file.toStdString();
  }

 private:
  std::map<QString, QImage> pictures_;
};

INSTANTIATE_TEST_SUITE_P(Languages, Screenshots, testing::ValuesIn(shippedLanguages()), languageTestName);

TEST_P(Screenshots, EveryStateOfTheWindowHasItsPicture) {
  take("not-connected");

  shortcut(Qt::Key_F1, Qt::NoModifier);
  auto *about = window->findChild<AboutWindow *>();
  ASSERT_NE(about, nullptr);
  // It comes up with the bar that the text needs before the window has its size.
  const auto *bar = about->findChild<QPlainTextEdit *>(QStringLiteral("aboutContent"))->verticalScrollBar();
  ASSERT_TRUE(waitFor([&] { return !bar->isVisible(); }));
  take("about", about);
  about->close();

  shortcut(Qt::Key_P, Qt::ControlModifier);
  take("port-dialog", dialog);
  bool taken = false;
  wait.during = [&] {
    if (wait.waits.size() == 2 && !std::exchange(taken, true)) take("waiting");
  };
  press(dialog->findChild<QWidget *>(QStringLiteral("doneBT")));
  ASSERT_TRUE(waitFor([this] { return find<QWidget>("sID_value")->isEnabled(); }));
  ASSERT_TRUE(waitFor([this] { return !textOf("PresentLoad_value").isEmpty(); }));
  wait.during = nullptr;
  EXPECT_TRUE(taken);
  press("capture");
  ASSERT_TRUE(waitFor([this] { return !textOf("angle").isEmpty(); }));
  controller().Colorreset();
  take("connected");

  shortcut(Qt::Key_R, Qt::ControlModifier | Qt::ShiftModifier);
  ASSERT_TRUE(waitFor([this] { return find<QWidget>("ContrainerView_MsgView")->isVisible(); }));
  take("message-panel");
  press("cancel_lab");

  QtModalAlert realAlert(mainQueue);
  QTimer outside;
  QObject::connect(&outside, &QTimer::timeout, &outside, [&] {
    QAbstractButton *button = alertButton();
    if (!button) return;
    outside.stop();
    take("alert", QApplication::activeModalWidget());
    QTest::mouseClick(button, Qt::LeftButton);
  });
  outside.start(5);
  realAlert.run({strings.text(u"Error"),
                 strings.text(u"Setting_value_is_out_of_range") + QStringLiteral("0~253"),
                 {strings.text(u"Confirm")}});

  // A device that does not answer: thirty seconds later.
  servo.withOptions([](simulator::Options &options) { options.mute = true; });
  application->serialFormat();
  state.ObjectDictionaryArray.element(u"ContrainerView_WaitView").setHidden(false);
  for (int second = 0; second < 30; ++second) controller().ConnectTimeout();
  take("failed");
}

}  // namespace
}  // namespace tavril
