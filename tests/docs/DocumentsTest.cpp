#include "docs/Markdown.h"

#include "foundation/ErrorText.h"

#include <QDir>
#include <QDirIterator>
#include <QFileInfo>
#include <QRegularExpression>
#include <QSet>

#include <gtest/gtest.h>

namespace norvane {

using namespace Qt::StringLiterals;

namespace {

const QString root = QStringLiteral(NORVANE_SOURCE_DIR "/");

bool isThere(const QString &path)
{
    return QFileInfo::exists(root + path);
}

bool leadsOutside(const QString &target)
{
    static const QRegularExpression scheme(u"\\A[a-z]+:"_s);
    return scheme.match(target).hasMatch();
}

/// Where a link of `document` leads, from the project's root.
QString fileOf(const QString &document, const QString &target)
{
    const QString file = target.section(u'#', 0, 0);
    return file.isEmpty() ? document : QDir::cleanPath(QFileInfo(document).path() + u'/' + file);
}

/// Every test as "Suite.name", and the cases of the scripts that ctest runs.
QSet<QString> allTests()
{
    static const QRegularExpression test(
        u"^(?:TEST|TEST_F|TEST_P|TYPED_TEST)\\(\\s*(\\w+),\\s*(\\w+)\\s*\\)"_s,
        QRegularExpression::MultilineOption);
    QSet<QString> result;
    QDirIterator files(root + u"tests"_s, {u"*.cpp"_s}, QDir::Files, QDirIterator::Subdirectories);
    while (files.hasNext()) {
        const QString text = Markdown::textOf(files.next().mid(root.size()));
        for (auto matches = test.globalMatch(text); matches.hasNext();) {
            const auto match = matches.next();
            result.insert(match.captured(1) + u'.' + match.captured(2));
        }
    }
    const QString scripts = Markdown::textOf(u"tests/system/CMakeLists.txt"_s);
    for (const QString &cases : Markdown::captured(u"^foreach\\(case ([^)]+)\\)"_s, scripts)) {
        for (const QString &name : cases.split(u' ', Qt::SkipEmptyParts))
            result.insert(u"queue_folder_test."_s + name);
    }
    return result;
}

/// The tests that a section says it is pinned by.
QStringList pinsOf(const QString &section)
{
    QStringList result;
    for (const QString &paragraph :
         Markdown::captured(u"^(Pinned by(?:[^\\n]|\\n(?!\\n))*)"_s, section))
        result += Markdown::codeSpans(paragraph);
    return result;
}

TEST(Documents, everyLinkAndPictureLeadsToAFile)
{
    int links = 0;
    for (const QString &document : Markdown::documents()) {
        for (const QString &target : Markdown::linkTargets(Markdown::textOf(document))) {
            if (leadsOutside(target))
                continue;
            ++links;
            EXPECT_TRUE(isThere(fileOf(document, target)))
                << qPrintable(document) << ": " << qPrintable(target);
        }
    }
    EXPECT_GT(links, 50);
}

TEST(Documents, everyLinkIntoADocumentLeadsToAHeading)
{
    int links = 0;
    for (const QString &document : Markdown::documents()) {
        for (const QString &target : Markdown::linkTargets(Markdown::textOf(document))) {
            if (leadsOutside(target) || !target.contains(u'#'))
                continue;
            ++links;
            const QStringList anchors =
                Markdown::anchors(Markdown::textOf(fileOf(document, target)));
            EXPECT_TRUE(anchors.contains(target.section(u'#', 1)))
                << qPrintable(document) << ": " << qPrintable(target);
        }
    }
    EXPECT_GT(links, 5);
}

TEST(Documents, everyPictureIsShownInOne)
{
    QSet<QString> shown;
    for (const QString &document : Markdown::documents()) {
        for (const QString &target : Markdown::linkTargets(Markdown::textOf(document)))
            shown.insert(fileOf(document, target));
    }
    const QStringList pictures = QDir(root + u"docs/images"_s).entryList(QDir::Files);
    EXPECT_FALSE(pictures.isEmpty());
    for (const QString &picture : pictures)
        EXPECT_TRUE(shown.contains(u"docs/images/"_s + picture)) << qPrintable(picture);
}

TEST(Documents, everySurpriseNamesTestsThatExist)
{
    const QSet<QString> tests = allTests();
    const auto sections = Markdown::sections(Markdown::textOf(u"docs/surprises.md"_s));
    EXPECT_GT(sections.size(), 50);
    for (const auto &[heading, section] : sections) {
        const QStringList pins = pinsOf(section);
        EXPECT_FALSE(pins.isEmpty()) << qPrintable(heading);
        for (const QString &pin : pins)
            EXPECT_TRUE(tests.contains(pin)) << qPrintable(heading) << ": " << qPrintable(pin);
    }
}

TEST(Documents, everyPathTheyNameIsThere)
{
    static const QRegularExpression path(
        u"\\A(?:src|tests|tools|docs|resources|packaging|bench|cmake)/[\\w./-]*\\w/?\\z"_s);
    static const QRegularExpression source(
        u"\\A(?:common|contract|foundation|NorvaneSMS|NorvaneHistory|NorvaneSheetReader|TovekSMService|gsm-simulator)/[\\w./-]+\\z"_s);
    int paths = 0;
    for (const QString &document : Markdown::documents()) {
        for (const QString &span : Markdown::codeSpans(Markdown::textOf(document))) {
            if (path.match(span).hasMatch()) {
                ++paths;
                EXPECT_TRUE(isThere(span)) << qPrintable(document) << ": " << qPrintable(span);
            } else if (source.match(span).hasMatch()) {
                ++paths;
                const QString file = u"src/"_s + span;
                EXPECT_TRUE(isThere(file) || isThere(file + u".h"_s) || isThere(file + u".cpp"_s))
                    << qPrintable(document) << ": " << qPrintable(span);
            }
        }
    }
    EXPECT_GT(paths, 50);
}

TEST(Documents, everyErrorWordStandsBesideItsNumber)
{
    static const QRegularExpression pair(u"`(ERR_\\w+)`(?: \\((-\\d+)\\))?"_s);
    int words = 0;
    for (const QString &document : Markdown::documents()) {
        const QString text = Markdown::prose(Markdown::textOf(document));
        for (auto matches = pair.globalMatch(text); matches.hasNext();) {
            const auto match = matches.next();
            ++words;
            EXPECT_EQ(GetErrorText(match.captured(2).toInt()), match.captured(1))
                << qPrintable(document);
        }
    }
    EXPECT_GT(words, 20);
}

TEST(Documents, theExamplesOnTheBusCallWhatTheInterfaceDeclares)
{
    const QString interface = Markdown::textOf(u"src/contract/com.tovek.SMService.xml"_s);
    const QStringList declared =
        Markdown::captured(u"<(?:method|signal) name=\"(\\w+)\""_s, interface);
    ASSERT_FALSE(declared.isEmpty());
    const QString text = Markdown::textOf(u"docs/administration.md"_s);
    const QStringList called =
        Markdown::captured(u"(?:^sms |^orders |^tell |SMSManager1\\.)([A-Z]\\w+)"_s, text);
    EXPECT_GT(called.size(), 10);
    for (const QString &name : called)
        EXPECT_TRUE(declared.contains(name)) << qPrintable(name);
}

} // namespace

} // namespace norvane
