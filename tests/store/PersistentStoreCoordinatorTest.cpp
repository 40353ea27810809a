#include "store/ObjectStoreError.h"
#include "store/PersistentStoreCoordinator.h"
#include "store/StoreDocument.h"
#include "tests/store/NotesModel.h"
#include "tests/support/MemoryFiles.h"

#include <gtest/gtest.h>

namespace tavril {
namespace {

const QString path = QStringLiteral("/store");

ObjectTable oneNote(const QString &title) {
  return {{1, {QStringLiteral("Note"), {{QStringLiteral("title"), title}}}}};
}

class PersistentStore : public testing::Test {
 protected:
  MemoryFiles files;
  PersistentStoreCoordinator coordinator{notesModel(), files};
};

void expectError(const std::optional<Error> &error, ObjectStoreError code) {
  ASSERT_TRUE(error.has_value());
  EXPECT_EQ(error->domain, QStringLiteral("org.tavril.ObjectStore"));
  EXPECT_EQ(error->code, static_cast<int>(code));
}

TEST_F(PersistentStore, WithoutAFileIsEmptyAndIsWrittenOnlyWhenSaved) {
  EXPECT_FALSE(coordinator.addXmlStore(path));
  EXPECT_TRUE(coordinator.objects().empty());
  EXPECT_TRUE(files.contents.isEmpty());
  EXPECT_FALSE(coordinator.save(oneNote(QStringLiteral("a"))));
  EXPECT_EQ(coordinator.objects(), oneNote(QStringLiteral("a")));
  EXPECT_EQ(files.contents.keys(), QStringList{path});
}

TEST_F(PersistentStore, HandsWhatWasSavedToTheNextOne) {
  ASSERT_FALSE(coordinator.addXmlStore(path));
  ASSERT_FALSE(coordinator.save(oneNote(QStringLiteral("a"))));
  PersistentStoreCoordinator next(notesModel(), files);
  EXPECT_FALSE(next.addXmlStore(path));
  EXPECT_EQ(next.objects(), oneNote(QStringLiteral("a")));
}

TEST_F(PersistentStore, ThatIsCorruptIsAnErrorAndStaysAsItIs) {
  files.contents[path] = "<store format='1'";
  const auto error = coordinator.addXmlStore(path);
  expectError(error, ObjectStoreError::StoreMalformed);
  EXPECT_TRUE(
      error->localizedFailureReason.startsWith(u"The file \"/store\" is damaged or of another version. "));
  // It was not added, so nothing can be saved over it.
  expectError(coordinator.save(oneNote(QStringLiteral("a"))), ObjectStoreError::StoreMisplaced);
  EXPECT_EQ(files.contents[path], "<store format='1'");
}

TEST_F(PersistentStore, ThatCannotBeReadIsAnErrorWithTheCause) {
  files.failure = Error{QStringLiteral("POSIX"), 13, QStringLiteral("Permission denied"), {}, nullptr};
  const auto error = coordinator.addXmlStore(path);
  expectError(error, ObjectStoreError::StoreUnreadable);
  ASSERT_TRUE(error->underlyingError);
  EXPECT_EQ(error->underlyingError->code, 13);
}

TEST_F(PersistentStore, ThatCannotBeWrittenKeepsWhatItHad) {
  ASSERT_FALSE(coordinator.addXmlStore(path));
  ASSERT_FALSE(coordinator.save(oneNote(QStringLiteral("a"))));
  const QByteArray before = files.contents[path];
  files.failure = Error{QStringLiteral("POSIX"), 28, QStringLiteral("No space"), {}, nullptr};
  const auto error = coordinator.save(oneNote(QStringLiteral("b")));
  expectError(error, ObjectStoreError::SaveFailed);
  ASSERT_TRUE(error->underlyingError);
  EXPECT_EQ(error->underlyingError->code, 28);
  EXPECT_EQ(files.contents[path], before);
  EXPECT_EQ(coordinator.objects(), oneNote(QStringLiteral("a")));
}

TEST_F(PersistentStore, IsAddedOnce) {
  ASSERT_FALSE(coordinator.addXmlStore(path));
  expectError(coordinator.addXmlStore(QStringLiteral("/other")), ObjectStoreError::StoreMisplaced);
}

TEST_F(PersistentStore, IsNeverGivenTextThatXmlCannotKeep) {
  ASSERT_FALSE(coordinator.addXmlStore(path));
  ASSERT_FALSE(coordinator.save(oneNote(QStringLiteral("a"))));
  const QByteArray before = files.contents[path];
  for (const QString &text :
       {QString(QChar(0)), QString(QChar(1)), QString(QChar(0xD800)), QString(QChar(0xFFFF))}) {
    expectError(coordinator.save(oneNote(text)), ObjectStoreError::NotStorable);
  }
  EXPECT_EQ(files.contents[path], before);
  EXPECT_EQ(files.replacements, 1);
}

TEST_F(PersistentStore, NeverGrowsBeyondWhatIsReadAgain) {
  ASSERT_FALSE(coordinator.addXmlStore(path));
  expectError(coordinator.save(oneNote(QString(StoreDocument::largestSize, u'x'))),
              ObjectStoreError::NotStorable);
  EXPECT_EQ(files.replacements, 0);
}

}  // namespace
}  // namespace tavril
