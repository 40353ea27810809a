#include "store/ManagedObjectContext.h"
#include "store/PersistentStoreCoordinator.h"
#include "tests/store/NotesModel.h"
#include "tests/support/MemoryFiles.h"

#include <gtest/gtest.h>

#include <functional>

namespace tavril {
namespace {

const QString note = QStringLiteral("Note");
const QString title = QStringLiteral("title");

class Context : public testing::Test {
 protected:
  Context() { EXPECT_FALSE(coordinator.addXmlStore(QStringLiteral("/store"))); }

  MemoryFiles files;
  PersistentStoreCoordinator coordinator{notesModel(), files};
  ManagedObjectContext context{coordinator};
};

class FakeEditor final : public ManagedObjectContext::Editor {
 public:
  explicit FakeEditor(std::function<bool()> commit) : commit_(std::move(commit)) {}
  bool commitEditing() override {
    ++asked;
    return commit_();
  }
  int asked = 0;

 private:
  std::function<bool()> commit_;
};

TEST_F(Context, BeginsWithoutChangesAndThenWritesNothing) {
  EXPECT_FALSE(context.hasChanges());
  EXPECT_FALSE(context.save());
  EXPECT_EQ(files.replacements, 0);
}

TEST_F(Context, SavesObjectsThatTheNextContextHasAgain) {
  const auto id = context.insertObject(note);
  ASSERT_TRUE(id);
  EXPECT_TRUE(context.setValue(*id, title, QStringLiteral("a")));
  EXPECT_TRUE(context.hasChanges());
  EXPECT_FALSE(context.save());
  EXPECT_FALSE(context.hasChanges());
  EXPECT_EQ(files.replacements, 1);

  ManagedObjectContext next(coordinator);
  EXPECT_EQ(next.objects(), context.objects());
  EXPECT_EQ(next.objects().at(*id).values.value(title), QStringLiteral("a"));
  EXPECT_NE(next.insertObject(note), id);
}

TEST_F(Context, StillHasItsChangesWhenSavingFails) {
  context.insertObject(note);
  files.failure = Error{QStringLiteral("POSIX"), 28, {}, {}, nullptr};
  EXPECT_TRUE(context.save());
  EXPECT_TRUE(context.hasChanges());
  files.failure.reset();
  EXPECT_FALSE(context.save());
  EXPECT_FALSE(context.hasChanges());
}

TEST_F(Context, RefusesWhatTheModelDoesNotKnow) {
  EXPECT_FALSE(context.insertObject(QStringLiteral("Nothing")));
  const auto id = context.insertObject(note).value();
  EXPECT_FALSE(context.setValue(id, QStringLiteral("nothing"), QStringLiteral("a")));
  EXPECT_FALSE(context.setValue(id, QStringLiteral("nothing"), QVariant()));
  EXPECT_FALSE(context.setValue(id, title, 1));
  EXPECT_FALSE(context.setValue(id + 1, title, QStringLiteral("a")));
  EXPECT_FALSE(context.deleteObject(id + 1));
  EXPECT_TRUE(context.objects().at(id).values.isEmpty());
}

TEST_F(Context, TakesValuesAndObjectsAwayAgain) {
  const auto id = context.insertObject(note).value();
  EXPECT_TRUE(context.setValue(id, title, QStringLiteral("a")));
  EXPECT_TRUE(context.setValue(id, title, QVariant()));
  EXPECT_TRUE(context.objects().at(id).values.isEmpty());
  EXPECT_TRUE(context.deleteObject(id));
  EXPECT_TRUE(context.objects().empty());
  EXPECT_FALSE(context.hasChanges());
}

TEST_F(Context, UndoesAndRedoesEveryKindOfChange) {
  const auto id = context.insertObject(note).value();
  context.setValue(id, title, QStringLiteral("a"));
  context.deleteObject(id);
  UndoManager &undoManager = context.undoManager();
  undoManager.undo();
  EXPECT_EQ(context.objects().at(id).values.value(title), QStringLiteral("a"));
  undoManager.undo();
  EXPECT_TRUE(context.objects().at(id).values.isEmpty());
  undoManager.undo();
  EXPECT_TRUE(context.objects().empty());
  EXPECT_FALSE(undoManager.canUndo());
  EXPECT_FALSE(context.hasChanges());
  undoManager.redo();
  undoManager.redo();
  EXPECT_EQ(context.objects().at(id).values.value(title), QStringLiteral("a"));
  undoManager.redo();
  EXPECT_TRUE(context.objects().empty());
  EXPECT_FALSE(undoManager.canRedo());
}

TEST_F(Context, HasChangesWhenWhatWasSavedIsUndone) {
  context.insertObject(note);
  ASSERT_FALSE(context.save());
  context.undoManager().undo();
  EXPECT_TRUE(context.hasChanges());
  context.undoManager().redo();
  EXPECT_FALSE(context.hasChanges());
}

TEST_F(Context, MakesNoStepOfAValueThatIsThereAlready) {
  const auto id = context.insertObject(note).value();
  context.setValue(id, title, QStringLiteral("a"));
  context.setValue(id, title, QStringLiteral("a"));
  context.undoManager().undo();
  EXPECT_TRUE(context.objects().at(id).values.isEmpty());
}

TEST_F(Context, WithoutEditorsHasNothingToCommit) {
  EXPECT_TRUE(context.commitEditing());
}

TEST_F(Context, TakesTheInputOfEveryEditor) {
  FakeEditor first([&] { return context.insertObject(note).has_value(); });
  FakeEditor second([] { return true; });
  context.objectDidBeginEditing(first);
  context.objectDidBeginEditing(first);
  context.objectDidBeginEditing(second);
  EXPECT_TRUE(context.commitEditing());
  EXPECT_EQ(first.asked, 1);
  EXPECT_EQ(second.asked, 1);
  EXPECT_TRUE(context.hasChanges());
}

TEST_F(Context, CannotCommitWhileOneEditorRefuses) {
  FakeEditor refusing([] { return false; });
  FakeEditor behind([] { return true; });
  context.objectDidBeginEditing(refusing);
  context.objectDidBeginEditing(behind);
  EXPECT_FALSE(context.commitEditing());
  EXPECT_EQ(behind.asked, 0);
  context.objectDidEndEditing(refusing);
  EXPECT_TRUE(context.commitEditing());
  EXPECT_EQ(refusing.asked, 1);
}

TEST_F(Context, DoesNotAskAnEditorThatEndedMeanwhile) {
  FakeEditor second([] { return false; });
  FakeEditor first([&] {
    context.objectDidEndEditing(first);
    context.objectDidEndEditing(second);
    return true;
  });
  context.objectDidBeginEditing(first);
  context.objectDidBeginEditing(second);
  EXPECT_TRUE(context.commitEditing());
  EXPECT_EQ(second.asked, 0);
}

}  // namespace
}  // namespace tavril
