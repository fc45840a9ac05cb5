#include "foundation/IniFile.h"

#include "foundation/Mutation.h"

#include <QFile>
#include <QTemporaryDir>

#include <gtest/gtest.h>

namespace norvane {

using namespace Qt::StringLiterals;

namespace {

class IniFileTest : public testing::Test
{
protected:
    QString path() const { return m_folder.filePath(u"Norvane.ini"_s); }

    void write(const QByteArray &bytes)
    {
        QFile file(path());
        file.remove();
        ASSERT_TRUE(file.open(QIODevice::WriteOnly));
        ASSERT_EQ(file.write(bytes), bytes.size());
    }

    QString dataFolder(const QByteArray &bytes)
    {
        write(bytes);
        return ReadIniValue(u"General"_s, u"DataFolder"_s, u"default"_s, path());
    }

    QTemporaryDir m_folder;
};

struct IniCase
{
    const char *name;
    const char *bytes;
    const char16_t *expected;
};

class IniCaseTest : public IniFileTest, public testing::WithParamInterface<IniCase>
{};

TEST_P(IniCaseTest, givesTheValue)
{
    EXPECT_EQ(dataFolder(GetParam().bytes), QString::fromUtf16(GetParam().expected));
}

INSTANTIATE_TEST_SUITE_P(
    Files, IniCaseTest,
    testing::Values(
        IniCase{"plain", "[General]\nDataFolder=/srv/data\n", u"/srv/data"},
        IniCase{"otherCase", "[GENERAL]\r\ndatafolder=/srv\r\n", u"/srv"},
        IniCase{"blanks", " \t[ General ] \n \tDataFolder \t=\t /srv/a b \t\n", u"/srv/a b"},
        IniCase{"withoutLineEnd", "[General]\nDataFolder=x", u"x"},
        IniCase{"oldLineEnds", "[General]\rDataFolder=x\rOther=y", u"x"},
        IniCase{"doubleQuotes", "[General]\nDataFolder=\" a \"\n", u" a "},
        IniCase{"singleQuotes", "[General]\nDataFolder=' a '\n", u" a "},
        IniCase{"onePairOfQuotesOnly", "[General]\nDataFolder=\"'a'\"\n", u"'a'"},
        IniCase{"unequalQuotes", "[General]\nDataFolder=\"a'\n", u"\"a'"},
        IniCase{"loneQuote", "[General]\nDataFolder=\"\n", u"\""},
        IniCase{"emptyQuotes", "[General]\nDataFolder=\"\"\n", u""},
        IniCase{"emptyValue", "[General]\nDataFolder=\n", u""},
        IniCase{"firstKeyWins", "[General]\nDataFolder=a\nDataFolder=b\n", u"a"},
        IniCase{"firstSectionWins", "[General]\nx=1\n[General]\nDataFolder=b\n", u"default"},
        IniCase{"otherSection", "[Other]\nDataFolder=a\n[General]\nDataFolder=b\n", u"b"},
        IniCase{"onlyInOtherSection", "[General]\nx=1\n[Other]\nDataFolder=a\n", u"default"},
        IniCase{"beforeAnySection", "DataFolder=a\n[General]\n", u"default"},
        IniCase{"longerKey", "[General]\nDataFolders=a\nDataFolder2=b\n", u"default"},
        IniCase{"comment", "[General]\n;DataFolder=a\n ; DataFolder=b\nDataFolder=c ;d\n", u"c ;d"},
        IniCase{"keyWithoutEquals", "[General]\nDataFolder\nDataFolder=b\n", u"b"},
        IniCase{"equalsInTheValue", "[General]\nDataFolder=a=b\n", u"a=b"},
        IniCase{"backslashes", "[General]\nDataFolder=C:\\new\\temp, x\n", u"C:\\new\\temp, x"},
        IniCase{"utf8", "[General]\nDataFolder=/srv/dato\xC3\xB1\n", u"/srv/datoñ"},
        IniCase{"utf8WithMark", "\xEF\xBB\xBF[General]\nDataFolder=\xC3\xB1\n", u"ñ"},
        IniCase{"ansi", "[General]\nDataFolder=/srv/dato\xF1\x80\n", u"/srv/datoñ€"},
        IniCase{"unclosedSection", "[General\nDataFolder=a\n", u"a"},
        IniCase{"empty", "", u"default"}),
    [](const auto &instance) { return std::string(instance.param.name); });

TEST_F(IniFileTest, utf16FileIsRead)
{
    const QString text = u"[General]\r\nDataFolder=ñ\r\n"_s;
    const QByteArray bytes(reinterpret_cast<const char *>(text.utf16()), text.size() * 2);
    EXPECT_EQ(dataFolder("\xFF\xFE" + bytes), u"ñ"_s);
}

TEST_F(IniFileTest, missingFileGivesTheDefaultWithoutTrailingBlanks)
{
    EXPECT_EQ(ReadIniValue(u"a"_s, u"b"_s, u" c d \t "_s, path()), u" c d"_s);
    EXPECT_EQ(ReadIniValue(u"a"_s, u"b"_s, u"   "_s, path()), QString());
    EXPECT_EQ(ReadIniValue(u"a"_s, u"b"_s, QString(), path()), QString());
}

TEST_F(IniFileTest, folderInPlaceOfTheFileGivesTheDefault)
{
    EXPECT_EQ(ReadIniValue(u"a"_s, u"b"_s, u"c"_s, m_folder.path()), u"c"_s);
}

TEST_F(IniFileTest, missingKeyWithEmptyDefaultGivesEmptyText)
{
    write("[General]\n");
    EXPECT_EQ(ReadIniValue(u"General"_s, u"DataFolder"_s, QString(), path()), QString());
}

TEST_F(IniFileTest, commentIsNoKey)
{
    write("[General]\n;DataFolder=a\n");
    EXPECT_EQ(ReadIniValue(u"General"_s, u";DataFolder"_s, u"none"_s, path()), u"none"_s);
}

TEST_F(IniFileTest, namesAskedForAreTrimmedToo)
{
    write("[General]\nDataFolder=a\n");
    EXPECT_EQ(ReadIniValue(u" general "_s, u"\tDATAFOLDER "_s, QString(), path()), u"a"_s);
}

TEST_F(IniFileTest, valueAndDefaultAreCutAt512Characters)
{
    EXPECT_EQ(dataFolder("[General]\nDataFolder=" + QByteArray(512, 'x') + '\n'),
              QString(512, u'x'));
    EXPECT_EQ(dataFolder("[General]\nDataFolder=" + QByteArray(513, 'x') + '\n'),
              QString(512, u'x'));
    EXPECT_EQ(ReadIniValue(u"a"_s, u"b"_s, QString(600, u'y'), path()), QString(512, u'y'));
}

TEST_F(IniFileTest, valueEndsAtANul)
{
    EXPECT_EQ(dataFolder(QByteArray("[General]\nDataFolder=a\0b\n", 25)), u"a"_s);
}

TEST_F(IniFileTest, damagedFilesGiveSomeTextWithinTheLimit)
{
    const QByteArray good = "; suite\r\n[Other]\r\nDataFolder=a\r\n[General]\r\n DataFolder = "
                            "\"/srv/dato\xC3\xB1s, x\" \r\n[Last]\r\nx='y'\r\n";
    Mutation mutation(21);
    int whole = 0;
    constexpr int rounds = 3000;
    for (int i = 0; i < rounds; ++i) {
        const QString value = dataFolder(mutation.of(good));
        EXPECT_LE(value.size(), 512);
        whole += value == u"/srv/datoñs, x" ? 1 : 0;
    }
    EXPECT_GT(whole, 0);
    EXPECT_LT(whole, rounds);
}

} // namespace

} // namespace norvane
