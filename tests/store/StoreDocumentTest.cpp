#include "store/StoreDocument.h"
#include "tests/store/NotesModel.h"

#include <gtest/gtest.h>

#include <limits>

namespace tavril {
namespace {

const QString title = QStringLiteral("title");

ManagedObject noteTitled(const QString &text) {
  return {QStringLiteral("Note"), {{title, text}}};
}

TEST(StoreDocument, IsReadableXml) {
  const ObjectTable objects{{3,
                             {QStringLiteral("Note"),
                              {{QStringLiteral("count"), qint64(-7)},
                               {QStringLiteral("done"), true},
                               {title, QStringLiteral("a<b & \"c\"")},
                               {QStringLiteral("weight"), 0.1}}}},
                            {5, {QStringLiteral("Empty"), {}}}};
  const QByteArray expected = R"(<?xml version="1.0" encoding="UTF-8"?>
<store format="1" model="Notes">
    <object id="3" entity="Note">
        <attribute name="count" value="-7"/>
        <attribute name="done" value="true"/>
        <attribute name="title" value="a&lt;b &amp; &quot;c&quot;"/>
        <attribute name="weight" value="0.1"/>
    </object>
    <object id="5" entity="Empty"/>
</store>
)";
  EXPECT_EQ(StoreDocument::write(notesModel(), objects), expected);

