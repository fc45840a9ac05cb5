#include "docs/Markdown.h"

#include "NorvaneSMS/engine/ErrorText.h"

#include <QDir>
#include <QDirIterator>
#include <QFileInfo>
#include <QRegularExpression>
#include <QSet>

#include <gtest/gtest.h>

namespace {

const QString Root = QStringLiteral(NORVANE_SOURCE_DIR "/");

bool isThere(const QString &path)
{
    return QFileInfo::exists(Root + path);
}

bool leadsOutside(const QString &target)
{
    static const QRegularExpression scheme(u"\\A[a-z]+:"_qs);
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
        u"^(?:TEST|TEST_F|TEST_P|TYPED_TEST)\\(\\s*(\\w+),\\s*(\\w+)\\s*\\)"_qs,
        QRegularExpression::MultilineOption);
    QSet<QString> result;
    QDirIterator files(Root + u"tests"_qs, {u"*.cpp"_qs}, QDir::Files,
                       QDirIterator::Subdirectories);
    while (files.hasNext()) {
        const QString text = Markdown::textOf(files.next().mid(Root.size()));
        for (auto matches = test.globalMatch(text); matches.hasNext();) {
            const auto match = matches.next();
            result.insert(match.captured(1) + u'.' + match.captured(2));
        }
    }
    const QString scripts = Markdown::textOf(u"tests/system/CMakeLists.txt"_qs);
    for (const QString &cases : Markdown::captured(u"^foreach\\(case ([^)]+)\\)"_qs, scripts)) {
        for (const QString &name : cases.split(u' ', Qt::SkipEmptyParts))
            result.insert(u"queue_folder_test."_qs + name);
    }
    return result;
}

/// The tests that a section says it is pinned by.
QStringList pinsOf(const QString &section)
{
    QStringList result;
    for (const QString &paragraph :
         Markdown::captured(u"^(Pinned by(?:[^\\n]|\\n(?!\\n))*)"_qs, section))
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
    const QStringList pictures = QDir(Root + u"docs/images"_qs).entryList(QDir::Files);
    EXPECT_FALSE(pictures.isEmpty());
    for (const QString &picture : pictures)
        EXPECT_TRUE(shown.contains(u"docs/images/"_qs + picture)) << qPrintable(picture);
}

TEST(Documents, everySurpriseNamesTestsThatExist)
{
    const QSet<QString> tests = allTests();
    const auto sections = Markdown::sections(Markdown::textOf(u"docs/surprises.md"_qs));
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
        u"\\A(?:src|tests|tools|docs|resources|packaging|bench|cmake)/[\\w./-]*\\w/?\\z"_qs);
    static const QRegularExpression source(
        u"\\A(?:common|contract|foundation|NorvaneSMS|NorvaneSheetReader|TovekSMService|gsm-simulator)/[\\w./-]+\\z"_qs);
    int paths = 0;
    for (const QString &document : Markdown::documents()) {
        for (const QString &span : Markdown::codeSpans(Markdown::textOf(document))) {
            if (path.match(span).hasMatch()) {
                ++paths;
                EXPECT_TRUE(isThere(span)) << qPrintable(document) << ": " << qPrintable(span);
            } else if (source.match(span).hasMatch()) {
                ++paths;
                const QString file = u"src/"_qs + span;
                EXPECT_TRUE(isThere(file) || isThere(file + u".h"_qs) || isThere(file + u".cpp"_qs))
                    << qPrintable(document) << ": " << qPrintable(span);
            }
        }
    }
    EXPECT_GT(paths, 50);
}

TEST(Documents, everyErrorWordStandsBesideItsNumber)
{
    static const QRegularExpression pair(u"`(ERR_\\w+)`(?: \\((-\\d+)\\))?"_qs);
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
    const QString interface = Markdown::textOf(u"src/contract/com.tovek.SMService.xml"_qs);
    const QStringList declared =
        Markdown::captured(u"<(?:method|signal) name=\"(\\w+)\""_qs, interface);
    ASSERT_FALSE(declared.isEmpty());
    const QString text = Markdown::textOf(u"docs/administration.md"_qs);
    const QStringList called =
        Markdown::captured(u"(?:^sms |^tell |SMSManager1\\.)([A-Z]\\w+)"_qs, text);
    EXPECT_GT(called.size(), 10);
    for (const QString &name : called)
        EXPECT_TRUE(declared.contains(name)) << qPrintable(name);
}

} // namespace
