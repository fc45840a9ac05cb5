#include "NorvaneSMS/console/ConsoleDesign.h"
#include "foundation/cls_Localize.h"

#include <QFontInfo>
#include <QFontMetrics>

#include <gtest/gtest.h>

#include <algorithm>

namespace norvane {

using namespace Qt::StringLiterals;

namespace {

using ConsoleDesign::Kind;

constexpr int twipsPerPixel = 15;
constexpr int frameIndent = 12;  // pixels left of a frame's caption, and right of it
constexpr int buttonMargin = 3;  // pixels around a button's content
constexpr int headerMargin = 4;  // pixels left and right of a column's header
constexpr int linesOnButton = 2; // lines of a caption at most
constexpr int pictureGap = 2;    // pixels between a button's picture and its caption
constexpr int leastPicture = 16; // pixels of height that make a picture out

/// A text that a control shows, with the longest arguments that it normally gets.
struct Shown
{
    const char *control;
    qint32 id;
    QStringList arguments = {};
    QString behind = {};
};

const QList<Shown> &allShown()
{
    static const QList<Shown> shown{
        {"btnDeviceConfig", 3760001},
        {"btnTestDevice", 3760002},
        {"btnSend", 3760003},
        {"btnImport", 3760004},
        {"fraSMSMessage", 3760005},
        {"lblPhone", 3760006},
        {"lblDeliveryDate", 3760007},
        {"fraQueueDetails", 3760008},
        {"fraSentDetails", 3760009, {}, u" ( 100000 )"_s},
        {"fraDeviceStatus", 3760010},
        {"fraDeviceStatus", 3760012},
        {"fraQueueStatus", 3760011},
        {"lblQueueSize", 3760013},
        {"lblQueueSize", 3760025, {u"100000"_s}},
        {"lblEngineStatus", 3760014},
        {"lblEngineStatus", 3760026},
        {"lblDeviceInfo", 3760015},
        {"lblDeviceStatus", 3760019},
        {"lblDeviceStatus", 3760088},
        {"lblSMSChars", 3760027, {u"160"_s, u"160"_s}},
        {"lblEstimated", 3760053, {u"00:00:00"_s}},
        {"fraCommunication", 3760087},
        {"fraCommunication", 3760090},
    };
    return shown;
}

ConsoleDesign::Control control(const char *name)
{
    for (const ConsoleDesign::Control &candidate : ConsoleDesign::controls()) {
        if (candidate.name == QLatin1String(name))
            return candidate;
    }
    ADD_FAILURE() << name << " is no control";
    return {};
}

int widthOf(const ConsoleDesign::Control &design)
{
    return static_cast<int>(design.place.width) / twipsPerPixel;
}

int heightOf(const ConsoleDesign::Control &design)
{
    return static_cast<int>(design.place.height) / twipsPerPixel;
}

class CaptionWidthsTest : public ::testing::TestWithParam<const char *>
{
protected:
    CaptionWidthsTest()
    {
        const QString code = QLatin1String(GetParam());
        EXPECT_TRUE(m_language.Init(
            QStringLiteral(NORVANE_SOURCE_DIR "/resources/language/NorvaneSMS_%1.XML").arg(code),
            code));
    }

    QString text(const Shown &shown) const
    {
        return m_language.GS(shown.id, shown.arguments).remove(u'&') + shown.behind;
    }
    QString text(qint32 id) const { return m_language.GS(id).remove(u'&'); }

    const QFont font{u"Liberation Sans"_s, 8};
    const QFontMetrics metrics{font};

private:
    cls_Localize m_language;
};

INSTANTIATE_TEST_SUITE_P(Each, CaptionWidthsTest, ::testing::Values("ESN", "CAT", "PTG"),
                         [](const auto &language) { return std::string(language.param); });

TEST_P(CaptionWidthsTest, faceIsTheOneThatTheCaptionsWereFittedWith)
{
    EXPECT_EQ(QFontInfo(font).family(), u"Liberation Sans"_s);
}

TEST_P(CaptionWidthsTest, labelsAndFramesHoldTheirTextsInOneLine)
{
    for (const Shown &shown : allShown()) {
        const auto design = control(shown.control);
        if (design.kind == Kind::Button)
            continue;
        const int room = widthOf(design) - (design.kind == Kind::Frame ? 2 * frameIndent : 0);
        EXPECT_LE(metrics.horizontalAdvance(text(shown)), room)
            << shown.control << ' ' << shown.id << ' ' << qPrintable(text(shown));
    }
}

TEST_P(CaptionWidthsTest, labelsAreHighEnoughForALine)
{
    const int inked = metrics.tightBoundingRect(u"ÁÇgjpqy"_s).height();
    for (const Shown &shown : allShown()) {
        const auto design = control(shown.control);
        if (design.kind == Kind::Label || design.kind == Kind::CentredLabel) {
            EXPECT_LE(inked, heightOf(design)) << shown.control;
        }
    }
}

TEST_P(CaptionWidthsTest, buttonsHoldEveryWordAndNoMoreThanTwoLines)
{
    for (const Shown &shown : allShown()) {
        const auto design = control(shown.control);
        if (design.kind != Kind::Button)
            continue;
        const int room = widthOf(design) - 2 * buttonMargin;
        for (const QString &word : text(shown).split(u' '))
            EXPECT_LE(metrics.horizontalAdvance(word), room) << shown.control << qPrintable(word);
        const QRect lines = metrics.boundingRect(QRect(0, 0, room, 1000),
                                                 Qt::TextWordWrap | Qt::AlignHCenter, text(shown));
        EXPECT_LT(lines.height(), (linesOnButton + 1) * metrics.height()) << shown.control;
        EXPECT_GE(heightOf(design) - 2 * buttonMargin - pictureGap - lines.height(), leastPicture)
            << shown.control;
    }
}

TEST_P(CaptionWidthsTest, columnsHoldTheirHeaders)
{
    const std::pair<int, qint32> rows[] = {{0, 3760028}, {0, 3760031}, {1, 3760029}, {2, 3760030}};
    for (const auto &[column, id] : rows) {
        const int width = static_cast<int>(ConsoleDesign::columnWidths[column]) / twipsPerPixel;
        EXPECT_LE(metrics.horizontalAdvance(text(id)), width - 2 * headerMargin) << id;
    }
}

TEST_P(CaptionWidthsTest, everyCaptionOfTheConsoleIsMeasured)
{
    for (const ConsoleDesign::Caption &caption : ConsoleDesign::captions()) {
        const bool measured =
            std::any_of(allShown().cbegin(), allShown().cend(), [&](const Shown &shown) {
                return shown.id == caption.textId &&
                       caption.control == QLatin1String(shown.control);
            });
        EXPECT_TRUE(measured) << caption.textId;
    }
}

/// The frame without a text of its own shows its design text in every language.
TEST_P(CaptionWidthsTest, frameOfTheEngineHoldsItsDesignText)
{
    const auto design = control("fraEngineStatus");
    EXPECT_EQ(design.text, u"Estado"_s);
    EXPECT_LE(metrics.horizontalAdvance(design.text), widthOf(design) - 2 * frameIndent);
}

} // namespace

} // namespace norvane
