#include "foundation/cls_Localize.h"

#include "common/NumberedFailure.h"
#include "foundation/Globals.h"
#include "foundation/LanguageFile.h"
#include "foundation/Mutation.h"

#include <QFile>
#include <QTemporaryDir>

#include <gtest/gtest.h>

#include <sys/stat.h>

namespace norvane {

using namespace Qt::StringLiterals;

namespace {

class LocalizeTest : public testing::Test
{
protected:
    QString write(const QByteArray &bytes)
    {
        const QString path = m_folder.filePath(u"NorvaneSMS_ESN.XML"_s);
        QFile file(path);
        file.remove();
        EXPECT_TRUE(file.open(QIODevice::WriteOnly));
        EXPECT_EQ(file.write(bytes), bytes.size());
        return path;
    }

    /// The language object over a file with these rows.
    cls_Localize &over(const QByteArray &rows)
    {
        EXPECT_TRUE(m_localize.Init(write(LanguageFile::with(rows)), u"ESN"_s));
        return m_localize;
    }

    static qint32 failureOf(const cls_Localize &localize)
    {
        try {
            localize.GS(14);
        } catch (const NumberedFailure &failure) {
            EXPECT_EQ(failure.source(), u"cls_Localize"_s);
            EXPECT_EQ(failure.description(),
                      u"Operation is not allowed when the object is closed."_s);
            return failure.number();
        }
        return 0;
    }

