#include "foundation/RowsetReader.h"

#include "foundation/LanguageFile.h"

#include <QFile>
#include <QStringEncoder>

#include <gtest/gtest.h>

#include <optional>

#include <sys/resource.h>

namespace norvane {

using namespace Qt::StringLiterals;

namespace {

using Rows = QList<QStringList>;

std::optional<Rows> rowsOf(const QByteArray &bytes,
                           const QStringList &columns = {u"ResID"_s, u"ResSTring"_s})
{
    Rows rows;
    const bool good = RowsetReader::read(bytes, columns, [&](const QStringList &row) {
        rows.append(row);
        return true;
    });
    return good ? std::optional(rows) : std::nullopt;
}

QByteArray file(const QByteArray &open, const QByteArray &schema, const QByteArray &data)
{
    return LanguageFile::declaration + open + schema + data + LanguageFile::close;
}

const Rows oneRow{{u"14"_s, u"Sí"_s}};

TEST(RowsetReaderTest, rowsComeInTheirOrder)
{
    const auto rows =
        rowsOf(LanguageFile::with(LanguageFile::row("16", "b") + LanguageFile::row("14", "a") +
                                  LanguageFile::row("16", "c")));
    EXPECT_EQ(rows, (Rows{{u"16"_s, u"b"_s}, {u"14"_s, u"a"_s}, {u"16"_s, u"c"_s}}));
}

TEST(RowsetReaderTest, missingValueIsNullAndEmptyOneIsNot)
{
    const auto rows =
        rowsOf(LanguageFile::with("<z:row ResID='1'/><z:row ResSTring='' ResID='2'></z:row>"));
    ASSERT_TRUE(rows);
    ASSERT_EQ(rows->size(), 2);
    EXPECT_TRUE(rows->at(0).at(1).isNull());
    EXPECT_FALSE(rows->at(1).at(1).isNull());
    EXPECT_TRUE(rows->at(1).at(1).isEmpty());
}

TEST(RowsetReaderTest, tableWithoutRowsIsATable)
{
    EXPECT_EQ(rowsOf(LanguageFile::with("")), Rows());
}

TEST(RowsetReaderTest, sinkThatRefusesEndsTheReading)
{
    int seen = 0;
    const QByteArray bytes =
        LanguageFile::with(LanguageFile::row("1", "a") + LanguageFile::row("2", "b"));
    EXPECT_FALSE(RowsetReader::read(bytes, {u"ResID"_s}, [&](const QStringList &) {
        ++seen;
        return false;
    }));
    EXPECT_EQ(seen, 1);
}

struct Sample
{
    const char *name;
    QByteArray bytes;
};

std::string nameOf(const testing::TestParamInfo<Sample> &instance)
{
    return instance.param.name;
}

const QByteArray dataStart = "<rs:data><z:row ResID='14' ResSTring='Sí'/></rs:data>";

QByteArray otherPrefixes()
{
    return "<xml xmlns='' xmlns:a='uuid:BDC6E3F0-6DA3-11d1-A2A3-00AA00C14882'"
           " xmlns:b='urn:schemas-microsoft-com:rowset' xmlns:rs='#RowsetSchema'>"
           "<a:Schema id='RowsetSchema'><a:ElementType name='row'>"
           "<a:AttributeType name='c0' b:name='ResID'/>"
           "<a:AttributeType b:name='ResSTring' name='c1'/>"
           "</a:ElementType></a:Schema>"
           "<b:data><rs:row c1='Sí' c0='14'/></b:data></xml>";
}

QByteArray referredColumns()
{
    return file(LanguageFile::open,
                "<s:Schema id='RowsetSchema'><s:ElementType name='row' content='eltOnly'>"
                "<s:attribute type='ResSTring'/><s:attribute type='ResID'/></s:ElementType>"
                "<s:AttributeType name='ResID'/><s:AttributeType name='ResSTring'/></s:Schema>",
                dataStart);
}

QByteArray moreColumns()
{
    QByteArray schema = LanguageFile::schema;
    schema.replace("<s:extends", "<s:AttributeType name='Remark'/><s:extends");
    return file(LanguageFile::open, schema,
                "<rs:data><z:row Remark='x' ResSTring='Sí' Other='y' ResID='14'/></rs:data>");
}

QByteArray otherSchemaName()
{
    QByteArray bytes = file(LanguageFile::open, LanguageFile::schema, dataStart);
    return bytes.replace("RowsetSchema", "Table");
}

QByteArray latin(const QByteArray &encoding)
{
    QByteArray bytes = file(LanguageFile::open, LanguageFile::schema, dataStart);
    return bytes.replace("UTF-8", encoding).replace("\xC3\xAD", "\xED");
}

QByteArray utf16(QStringConverter::Encoding encoding, bool withMark)
{
    const QString text =
        QString::fromUtf8(file(LanguageFile::open, LanguageFile::schema, dataStart))
            .replace(u"UTF-8"_s, u"UTF-16"_s);
    QStringEncoder encoder(encoding, withMark ? QStringConverter::Flag::WriteBom
                                              : QStringConverter::Flag::Default);
    return encoder(text);
}

QByteArray withOwnEntities()
{
    return "<!DOCTYPE xml [<!ENTITY yes \"S&#237;\"><!ENTITY id '14'>]>" + LanguageFile::open +
           LanguageFile::schema + "<rs:data><z:row ResID='&id;' ResSTring='&yes;'/></rs:data>" +
           LanguageFile::close;
}

class GoodFormTest : public testing::TestWithParam<Sample>
{};

TEST_P(GoodFormTest, isRead)
{
    EXPECT_EQ(rowsOf(GetParam().bytes), oneRow);
}

INSTANTIATE_TEST_SUITE_P(
    Forms, GoodFormTest,
    testing::Values(
        Sample{"plain", file(LanguageFile::open, LanguageFile::schema, dataStart)},
        Sample{"withoutDeclaration",
               LanguageFile::open + LanguageFile::schema + dataStart + "</xml>"},
        Sample{"attributesInOtherOrder",
               LanguageFile::with("<z:row ResSTring=\"Sí\"\n\tResID = \"14\" ></z:row>")},
        Sample{"otherPrefixesAndMappedNames", otherPrefixes()},
        Sample{"columnsReferredTo", referredColumns()}, Sample{"moreColumns", moreColumns()},
        Sample{"otherSchemaName", otherSchemaName()},
        Sample{"characterReferences",
               LanguageFile::with("<z:row ResID='&#49;&#x34;' ResSTring='S&#xED;'/>")},
        Sample{"commentsAndInstructions",
               LanguageFile::with("<!-- a='1' --><?x y?><z:row ResID='14' ResSTring='Sí'/>")},
        Sample{"ownEntities", withOwnEntities()},
        Sample{"utf8WithMark",
               "\xEF\xBB\xBF" + file(LanguageFile::open, LanguageFile::schema, dataStart)},
        Sample{"utf16LittleEndian", utf16(QStringConverter::Utf16LE, true)},
        Sample{"utf16BigEndian", utf16(QStringConverter::Utf16BE, true)},
        Sample{"utf16LittleEndianWithoutMark", utf16(QStringConverter::Utf16LE, false)},
        Sample{"utf16BigEndianWithoutMark", utf16(QStringConverter::Utf16BE, false)},
        Sample{"iso8859", latin("ISO-8859-1")}, Sample{"windows1252", latin("Windows-1252")}),
    nameOf);

TEST(RowsetReaderTest, predefinedEntitiesAreUnderstood)
{
    const auto rows = rowsOf(
        LanguageFile::with("<z:row ResID='1' ResSTring='&lt;&gt;&amp;&quot;&apos;&#13;&#10;'/>"));
    EXPECT_EQ(rows, (Rows{{u"1"_s, u"<>&\"'\r\n"_s}}));
}

TEST(RowsetReaderTest, windowsEncodingHasTheEuroSign)
{
    QByteArray bytes = LanguageFile::with(LanguageFile::row("1", "\x80"));
    bytes.replace("UTF-8", "windows-1252");
    EXPECT_EQ(rowsOf(bytes), (Rows{{u"1"_s, u"€"_s}}));
}

QByteArray columnsNamed(const QByteArray &first, const QByteArray &second)
{
    return file(LanguageFile::open,
                "<s:Schema id='RowsetSchema'><s:ElementType name='row'><s:AttributeType name='" +
                    first + "'/><s:AttributeType name='" + second +
                    "'/></s:ElementType></s:Schema>",
                dataStart);
}

QByteArray replaced(const char *before, const char *after)
{
    QByteArray bytes = file(LanguageFile::open, LanguageFile::schema, dataStart);
    EXPECT_TRUE(bytes.contains(before)) << before;
    return bytes.replace(before, after);
}

QByteArray withType(const QByteArray &type, const QByteArray &value)
{
    return type + LanguageFile::open + LanguageFile::schema +
           "<rs:data><z:row ResID='14' ResSTring='" + value + "'/></rs:data>" + LanguageFile::close;
}

QByteArray deepSchema()
{
    QByteArray schema = LanguageFile::schema;
    return file(
        LanguageFile::open,
        schema.replace("<s:extends type='rs:rowbase'/>",
                       QByteArray("<a>").repeated(1000) + QByteArray("</a>").repeated(1000)),
        dataStart);
}

class BadFormTest : public testing::TestWithParam<Sample>
{};

TEST_P(BadFormTest, isTurnedDown)
{
    EXPECT_EQ(rowsOf(GetParam().bytes), std::nullopt);
}

INSTANTIATE_TEST_SUITE_P(
    NotWellFormed, BadFormTest,
    testing::Values(Sample{"empty", ""}, Sample{"text", "no table"},
                    Sample{"binary", QByteArray("\0\1\2\3\xFF", 5)},
                    Sample{"unclosed", LanguageFile::open + LanguageFile::schema + dataStart},
                    Sample{"somethingBehind",
                           file(LanguageFile::open, LanguageFile::schema, dataStart) + "<xml/>"},
                    Sample{"crossedElements", replaced("</rs:data></xml>", "</xml></rs:data>")},
                    Sample{"sameAttributeTwice", replaced("ResID='14'", "ResID='14' ResID='14'")},
                    Sample{"bareAmpersand", replaced("Sí", "a & b")},
                    Sample{"unknownEntity", replaced("Sí", "&yes;")},
                    Sample{"undeclaredPrefix", replaced("xmlns:z=", "xmlns:y=")},
                    Sample{"badUtf8", replaced("Sí", "\xED")},
                    Sample{"unfinishedUtf8",
                           file(LanguageFile::open, LanguageFile::schema, dataStart) + "\xC3"},
                    Sample{"oddUtf16", utf16(QStringConverter::Utf16LE, true) + "\n"},
                    Sample{"unknownEncoding", replaced("UTF-8", "x-unheard-of")},
                    Sample{"asciiWithOtherBytes", replaced("UTF-8", "US-ASCII")}),
    nameOf);

INSTANTIATE_TEST_SUITE_P(
    NoTable, BadFormTest,
    testing::Values(
        Sample{"otherRoot", "<table/>"}, Sample{"emptyRoot", LanguageFile::open + "</xml>"},
        Sample{"noSchema", file(LanguageFile::open, "", dataStart)},
        Sample{"noData", file(LanguageFile::open, LanguageFile::schema, "")},
        Sample{"dataBeforeSchema", file(LanguageFile::open, dataStart, LanguageFile::schema)},
        Sample{"secondSchema",
               file(LanguageFile::open, LanguageFile::schema + LanguageFile::schema, dataStart)},
        Sample{"secondData", file(LanguageFile::open, LanguageFile::schema, dataStart + dataStart)},
        Sample{"noRowType", replaced("name='row'", "name='line'")},
        Sample{"schemaWithoutName", replaced("<s:Schema id=", "<s:Schema nr=")},
        Sample{"rowsOfAnotherSchema", replaced("xmlns:z='#RowsetSchema'", "xmlns:z='#Other'")},
        Sample{"otherSchemaNamespace", replaced("uuid:BDC6E3F0", "uuid:BDC6E3F1")},
        Sample{"otherRowsetNamespace", replaced("-com:rowset", "-com:rows")},
        Sample{"noResId", columnsNamed("Number", "ResSTring")},
        Sample{"noResString", columnsNamed("ResID", "Text")},
        Sample{"otherCase", columnsNamed("ResID", "ResString")},
        Sample{"mappedAway", replaced("<s:AttributeType name='ResID'",
                                      "<s:AttributeType name='ResID' rs:name='Id'")},
        Sample{"somethingElseInData", replaced("<rs:data>", "<rs:data><rs:insert/>")},
        Sample{"textInData", replaced("<rs:data>", "<rs:data>text")},
        Sample{"elementInARow", replaced("'/></rs:data>", "'><a/></z:row></rs:data>")},
        Sample{"deepSchema", deepSchema()}),
    nameOf);

INSTANTIATE_TEST_SUITE_P(
    BeyondTheFile, BadFormTest,
    testing::Values(
        Sample{"externalType", withType("<!DOCTYPE xml SYSTEM 'a.dtd'>", "x")},
        Sample{"publicType", withType("<!DOCTYPE xml PUBLIC '-//A//B' 'http://a/b'>", "x")},
        Sample{"externalEntity",
               withType("<!DOCTYPE xml [<!ENTITY e SYSTEM 'file:///etc/hostname'>]>", "&e;")},
        Sample{"unusedExternalEntity",
               withType("<!DOCTYPE xml [<!ENTITY e SYSTEM 'file:///etc/hostname'>]>", "x")},
        Sample{"publicEntity", withType("<!DOCTYPE xml [<!ENTITY e PUBLIC 'a' 'b'>]>", "x")},
        Sample{"parameterEntity",
               withType("<!DOCTYPE xml [<!ENTITY % e '<!ENTITY f \"x\">'>%e;]>", "&f;")},
        Sample{"defaultAttributes",
               withType("<!DOCTYPE xml [<!ATTLIST z:row ResSTring CDATA 'x'>]>", "x")},
        Sample{"entityThatHoldsItself",
               withType("<!DOCTYPE xml [<!ENTITY a '&b;'><!ENTITY b '&a;'>]>", "&a;")}),
    nameOf);

/// Lets the peak of memory begin anew: a test behind a greedier one would notice nothing.
void forgetPeakOfMemory()
{
    QFile references(u"/proc/self/clear_refs"_s);
    ASSERT_TRUE(references.open(QIODevice::WriteOnly | QIODevice::Unbuffered));
    ASSERT_EQ(references.write("5"), 1);
}

/// What a reading takes at most: far above what it needs, and far below what an unlimited reading
/// would take, which the program wouldn't live to the end of.
void expectTurnedDownCheaply(const QByteArray &bytes)
{
    forgetPeakOfMemory();
    rusage before = {};
    ::getrusage(RUSAGE_SELF, &before);
    EXPECT_EQ(rowsOf(bytes), std::nullopt);
    rusage after = {};
    ::getrusage(RUSAGE_SELF, &after);
    EXPECT_LT(after.ru_maxrss - before.ru_maxrss, 256 * 1024) << "kibibytes";
}

TEST(RowsetReaderMemory, entityBombIsTurnedDown)
{
    QByteArray type = "<!DOCTYPE xml [<!ENTITY e0 'xxxxxxxxxx'>";
    for (int i = 1; i < 30; ++i) {
        const QByteArray inner = "&e" + QByteArray::number(i - 1) + ';';
        type += "<!ENTITY e" + QByteArray::number(i) + " '" + inner.repeated(10) + "'>";
    }
    expectTurnedDownCheaply(withType(type + "]>", "&e29;"));
}

TEST(RowsetReaderMemory, manyUsesOfALongEntityAreTurnedDown)
{
    const QByteArray type = "<!DOCTYPE xml [<!ENTITY e '" + QByteArray(500, 'x') + "'>]>";
    expectTurnedDownCheaply(withType(type, QByteArray("&e;").repeated(1'000'000)));
}

TEST(RowsetReaderMemory, usesOfAnEntityAreLimitedInAShortFileToo)
{
    const QByteArray type = "<!DOCTYPE xml [<!ENTITY e '" + QByteArray(20'000, 'x') + "'>]>";
    expectTurnedDownCheaply(withType(type, QByteArray("&e;").repeated(50'000)));
}

TEST(RowsetReaderTest, entityMayStandFor512CharactersHoweverItIsMadeUp)
{
    const auto valueOf = [](int length) {
        const QByteArray type = "<!DOCTYPE xml [<!ENTITY a '" + QByteArray(length / 2, 'x') +
                                "'><!ENTITY b '&a;&a;'>]>";
        return rowsOf(withType(type, "&b;"));
    };
    EXPECT_EQ(valueOf(500), (Rows{{u"14"_s, QString(500, u'x')}}));
    EXPECT_EQ(valueOf(600), std::nullopt);
}

TEST(RowsetReaderMemory, mostUsesOfTheLongestEntityTakeBoundedMemory)
{
    const QByteArray type = "<!DOCTYPE xml [<!ENTITY e '" + QByteArray(500, 'x') + "'>]>";
    expectTurnedDownCheaply(withType(type, QByteArray("&e;").repeated(40'000)) + "<");
}

TEST(RowsetReaderMemory, deeplyNestedElementsAreTurnedDown)
{
    expectTurnedDownCheaply(QByteArray("<a>").repeated(2'000'000));
    expectTurnedDownCheaply(LanguageFile::open + "<s:Schema id='RowsetSchema'>" +
                            QByteArray("<a>").repeated(2'000'000));
}

TEST(RowsetReaderMemory, countlessAttributesAreTurnedDown)
{
    QByteArray attributes;
    for (int i = 0; i < 400'000; ++i)
        attributes += " a" + QByteArray::number(i) + " = ''";
    expectTurnedDownCheaply(LanguageFile::with("<z:row" + attributes + "/>"));
}

TEST(RowsetReaderTest, fileOverTheLimitIsTurnedDown)
{
    const QByteArray good = LanguageFile::with(LanguageFile::row("14", "Sí"));
    const QByteArray filling(RowsetReader::maxFileBytes - good.size(), '\n');
    EXPECT_EQ(rowsOf(good + filling), oneRow);
    EXPECT_EQ(rowsOf(good + filling + '\n'), std::nullopt);
}

} // namespace

} // namespace norvane
