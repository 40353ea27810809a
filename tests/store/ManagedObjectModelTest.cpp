#include "store/ManagedObjectModel.h"
#include "store/ObjectStoreError.h"
#include "tests/store/NotesModel.h"

#include <QTemporaryDir>

#include <gtest/gtest.h>

#include <limits>

namespace tavril {
namespace {

const QString note = QStringLiteral("Note");

TEST(ManagedObjectModel, KnowsItsEntitiesAndTheirAttributes) {
  const ManagedObjectModel model = notesModel();
  EXPECT_EQ(model.name(), QStringLiteral("Notes"));
  EXPECT_EQ(model.entityNames(), (QStringList{QStringLiteral("Empty"), note}));
  EXPECT_TRUE(model.hasEntity(note));
  EXPECT_FALSE(model.hasEntity(QStringLiteral("note")));
  EXPECT_EQ(model.typeOf(note, QStringLiteral("title")), QMetaType::fromType<QString>());
  EXPECT_EQ(model.typeOf(note, QStringLiteral("count")), QMetaType::fromType<qint64>());
  EXPECT_EQ(model.typeOf(note, QStringLiteral("weight")), QMetaType::fromType<double>());
  EXPECT_EQ(model.typeOf(note, QStringLiteral("done")), QMetaType::fromType<bool>());
  EXPECT_FALSE(model.typeOf(note, QStringLiteral("nothing")).isValid());
  EXPECT_FALSE(model.typeOf(QStringLiteral("Empty"), QStringLiteral("title")).isValid());
}

TEST(ManagedObjectModel, AcceptsValuesOfTheRightTypeOnly) {
  const ManagedObjectModel model = notesModel();
  EXPECT_TRUE(model.accepts(note, QStringLiteral("title"), QStringLiteral("a")));
  EXPECT_FALSE(model.accepts(note, QStringLiteral("title"), qint64(1)));
  EXPECT_TRUE(model.accepts(note, QStringLiteral("count"), qint64(1)));
  EXPECT_FALSE(model.accepts(note, QStringLiteral("count"), QStringLiteral("1")));
  EXPECT_TRUE(model.accepts(note, QStringLiteral("weight"), 0.5));
  EXPECT_FALSE(model.accepts(note, QStringLiteral("weight"), std::numeric_limits<double>::quiet_NaN()));
  EXPECT_FALSE(model.accepts(note, QStringLiteral("weight"), std::numeric_limits<double>::infinity()));
  EXPECT_TRUE(model.accepts(note, QStringLiteral("done"), false));
  EXPECT_FALSE(model.accepts(note, QStringLiteral("nothing"), false));
  EXPECT_FALSE(model.accepts(note, QStringLiteral("nothing"), QVariant()));
  EXPECT_FALSE(model.accepts(note, QStringLiteral("done"), QVariant()));
}

class MalformedModel : public testing::TestWithParam<const char *> {};

TEST_P(MalformedModel, IsRefusedWithAReason) {
  Error error;
  EXPECT_FALSE(ManagedObjectModel::parse(GetParam(), error).has_value());
  EXPECT_EQ(error.code, static_cast<int>(ObjectStoreError::ModelUnreadable));
  EXPECT_EQ(error.localizedDescription, QStringLiteral("The data model could not be loaded."));
  EXPECT_TRUE(error.localizedFailureReason.startsWith(u"Line ")) << qPrintable(error.localizedFailureReason);
}

INSTANTIATE_TEST_SUITE_P(
    Each, MalformedModel,
    testing::Values("", "text", "<model/>", "<models name='a'/>", "<model name='a'>", "<model name='a'/>x",
                    "<model name='a'/><model name='b'/>", "<model name='a'>text</model>",
                    "<!DOCTYPE model><model name='a'/>", "<model name='a'><entity/></model>",
                    "<model name='a'><entity name=''/></model>",
                    "<model name='a'><entity name='A b'/></model>",
                    "<model name='a'><entity name='A'/><entity name='A'/></model>",
                    "<model name='a'><entity name='A'><attribute name='b' type='date'/></entity></model>",
                    "<model name='a'><entity name='A'><attribute name='b'/></entity></model>",
                    "<model name='a'><entity name='A'><attribute name='b' type='double'/>"
                    "<attribute name='b' type='double'/></entity></model>",
                    "<model name='a'><entity name='A'><attribute name='b' type='double'><c/></attribute>"
                    "</entity></model>",
                    "<x:model xmlns:x='urn:x' name='a'/>", "<model name='a' name='b'/>"));

TEST(ManagedObjectModel, ThatIsTooLargeIsRefused) {
  Error error;
  QByteArray xml(ManagedObjectModel::largestSize + 1, ' ');
  EXPECT_FALSE(ManagedObjectModel::parse(xml, error).has_value());
  EXPECT_EQ(error.localizedFailureReason, QStringLiteral("It is larger than 1 MiB."));
}

TEST(ManagedObjectModel, IsLoadedFromAFile) {
  const QTemporaryDir folder;
  QFile file(folder.filePath(QStringLiteral("model.xml")));
  ASSERT_TRUE(file.open(QIODevice::WriteOnly));
  file.write(notesModelXml);
  file.close();
  Error error;
  const auto model = ManagedObjectModel::load(file.fileName(), error);
  ASSERT_TRUE(model.has_value());
  EXPECT_EQ(model->name(), QStringLiteral("Notes"));
}

TEST(ManagedObjectModel, ThatIsMissingIsAnErrorThatNamesThePath) {
  Error error;
  EXPECT_FALSE(ManagedObjectModel::load(QStringLiteral(":/none.xml"), error).has_value());
  EXPECT_TRUE(error.localizedFailureReason.startsWith(u":/none.xml: "));
}

}  // namespace
}  // namespace tavril
