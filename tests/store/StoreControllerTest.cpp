#include "platform/Desktop.h"
#include "platform/linux/PosixPrivateFiles.h"
#include "store/AlertErrorPresenter.h"
#include "store/ManagedObjectContext.h"
#include "store/PersistentStoreCoordinator.h"
#include "store/StoreController.h"
#include "tests/store/NotesModel.h"
#include "tests/support/FileSizeLimit.h"
#include "tests/support/TestDesktop.h"
#include "tests/support/TestFiles.h"

#include <QDir>
#include <QFile>
#include <QStandardPaths>
#include <QTemporaryDir>

#include <gtest/gtest.h>

#include <sys/stat.h>

namespace tavril {
namespace {

const QString note = QStringLiteral("Note");
const QString title = QStringLiteral("title");

/// Input that cannot be committed.
class RefusingEditor final : public ManagedObjectContext::Editor {
 public:
  bool commitEditing() override { return false; }
};

/// Input that goes into the title of a note when it is committed.
class TitleEditor final : public ManagedObjectContext::Editor {
 public:
  TitleEditor(ManagedObjectContext &context, ObjectId object) : context_(context), object_(object) {}
  bool commitEditing() override { return context_.setValue(object_, title, QStringLiteral("typed")); }

 private:
  ManagedObjectContext &context_;
  ObjectId object_;
};

class RecordingPresenter final : public ErrorPresenter {
 public:
  bool present(const Error &error) override {
    errors.push_back(error);
    return solves;
  }

  std::vector<Error> errors;
  bool solves = false;
};

class Store : public testing::Test {
 protected:
  Store() {
    writeFile(model, notesModelXml);
    EXPECT_TRUE(QDir(root.path()).mkdir(QStringLiteral("share")));
  }

  bool touchedTheDisk() const {
    return !QDir(support).entryList(QDir::AllEntries | QDir::Hidden | QDir::NoDotAndDotDot).isEmpty();
  }
  ManagedObjectContext &context() { return *store.managedObjectContext(); }
  /// Makes a change that is not saved yet.
  ObjectId change() { return context().insertObject(note).value(); }
  /// The objects that the next start of the program finds.
  ObjectTable objectsNextTime() {
    StoreController next(files, desktop.desktop, presenter, {support, model});
    return next.managedObjectContext()->objects();
  }
  void expectNotInitialised(const QString &cause) {
    ASSERT_EQ(presenter.errors.size(), 1u);
    const Error &error = presenter.errors[0];
    EXPECT_EQ(error.domain, QStringLiteral("YOUR_ERROR_DOMAIN"));
    EXPECT_EQ(error.code, 9999);
    EXPECT_EQ(error.localizedDescription,
              QStringLiteral("Failed to initialize the application's saved data"));
    EXPECT_EQ(error.localizedFailureReason,
              QStringLiteral("There was an error creating or loading the application's saved data."));
    ASSERT_TRUE(error.underlyingError);
    EXPECT_EQ(error.underlyingError->localizedDescription, cause);
  }

