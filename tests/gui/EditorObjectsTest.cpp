// What the program connects with each other, as it really does so.
#include "editor/windows/DoctorWindow.h"
#include "store/ManagedObjectContext.h"
#include "tests/gui/GuiBench.h"
#include "tools/ConverterWindow.h"
#include "tools/FileListWindow.h"

#include <QLabel>
#include <QPushButton>

#include <vector>

namespace tavril {
namespace {

using namespace std::chrono_literals;

class EditorObjectsTest : public GuiBench {
 protected:
  /// Has the doctor wait for a servo that does not answer, with the port open.
  void keepTheDoctorAtWork() {
    servo.withOptions([](simulator::Options &options) { options.mute = true; });
    terminal.atCall = [this](Call call) {
      if (call == Call::Open) closedAtEachOpening.push_back(terminal.closed().size());
    };
    choose(strings.text(u"connection_doctor"));
    ASSERT_TRUE(waitFor([this] { return terminal.count(Call::Write) > 0; }));
  }
  void expectThatTheLinkHasThePort() {
    EXPECT_EQ(closedAtEachOpening, (std::vector<std::size_t>{0, 1}));
    ASSERT_TRUE(application->serialPort());
    EXPECT_TRUE(application->serialPort()->isOpen());
    EXPECT_TRUE(
        window->findChild<DoctorWindow *>()->findChild<QWidget *>(QStringLiteral("again"))->isEnabled());
  }
  void click(QWidget *where, const char *button) {
    QTest::mouseClick(where->findChild<QWidget *>(QString::fromLatin1(button)), Qt::LeftButton);
  }

  std::vector<std::size_t> closedAtEachOpening;
};

TEST_F(EditorObjectsTest, TheDoctorLetsGoOfThePortBeforeThePortDialogHasTheLinkOpenIt) {
  keepTheDoctorAtWork();
  openDialog();
  click(dialog, "doneBT");
  ASSERT_TRUE(waitFor([this] { return terminal.count(Call::Open) == 2; }));
  expectThatTheLinkHasThePort();
}

TEST_F(EditorObjectsTest, TheDoctorLetsGoOfThePortBeforeTheProgramConnectsByItself) {
  keepTheDoctorAtWork();
  editor->confirmPort();
  expectThatTheLinkHasThePort();
}

TEST_F(EditorObjectsTest, TheDoctorWaitsForTheBridgeAsLongAsTheLinkDoes) {
  EXPECT_EQ(doctorsUsualWait, 5000ms);
  editor->confirmPort();
  ASSERT_TRUE(waitFor([this] { return wait.waits.size() == 2; }));
  EXPECT_EQ(wait.waits[1], doctorsUsualWait);
}

TEST_F(EditorObjectsTest, ThePortDialogIsThereOnce) {
  openDialog();
  openDialog();
  EXPECT_EQ(window->findChildren<Config *>().size(), 1);
}

TEST_F(EditorObjectsTest, WhatIsToBeDoneOnceTheWindowIsSeenIsDoneOnce) {
  ASSERT_TRUE(waitFor([this] { return timesSeen > 0; }));
  window->hide();
  window->show();
  ASSERT_TRUE(QTest::qWaitForWindowExposed(window));
  EXPECT_EQ(timesSeen, 1);
}

TEST_F(EditorObjectsTest, QuittingEndsTheProgram) {
  choose(strings.text(u"quit_tavril"));
  EXPECT_EQ(endStatus, 0);
}

TEST_F(EditorObjectsTest, QuittingDoesNotEndTheProgramWhileInputCannotBeSaved) {
  struct RefusingEditor final : ManagedObjectContext::Editor {
    bool commitEditing() override { return false; }
  } refusing;
  ManagedObjectContext *context = application->managedObjectContext();
  ASSERT_NE(context, nullptr);
  context->objectDidBeginEditing(refusing);
  choose(strings.text(u"quit_tavril"));
  EXPECT_FALSE(endStatus);
  context->objectDidEndEditing(refusing);
  choose(strings.text(u"quit_tavril"));
  EXPECT_EQ(endStatus, 0);
}

TEST_F(EditorObjectsTest, TheFolderOfTheLastConversionIsKeptForLaterRuns) {
  const QString folder = QStringLiteral("/home/anna/tables");
  userFiles.put(folder + QStringLiteral("/keys.txt"), "a\n");
  userFiles.put(folder + QStringLiteral("/values.txt"), "b\n");
  for (const char *file : {"/keys.txt", "/values.txt", "/qq.h"}) {
    panels.answers.push_back(
        {FilePanels::OK, QUrl::fromLocalFile(folder + QString::fromLatin1(file)).toString(QUrl::FullyEncoded),
         QStringLiteral("qq")});
  }
  choose(strings.text(u"strings_converter"));
  auto *converter = window->findChild<ConverterWindow *>();
  ASSERT_NE(converter, nullptr);
  for (const char *button : {"key", "value", "converter"}) click(converter, button);
  EXPECT_TRUE(userFiles.contents.contains(folder + QStringLiteral("/qq.h")));
  EXPECT_EQ(preferences.values.value(QStringLiteral("stringTableFolder")), folder);
}

TEST_F(EditorObjectsTest, TheDocumentsThatNothingCanShowAreTold) {
  guideFolders = {QStringLiteral("/nonexistent/documents")};
  choose(strings.text(u"about_tavril"));
  click(window, "documents");
  EXPECT_TRUE(openedOutside.isEmpty());
  ASSERT_EQ(alert.contents.size(), 1U);
  EXPECT_TRUE(alert.contents[0].informativeText.contains(guideFolders[0]));
}

TEST_F(EditorObjectsTest, BroughtToTheFrontAWindowThatWasMinimizedIsShownAgainAndTheDesktopsPermissionUsed) {
  window->showMinimized();
  editor->bringToFront(QStringLiteral("a token"));
  EXPECT_FALSE(window->isMinimized());
  EXPECT_EQ(qEnvironmentVariable("XDG_ACTIVATION_TOKEN"), QStringLiteral("a token"));
  qunsetenv("XDG_ACTIVATION_TOKEN");
  EXPECT_TRUE(QTest::qWaitForWindowActive(window));
}

}  // namespace
}  // namespace tavril