  ObjectTable readBack;
  QString problem;
  ASSERT_TRUE(StoreDocument::parse(expected, notesModel(), readBack, problem)) << qPrintable(problem);
  EXPECT_EQ(readBack, objects);
}

TEST(StoreDocument, KeepsLineEndsBlanksForeignScriptsAndExtremeNumbers) {
  ObjectTable objects;
  for (const char16_t *text :
       {u"", u" ", u"a\r\nb\tc \n", u"\u4f3a\u670d", u"\U0001F600", u"&amp;", u"]]>"}) {
    objects.emplace(static_cast<ObjectId>(objects.size() + 1), noteTitled(QString::fromUtf16(text)));
  }
  objects.emplace(100, ManagedObject{QStringLiteral("Note"),
                                     {{QStringLiteral("count"), std::numeric_limits<qint64>::min()},
                                      {QStringLiteral("weight"), std::numeric_limits<double>::denorm_min()},
                                      {QStringLiteral("done"), false}}});
  objects.emplace(101, ManagedObject{QStringLiteral("Note"),
                                     {{QStringLiteral("count"), std::numeric_limits<qint64>::max()},
                                      {QStringLiteral("weight"), std::numeric_limits<double>::max()}}});
  ObjectTable readBack;
  QString problem;
  ASSERT_TRUE(
      StoreDocument::parse(StoreDocument::write(notesModel(), objects), notesModel(), readBack, problem))
      << qPrintable(problem);
  EXPECT_EQ(readBack, objects);
}

class HostileStore : public testing::TestWithParam<const char *> {};

TEST_P(HostileStore, IsRefusedWithItsLineAndChangesNothing) {
  ObjectTable objects{{1, noteTitled(QStringLiteral("kept"))}};
  const ObjectTable before = objects;
  QString problem;
  EXPECT_FALSE(StoreDocument::parse(GetParam(), notesModel(), objects, problem));
  EXPECT_TRUE(problem.startsWith(u"Line ")) << qPrintable(problem);
  EXPECT_EQ(objects, before);
}

#define STORE(content) "<store format='1' model='Notes'>" content "</store>"
INSTANTIATE_TEST_SUITE_P(
    Each, HostileStore,
    testing::Values(
        "", "garbage", "\xff\xfe\x00", "<store", "<store/>", "<store format='1'/>",
        "<store format='2' model='Notes'/>", "<store format='1' model='Other'/>",
        "<store format='1' model='Notes'>", STORE("") STORE(""), STORE("") "trailing", STORE("text"),
        STORE("<![CDATA[x]]>"), STORE("&unknown;"), STORE("<object/>"), STORE("<thing/>"),
        STORE("<object id='1'/>"), STORE("<object id='x' entity='Note'/>"),
        STORE("<object id='0' entity='Note'/>"), STORE("<object id='-1' entity='Note'/>"),
        STORE("<object id='9223372036854775807' entity='Note'/>"),
        STORE("<object id='9223372036854775808' entity='Note'/>"), STORE("<object id='1' entity='Nothing'/>"),
        STORE("<object id='1' entity='Note'/><object id='1' entity='Note'/>"),
        STORE("<object id='1' entity='Note'><object id='2' entity='Note'/></object>"),
        STORE("<object id='1' entity='Note'><attribute name='title'/></object>"),
        STORE("<object id='1' entity='Note'><attribute name='none' value='1'/></object>"),
        STORE("<object id='1' entity='Note'><attribute name='count' value='1.5'/></object>"),
        STORE("<object id='1' entity='Note'><attribute name='count' value=''/></object>"),
        STORE("<object id='1' entity='Note'><attribute name='weight' value='nan'/></object>"),
        STORE("<object id='1' entity='Note'><attribute name='weight' value='1e999'/></object>"),
        STORE("<object id='1' entity='Note'><attribute name='done' value='1'/></object>"),
        STORE("<object id='1' entity='Note'><attribute name='title' value='a'/>"
              "<attribute name='title' value='b'/></object>"),
        STORE("<object id='1' entity='Note'><attribute name='title' value='a'>b</attribute></object>"),
        "<!DOCTYPE store [<!ENTITY e 'x'>]>" STORE(""),
        "<!DOCTYPE store SYSTEM 'file:///etc/passwd'>" STORE(""),
        "<!DOCTYPE store [<!ENTITY % p SYSTEM 'file:///etc/passwd'> %p;]>" STORE("")));

TEST(StoreDocument, DoesNotExpandEntitiesThatMultiply) {
  QByteArray bytes = "<!DOCTYPE store [<!ENTITY e0 'xxxxxxxxxx'>";
  for (int i = 1; i <= 30; ++i) {
    const QByteArray former = "&e" + QByteArray::number(i - 1) + ';';
    bytes += "<!ENTITY e" + QByteArray::number(i) + " '" + former.repeated(10) + "'>";
  }
  bytes += "]>" STORE("<object id='1' entity='Note'><attribute name='title' value='&e30;'/></object>");
  ObjectTable objects;
  QString problem;
  EXPECT_FALSE(StoreDocument::parse(bytes, notesModel(), objects, problem));
  EXPECT_EQ(problem, QStringLiteral("Line 1: Document types and entities are not allowed."));
}

TEST(StoreDocument, DoesNotFollowElementsIntoTheDepth) {
  QByteArray bytes = "<store format='1' model='Notes'>";
  bytes += QByteArray("<a>").repeated(1'000'000) + QByteArray("</a>").repeated(1'000'000) + "</store>";
  ObjectTable objects;
  QString problem;
  EXPECT_FALSE(StoreDocument::parse(bytes, notesModel(), objects, problem));
  EXPECT_EQ(problem, QStringLiteral("Line 1: The element \"a\" is not expected here."));
}

TEST(StoreDocument, ThatIsTooLargeIsNotEvenLookedAt) {
  ObjectTable objects;
  QString problem;
  const QByteArray bytes = QByteArray(STORE("")).append(StoreDocument::largestSize, ' ');
  EXPECT_FALSE(StoreDocument::parse(bytes, notesModel(), objects, problem));
  EXPECT_EQ(problem, QStringLiteral("It is larger than 16 MiB."));
}

TEST(StoreDocument, CutOffAnywhereIsNoStore) {
  const QByteArray whole =
      StoreDocument::write(notesModel(), {{1, noteTitled(QStringLiteral("a"))}}).trimmed();
  ObjectTable objects;
  QString problem;
  ASSERT_TRUE(StoreDocument::parse(whole, notesModel(), objects, problem)) << qPrintable(problem);
  for (qsizetype length = 0; length < whole.size(); ++length) {
    EXPECT_FALSE(StoreDocument::parse(whole.first(length), notesModel(), objects, problem)) << length;
  }
}

}  // namespace
}  // namespace tavril