  QTemporaryDir root;
  const QString support = root.filePath(QStringLiteral("share"));
  const QString folder = support + QStringLiteral("/org.tavril.Tavril");
  const QString file = folder + QStringLiteral("/OSXCoreDataObjC.storedata");
  const QString model = root.filePath(QStringLiteral("model.xml"));
  TestDesktop desktop;
  PosixPrivateFiles files;
  RecordingPresenter presenter;
  StoreController store{files, desktop.desktop, presenter, {support, model}};
};

// -------------------------------------------------------------------------------------------------- places

TEST_F(Store, LiesInTheUsersApplicationSupportFolderUnderTheBundleIdentifier) {
  EXPECT_EQ(store.applicationDocumentsDirectory(), folder);
  EXPECT_EQ(StoreController::Places::standard().applicationSupport,
            QStandardPaths::writableLocation(QStandardPaths::GenericDataLocation));
}

TEST_F(Store, HasTheModelThatComesWithTheProgram) {
  StoreController shipped(files, desktop.desktop, presenter);
  const ManagedObjectModel *found = shipped.managedObjectModel();
  ASSERT_TRUE(found);
  EXPECT_EQ(found->name(), QStringLiteral("Tavril"));
  EXPECT_EQ(shipped.managedObjectModel(), found);
}

TEST_F(Store, TouchesNothingOnTheDiskBeforeItIsAskedFor) {
  store.applicationDocumentsDirectory();
  ASSERT_TRUE(store.managedObjectModel());
  EXPECT_EQ(store.applicationShouldTerminate(), TerminateReply::TerminateNow);
  EXPECT_FALSE(touchedTheDisk());
  ASSERT_TRUE(store.persistentStoreCoordinator());
  EXPECT_TRUE(touchedTheDisk());
}

TEST_F(Store, IsMadeOnceForTheUserAlone) {
  PersistentStoreCoordinator *coordinator = store.persistentStoreCoordinator();
  ASSERT_TRUE(coordinator);
  EXPECT_EQ(store.persistentStoreCoordinator(), coordinator);
  ManagedObjectContext *made = store.managedObjectContext();
  ASSERT_TRUE(made);
  EXPECT_EQ(store.managedObjectContext(), made);
  change();
  store.saveAction();
  struct stat status {};
  ASSERT_EQ(::lstat(QFile::encodeName(folder).constData(), &status), 0);
  EXPECT_EQ(status.st_mode, S_IFDIR | 0700u);
  ASSERT_EQ(::lstat(QFile::encodeName(file).constData(), &status), 0);
  EXPECT_EQ(status.st_mode, S_IFREG | 0600u);
  EXPECT_TRUE(presenter.errors.empty());
}

TEST_F(Store, MakesTheFoldersAboveItsOwn) {
  ASSERT_TRUE(QDir(root.path()).rmdir(QStringLiteral("share")));
  EXPECT_TRUE(store.persistentStoreCoordinator());
  EXPECT_TRUE(QDir(folder).exists());
}

// ---------------------------------------------------------------------------- what keeps it from being made

TEST_F(Store, ExpectsAFolderWhereItFindsAFile) {
  writeFile(folder, "mine");
  EXPECT_FALSE(store.persistentStoreCoordinator());
  expectNotInitialised(
      QStringLiteral("Expected a folder to store application data, found a file (%1).").arg(folder));
  EXPECT_EQ(contentOf(folder), "mine");
}

TEST_F(Store, TellsWhyItsFolderCannotBeMade) {
  const QString below = model + QStringLiteral("/share");
  StoreController elsewhere(files, desktop.desktop, presenter, {below, model});
  EXPECT_FALSE(elsewhere.persistentStoreCoordinator());
  expectNotInitialised(model + QStringLiteral(": Not a directory"));
  EXPECT_EQ(presenter.errors[0].underlyingError->domain, QStringLiteral("POSIX"));
}

TEST_F(Store, ThatIsCorruptIsReportedAndStaysAsItIs) {
  ASSERT_TRUE(QDir().mkpath(folder));
  writeFile(file, "<store format='1' model='Notes'><object");
  EXPECT_FALSE(store.persistentStoreCoordinator());
  expectNotInitialised(QStringLiteral("The saved data could not be opened."));
  EXPECT_EQ(contentOf(file), "<store format='1' model='Notes'><object");
}

TEST_F(Store, ThatIsALinkIsReportedAndNotFollowed) {
  ASSERT_TRUE(QDir().mkpath(folder));
  const QString elsewhere = root.filePath(QStringLiteral("precious"));
  writeFile(elsewhere, "<store format='1' model='Notes'/>");
  ASSERT_TRUE(QFile::link(elsewhere, file));
  EXPECT_FALSE(store.persistentStoreCoordinator());
  expectNotInitialised(QStringLiteral("The saved data could not be opened."));
}

TEST_F(Store, WithoutAModelMakesNothing) {
  ASSERT_TRUE(QFile::remove(model));
  EXPECT_FALSE(store.managedObjectModel());
  ASSERT_EQ(desktop.log.warnings().size(), 1);
  EXPECT_TRUE(desktop.log.warnings()[0].startsWith(u"The data model could not be loaded. "));
  EXPECT_TRUE(presenter.errors.empty());
  EXPECT_FALSE(store.persistentStoreCoordinator());
  expectNotInitialised(QStringLiteral("The data model could not be loaded."));
  EXPECT_FALSE(touchedTheDisk());
}

TEST_F(Store, IsTriedAnewWhenItIsAskedForAgain) {
  writeFile(folder, "in the way");
  EXPECT_FALSE(store.managedObjectContext());
  EXPECT_FALSE(store.managedObjectContext());
  EXPECT_EQ(presenter.errors.size(), 2u);
  ASSERT_TRUE(QFile::remove(folder));
  EXPECT_TRUE(store.managedObjectContext());
  EXPECT_EQ(presenter.errors.size(), 2u);
}

TEST_F(Store, ThatCannotBeMadeIsShownInAnAlert) {
  writeFile(folder, "in the way");
  AlertErrorPresenter shown(desktop.alert);
  StoreController visible(files, desktop.desktop, shown, {support, model});
  EXPECT_FALSE(visible.managedObjectContext());
  ASSERT_EQ(desktop.alert.contents.size(), 1u);
  EXPECT_EQ(desktop.alert.contents[0].messageText,
            QStringLiteral("Failed to initialize the application's saved data"));
  EXPECT_EQ(desktop.alert.contents[0].informativeText,
            QStringLiteral("There was an error creating or loading the application's saved data.\n"
                           "Expected a folder to store application data, found a file (%1).")
                .arg(folder));
}

// -------------------------------------------------------------------------------------------- saving,
// undoing

TEST_F(Store, WithoutChangesIsNotWritten) {
  store.saveAction();
  EXPECT_FALSE(QFile::exists(file));
  EXPECT_TRUE(presenter.errors.empty());
  EXPECT_TRUE(desktop.log.lines().isEmpty());
}

TEST_F(Store, WithChangesIsWritten) {
  const ObjectId id = change();
  store.saveAction();
  EXPECT_FALSE(context().hasChanges());
  EXPECT_EQ(objectsNextTime(), (ObjectTable{{id, {note, {}}}}));
}

TEST_F(Store, TakesPendingEditsAlongWhenSaved) {
  const ObjectId id = change();
  TitleEditor editor(context(), id);
  context().objectDidBeginEditing(editor);
  store.saveAction();
  EXPECT_EQ(objectsNextTime().at(id).values.value(title), QStringLiteral("typed"));
  EXPECT_TRUE(desktop.log.lines().isEmpty());
}

TEST_F(Store, IsSavedWithoutTheEditsThatCannotBeCommitted) {
  RefusingEditor editor;
  change();
  context().objectDidBeginEditing(editor);
  store.saveAction();
  EXPECT_EQ(desktop.log.warnings(),
            QStringList{QStringLiteral("AppDelegate:saveAction: unable to commit editing before saving")});
  EXPECT_EQ(objectsNextTime().size(), 1u);
}

TEST_F(Store, PresentsWhatKeepsItFromBeingSaved) {
  change();
  {
    const FileSizeLimit full(16);
    store.saveAction();
  }
  ASSERT_EQ(presenter.errors.size(), 1u);
  EXPECT_EQ(presenter.errors[0].localizedDescription, QStringLiteral("The data could not be saved."));
  EXPECT_TRUE(context().hasChanges());
  EXPECT_FALSE(QFile::exists(file));
}

TEST_F(Store, ThatCannotBeMadeCannotBeSaved) {
  writeFile(folder, "in the way");
  store.saveAction();
  EXPECT_EQ(presenter.errors.size(), 1u);
  EXPECT_EQ(desktop.log.warnings(),
            QStringList{QStringLiteral("AppDelegate:saveAction: unable to commit editing before saving")});
}

TEST_F(Store, GivesTheWindowTheUndoManagerOfItsContext) {
  UndoManager *undoManager = store.windowWillReturnUndoManager();
  ASSERT_EQ(undoManager, &context().undoManager());
  change();
  undoManager->undo();
  EXPECT_TRUE(context().objects().empty());
  EXPECT_FALSE(context().hasChanges());
  undoManager->redo();
  EXPECT_EQ(context().objects().size(), 1u);
  EXPECT_TRUE(context().hasChanges());
}

TEST_F(Store, ThatCannotBeMadeHasNoUndoManager) {
  writeFile(folder, "in the way");
  EXPECT_FALSE(store.windowWillReturnUndoManager());
}

// -------------------------------------------------------------------------------------------------- quitting

TEST_F(Store, LetsTheProgramEndWithoutChanges) {
  context();
  EXPECT_EQ(store.applicationShouldTerminate(), TerminateReply::TerminateNow);
  EXPECT_FALSE(QFile::exists(file));
}

TEST_F(Store, SavesChangesBeforeTheProgramEnds) {
  const ObjectId id = change();
  TitleEditor editor(context(), id);
  context().objectDidBeginEditing(editor);
  EXPECT_EQ(store.applicationShouldTerminate(), TerminateReply::TerminateNow);
  EXPECT_EQ(objectsNextTime().at(id).values.value(title), QStringLiteral("typed"));
  EXPECT_TRUE(desktop.alert.contents.empty());
}

TEST_F(Store, KeepsTheProgramRunningWhileEditsCannotBeCommitted) {
  RefusingEditor editor;
  change();
  context().objectDidBeginEditing(editor);
  EXPECT_EQ(store.applicationShouldTerminate(), TerminateReply::TerminateCancel);
  EXPECT_EQ(desktop.log.warnings(),
            QStringList{QStringLiteral(
                "AppDelegate:applicationShouldTerminate: unable to commit editing to terminate")});
  EXPECT_FALSE(QFile::exists(file));
  EXPECT_TRUE(desktop.alert.contents.empty());
}

class StoreThatCannotBeSaved : public Store {
 protected:
  StoreThatCannotBeSaved() {
    saved = change();
    store.saveAction();
    change();
  }