    QTemporaryDir m_folder;
    cls_Localize m_localize;
};

TEST_F(LocalizeTest, languageIdIsEmptyUntilInit)
{
    EXPECT_EQ(m_localize.LanguageID(), QString());
    over(LanguageFile::row("14", "Aceptar"));
    EXPECT_EQ(m_localize.LanguageID(), u"ESN"_s);
}

TEST_F(LocalizeTest, languageIdIsKeptWhenTheFileFails)
{
    EXPECT_FALSE(m_localize.Init(m_folder.filePath(u"none"_s), u"CAT"_s));
    EXPECT_EQ(m_localize.LanguageID(), u"CAT"_s);
}

TEST_F(LocalizeTest, textOfANumberIsFound)
{
    const auto &localize =
        over(LanguageFile::row("14", "Aceptar") + LanguageFile::row("-3", "menos") +
             LanguageFile::row("3760000", "Teléfono") + LanguageFile::row("2147483647", "fin"));
    EXPECT_EQ(localize.GS(14), u"Aceptar"_s);
    EXPECT_EQ(localize.GS(-3), u"menos"_s);
    EXPECT_EQ(localize.GS(3760000), u"Teléfono"_s);
    EXPECT_EQ(localize.GS(2147483647), u"fin"_s);
}

TEST_F(LocalizeTest, firstOfTwoRowsWithTheSameNumberWins)
{
    const auto &localize =
        over(LanguageFile::row("14", "first") + LanguageFile::row("14", "second"));
    EXPECT_EQ(localize.GS(14), u"first"_s);
}

TEST_F(LocalizeTest, missingNumberGivesItselfAndTwelveQuestionMarks)
{
    const auto &localize = over(LanguageFile::row("14", "Aceptar"));
    EXPECT_EQ(localize.GS(3760091), u"3760091\\"_s + QString(12, QChar(u'?')));
    EXPECT_EQ(localize.GS(-5, {u"x"_s}), u"-5\\"_s + QString(12, QChar(u'?')));
}

struct Filling
{
    const char *name;
    const char *text;
    QStringList arguments;
    QString expected;
};

class FillingTest : public LocalizeTest, public testing::WithParamInterface<Filling>
{};

TEST_P(FillingTest, placeholdersAndEscapes)
{
    const auto &localize = over(LanguageFile::row("14", GetParam().text));
    EXPECT_EQ(localize.GS(14, GetParam().arguments), GetParam().expected);
}

INSTANTIATE_TEST_SUITE_P(
    Texts, FillingTest,
    testing::Values(
        Filling{"none", "plain", {}, u"plain"_s},
        Filling{"everyOccurrence", "%2 %1 %2", {u"a"_s, u"b"_s}, u"b a b"_s},
        Filling{"startOfALongerNumber", "%10", {u"x"_s}, u"x0"_s},
        Filling{"tenthAfterFirst",
                "%10",
                {u"a"_s, u"b"_s, u"c"_s, u"d"_s, u"e"_s, u"f"_s, u"g"_s, u"h"_s, u"i"_s, u"j"_s},
                u"a0"_s},
        Filling{"withoutItsArgument", "%1 %2", {u"x"_s}, u"x %2"_s},
        Filling{"noArguments", "%1", {}, u"%1"_s},
        Filling{"surplusArguments", "%1", {u"a"_s, u"b"_s, u"c"_s}, u"a"_s},
        Filling{"placeholderBroughtByEarlierArgument", "%1", {u"%2!"_s, u"b"_s}, u"b!"_s},
        Filling{"placeholderBroughtByLaterArgument", "%2", {u"a"_s, u"%1"_s}, u"%1"_s},
        Filling{"escapes", "a{\\CrLf}b{\\Cr}c{\\Tab}d{\\Tab}", {}, u"a\r\nb\rc\td\t"_s},
        Filling{
            "escapesAreExact", "{\\crlf}{\\CR}{\\tab}{/Tab}", {}, u"{\\crlf}{\\CR}{\\tab}{/Tab}"_s},
        Filling{"escapeInAnArgument", "%1", {u"x{\\Tab}y"_s}, u"x\ty"_s},
        Filling{"escapeMadeByAnArgument", "{\\%1}", {u"Cr"_s}, u"\r"_s},
        Filling{"emptyText", "", {u"a"_s}, u""_s}),
    [](const auto &instance) { return std::string(instance.param.name); });

TEST_F(LocalizeTest, rowWithoutTextGivesEmptyTextWhateverTheArguments)
{
    const auto &localize = over(" <z:row ResID='16'/>\n");
    EXPECT_EQ(localize.GS(16), QString());
    EXPECT_EQ(localize.GS(16, {u"a"_s}), QString());
}

TEST_F(LocalizeTest, rowWithoutNumberIsNeverFound)
{
    const auto &localize = over(" <z:row ResSTring='lost'/>\n" + LanguageFile::row("14", "found"));
    EXPECT_TRUE(localize.GS(0).startsWith(u"0\\"));
    EXPECT_EQ(localize.GS(14), u"found"_s);
}

TEST_F(LocalizeTest, numberBeyondThirtyTwoBitsIsNeverFound)
{
    const auto &localize =
        over(LanguageFile::row("4294967310", "lost") + LanguageFile::row("16", "found"));
    EXPECT_TRUE(localize.GS(14).startsWith(u"14\\"));
    EXPECT_EQ(localize.GS(16), u"found"_s);
}

TEST_F(LocalizeTest, numberThatIsNoneMakesTheFileBad)
{
    for (const char *id : {"", "x", "14.5", "14 15", "99999999999999999999"}) {
        const QString path = write(LanguageFile::with(LanguageFile::row(id, "text")));
        EXPECT_FALSE(m_localize.Init(path, u"ESN"_s)) << id;
    }
}

TEST_F(LocalizeTest, useBeforeInitFails)
{
    EXPECT_EQ(failureOf(m_localize), 3704);
}

TEST_F(LocalizeTest, useAfterAFailedInitFails)
{
    EXPECT_FALSE(m_localize.Init(write("no table"), u"ESN"_s));
    EXPECT_EQ(failureOf(m_localize), 3704);
}

TEST_F(LocalizeTest, tableWithoutRowsGivesFalse)
{
    EXPECT_FALSE(m_localize.Init(write(LanguageFile::with("")), u"ESN"_s));
    EXPECT_EQ(failureOf(m_localize), 3704);
}

TEST_F(LocalizeTest, nothingRemainsOfRowsBeforeAFault)
{
    const QString path =
        write(LanguageFile::with(LanguageFile::row("14", "Aceptar") + "<z:row ResID='15'>"));
    EXPECT_FALSE(m_localize.Init(path, u"ESN"_s));
    EXPECT_EQ(failureOf(m_localize), 3704);
}

TEST_F(LocalizeTest, whatIsNoReadableFileGivesFalse)
{
    const QString pipe = m_folder.filePath(u"pipe"_s);
    ASSERT_EQ(::mkfifo(QFile::encodeName(pipe).constData(), 0600), 0);
    for (const QString &path : {m_folder.filePath(u"none"_s), m_folder.path(), pipe, QString(),
                                m_folder.path() + QChar(QChar::Null) + u'x', u"/dev/zero"_s})
        EXPECT_FALSE(m_localize.Init(path, u"ESN"_s)) << path.toStdString();
}

TEST_F(LocalizeTest, hundredMegabytesOfNestedElementsAreTurnedDown)
{
    const QString path = m_folder.filePath(u"nested.XML"_s);
    QFile file(path);
    ASSERT_TRUE(file.open(QIODevice::WriteOnly));
    const QByteArray block = QByteArray("<a>").repeated(350'000);
    for (int i = 0; i < 100; ++i)
        ASSERT_EQ(file.write(block), block.size());
    file.close();
    EXPECT_FALSE(m_localize.Init(path, u"ESN"_s));
}

TEST_F(LocalizeTest, damagedFilesAreReadOrTurnedDown)
{
    const QByteArray good = LanguageFile::with(LanguageFile::row("0", "%1") +
                                               LanguageFile::row("14", "Aceptar &amp; m&#225;s") +
                                               LanguageFile::row("3760000", "Teléfono{\\CrLf}%1"));
    Mutation mutation(20);
    int read = 0;
    constexpr int rounds = 3000;
    for (int i = 0; i < rounds; ++i) {
        cls_Localize localize;
        if (localize.Init(write(mutation.of(good)), u"ESN"_s)) {
            ++read;
            EXPECT_NO_THROW(localize.GS(14, {u"x"_s}));
        } else {
            EXPECT_EQ(failureOf(localize), 3704);
        }
    }
    // Both outcomes must have been seen, or the mutations say nothing.
    EXPECT_GT(read, 0);
    EXPECT_LT(read, rounds);
}

TEST_F(LocalizeTest, freeFunctionFailsWhileNoFileIsLoaded)
{
    goLocalize.reset();
    try {
        GS(14);
        FAIL() << "no failure";
    } catch (const NumberedFailure &failure) {
        EXPECT_EQ(failure.number(), 91);
        EXPECT_EQ(failure.description(), u"Object variable or With block variable not set"_s);
    }
}

TEST_F(LocalizeTest, freeFunctionFillsTextsAndNumbers)
{
    goLocalize = std::make_unique<cls_Localize>();
    ASSERT_TRUE(
        goLocalize->Init(write(LanguageFile::with(LanguageFile::row("16", "%1: %2"))), u"ESN"_s));
    EXPECT_EQ(GS(16, u"total"_s, 12), u"total: 12"_s);
    goLocalize.reset();
}

} // namespace

} // namespace norvane
