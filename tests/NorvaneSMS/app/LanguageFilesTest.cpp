#include "common/CodePages.h"
#include "foundation/cls_Localize.h"

#include <QDirIterator>
#include <QFile>
#include <QMap>
#include <QRegularExpression>
#include <QSet>

#include <gtest/gtest.h>

#include <algorithm>
#include <functional>

namespace norvane {

using namespace Qt::StringLiterals;

namespace {

QString fileOf(const QString &language)
{
    return QStringLiteral(NORVANE_SOURCE_DIR "/resources/language/NorvaneSMS_%1.XML").arg(language);
}

QByteArray contentOf(const QString &path)
{
    QFile file(path);
    EXPECT_TRUE(file.open(QIODevice::ReadOnly)) << qPrintable(path);
    return file.readAll();
}

QList<qint32> numbersIn(const QRegularExpression &pattern, const QString &text)
{
    QList<qint32> result;
    auto matches = pattern.globalMatch(text);
    while (matches.hasNext())
        result.append(matches.next().captured(1).toInt());
    return result;
}

/// The ids of the file's rows, in their order.
QList<qint32> idsOf(const QString &language)
{
    static const QRegularExpression id(u"ResID=\"(-?\\d+)\""_s);
    return numbersIn(id, QString::fromUtf8(contentOf(fileOf(language))));
}

/// All texts of the file by number, as the program reads them, placeholders unfilled.
QMap<qint32, QString> textsOf(const QString &language)
{
    cls_Localize file;
    EXPECT_TRUE(file.Init(fileOf(language), language));
    QMap<qint32, QString> texts;
    for (const qint32 id : idsOf(language))
        texts.insert(id, file.GS(id));
    return texts;
}

QStringList placeholdersOf(const QString &text)
{
    static const QRegularExpression placeholder(u"%\\d+"_s);
    QStringList result;
    auto matches = placeholder.globalMatch(text);
    while (matches.hasNext())
        result.append(matches.next().captured());
    std::sort(result.begin(), result.end());
    return result;
}

/// The ids that the sources name: 0, 14 and 16 as arguments of GS, all others wherever they stand.
QSet<qint32> idsInUse()
{
    static const QRegularExpression large(u"\\b(37[67]\\d{4})\\b"_s);
    static const QRegularExpression small(u"\\bGS\\((0|14|16)\\b"_s);
    QSet<qint32> result;
    QDirIterator files(QStringLiteral(NORVANE_SOURCE_DIR "/src"), {u"*.cpp"_s, u"*.h"_s},
                       QDir::Files, QDirIterator::Subdirectories);
    while (files.hasNext()) {
        const QString text = QString::fromUtf8(contentOf(files.next()));
        for (const auto &pattern : {large, small}) {
            for (const qint32 id : numbersIn(pattern, text))
                result.insert(id);
        }
    }
    return result;
}

class LanguageFilesTest : public ::testing::TestWithParam<const char *>
{
protected:
    QString language() const { return QLatin1String(GetParam()); }
    QMap<qint32, QString> texts() const { return textsOf(language()); }
};

INSTANTIATE_TEST_SUITE_P(Each, LanguageFilesTest, ::testing::Values("ESN", "CAT", "PTG"),
                         [](const auto &language) { return std::string(language.param); });

TEST_P(LanguageFilesTest, fileLoads)
{
    cls_Localize file;
    EXPECT_TRUE(file.Init(fileOf(language()), language()));
    EXPECT_EQ(file.LanguageID(), language());
}

TEST_P(LanguageFilesTest, idsAscendAndAreThoseOfTheSpanishFile)
{
    const QList<qint32> ids = idsOf(language());
    EXPECT_GT(ids.size(), 60);
    EXPECT_EQ(std::adjacent_find(ids.begin(), ids.end(), std::greater_equal<>()), ids.end());
    EXPECT_EQ(ids, idsOf(u"ESN"_s));
}

TEST_P(LanguageFilesTest, everyIdThatTheSourcesNameHasAText)
{
    const QSet<qint32> used = idsInUse();
    // The search found what it has to find.
    for (const qint32 id :
         {3760000, 3760003, 3760023, 3760032, 3760054, 3760090, 3770001, 3770046, 3770096})
        ASSERT_TRUE(used.contains(id)) << id;
    const QMap<qint32, QString> have = texts();
    for (const qint32 id : used)
        EXPECT_TRUE(have.contains(id)) << id;
}

TEST_P(LanguageFilesTest, everyTextThatTheConsoleAndItsDialogsShowIsThere)
{
    QList<qint32> ids{0, 14, 16, 3760087, 3760088, 3760090};
    for (qint32 id = 3760000; id <= 3760056; ++id)
        ids.append(id);
    const QMap<qint32, QString> have = texts();
    for (const qint32 id : ids)
        EXPECT_FALSE(have.value(id).isEmpty()) << id;
    EXPECT_FALSE(have.contains(3760091)); // stays free, as a number without a text
}

TEST_P(LanguageFilesTest, everyTextThatTheHistoryShowsIsThere)
{
    const QMap<qint32, QString> have = texts();
    for (qint32 id = 3770001; id <= 3770096; ++id)
        EXPECT_FALSE(have.value(id).isEmpty()) << id;
}

TEST_P(LanguageFilesTest, titleOfBoxesIsTheProgramNameAlone)
{
    EXPECT_EQ(texts().value(0), u"%1"_s);
}

TEST_P(LanguageFilesTest, placeholdersAreThoseThatTheProgramFills)
{
    const QMap<qint32, int> arguments{
        {0, 1},       {3760017, 1}, {3760023, 1}, {3760024, 3}, {3760025, 1}, {3760027, 2},
        {3760053, 1}, {3760054, 3}, {3760120, 1}, {3760121, 1}, {3760122, 1}, {3760123, 1},
        {3760124, 1}, {3760126, 1}, {3760128, 1}, {3770045, 2}, {3770046, 1}, {3770049, 1},
        {3770061, 1}, {3770062, 1}, {3770063, 1}, {3770064, 1}, {3770065, 1}, {3770067, 2},
        {3770069, 1}, {3770070, 1}, {3770071, 1}, {3770076, 1}, {3770077, 1}, {3770096, 1}};
    const QMap<qint32, QString> have = texts();
    for (auto text = have.cbegin(); text != have.cend(); ++text) {
        QStringList expected;
        for (int n = 1; n <= arguments.value(text.key()); ++n)
            expected.append(u'%' + QString::number(n));
        EXPECT_EQ(placeholdersOf(text.value()), expected) << text.key();
    }
}

TEST_P(LanguageFilesTest, everyEscapeIsOneThatTheReaderKnows)
{
    const QMap<qint32, QString> have = texts(); // known escapes are replaced by now
    for (auto text = have.cbegin(); text != have.cend(); ++text) {
        for (const QChar sign : {u'{', u'}', u'\\'})
            EXPECT_FALSE(text.value().contains(sign)) << text.key();
    }
    EXPECT_TRUE(have.value(3760017).contains(u"\r\n"));
    EXPECT_TRUE(have.value(3760018).endsWith(u"\r\n"));
}

TEST_P(LanguageFilesTest, textsSurviveTheAnsiCodePage)
{
    const QMap<qint32, QString> have = texts();
    for (auto text = have.cbegin(); text != have.cend(); ++text)
        EXPECT_EQ(CodePages::fromAnsi(CodePages::toAnsi(text.value())), text.value()) << text.key();
}

TEST_P(LanguageFilesTest, textsFitTheColumnAndHaveNoStrayBlanks)
{
    const QMap<qint32, QString> have = texts();
    for (auto text = have.cbegin(); text != have.cend(); ++text) {
        EXPECT_LE(text.value().size(), 255) << text.key();
        EXPECT_FALSE(text.value().startsWith(u' ') || text.value().endsWith(u' ')) << text.key();
        EXPECT_FALSE(text.value().contains(u"  ")) << text.key();
    }
}

TEST_P(LanguageFilesTest, onlyCaptionsThatCanTakeItHaveAMnemonic)
{
    const QSet<qint32> captions{14,      16,      3760001, 3760002, 3760003, 3760004, 3760006,
                                3760007, 3760037, 3760038, 3760039, 3760040, 3760043, 3760044,
                                3760045, 3760046, 3760047, 3760048, 3760049, 3770002, 3770003,
                                3770004, 3770005, 3770007, 3770014, 3770015, 3770052, 3770053,
                                3770054, 3770055, 3770056, 3770057, 3770058, 3770059, 3770072};
    const QMap<qint32, QString> have = texts();
    for (auto text = have.cbegin(); text != have.cend(); ++text) {
        EXPECT_EQ(text.value().count(u'&'), captions.contains(text.key()) ? 1 : 0) << text.key();
        const qsizetype sign = text.value().indexOf(u'&');
        EXPECT_TRUE(sign < 0 || text.value().at(sign + 1).isLetter()) << text.key();
    }
}

TEST_P(LanguageFilesTest, everyNameForScreenReadersIsThere)
{
    const QMap<qint32, QString> have = texts();
    for (qint32 id = 3760100; id <= 3760109; ++id)
        EXPECT_FALSE(have.value(id).isEmpty()) << id;
}

TEST_P(LanguageFilesTest, fileBesideTheProgramsIsTheSame)
{
    const QString installed = QStringLiteral(NORVANE_BIN_DIR "/NorvaneSMS_%1.XML").arg(language());
    EXPECT_EQ(contentOf(installed), contentOf(fileOf(language())));
}

} // namespace

} // namespace norvane