  TerminateReply quit() {
    const FileSizeLimit full(16);
    return store.applicationShouldTerminate();
  }
  void expectTheOldStore() { EXPECT_EQ(objectsNextTime(), (ObjectTable{{saved, {note, {}}}})); }

  ObjectId saved = 0;
};

TEST_F(StoreThatCannotBeSaved, AsksWhetherToQuitAnyway) {
  desktop.strings.texts = {
      {QStringLiteral("Could not save changes while quitting. Quit anyway?"), QStringLiteral("Question")},
      {QStringLiteral("Quitting now will lose any changes you have made since the last successful save"),
       QStringLiteral("Warning")},
      {QStringLiteral("Quit anyway"), QStringLiteral("Quit")},
      {QStringLiteral("Cancel"), QStringLiteral("Stay")}};
  desktop.alert.answers = {ModalAlert::firstButton};
  // The error comes first, the question after it.
  desktop.alert.whileUp = [&] { EXPECT_EQ(presenter.errors.size(), 1u); };
  EXPECT_EQ(quit(), TerminateReply::TerminateNow);
  ASSERT_EQ(desktop.alert.contents.size(), 1u);
  EXPECT_EQ(desktop.alert.contents[0].messageText, QStringLiteral("Question"));
  EXPECT_EQ(desktop.alert.contents[0].informativeText, QStringLiteral("Warning"));
  EXPECT_EQ(desktop.alert.contents[0].buttons, (QStringList{QStringLiteral("Quit"), QStringLiteral("Stay")}));
  expectTheOldStore();
}

TEST_F(StoreThatCannotBeSaved, KeepsTheProgramRunningWhenTheUserCancels) {
  desktop.alert.answers = {ModalAlert::secondButton};
  EXPECT_EQ(quit(), TerminateReply::TerminateCancel);
  EXPECT_TRUE(context().hasChanges());
  expectTheOldStore();
  // Once there is room again nothing was lost.
  EXPECT_EQ(store.applicationShouldTerminate(), TerminateReply::TerminateNow);
  EXPECT_EQ(objectsNextTime().size(), 2u);
}

TEST_F(StoreThatCannotBeSaved, DoesNotAskWhenPresentingTheErrorSolvedIt) {
  presenter.solves = true;
  EXPECT_EQ(quit(), TerminateReply::TerminateCancel);
  EXPECT_EQ(presenter.errors.size(), 1u);
  EXPECT_TRUE(desktop.alert.contents.empty());
  expectTheOldStore();
}

}  // namespace
}  // namespace tavril
