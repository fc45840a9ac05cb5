#include "NorvaneSMS/look/WindowsFixture.h"

#include "foundation/ui/CaptionedFrame.h"
#include "foundation/ui/Contrast.h"
#include "foundation/ui/Look.h"

#include <QAbstractButton>
#include <QApplication>
#include <QComboBox>
#include <QHash>
#include <QLabel>
#include <QLineEdit>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QTableView>
#include <QToolTip>

#include <algorithm>
#include <ostream>

namespace norvane {

using namespace Qt::StringLiterals;

namespace {

/// The palettes of desktops.
struct Theme
{
    friend void PrintTo(const Theme &theme, std::ostream *out) { *out << theme.name; }

    const char *name;
    QRgb window, windowText, base, alternateBase, text, button, buttonText, highlight,
        highlightedText;
};

const Theme themes[] = {
    {"Bright", 0xEFEFEF, 0x000000, 0xFFFFFF, 0xF7F7F7, 0x000000, 0xEFEFEF, 0x000000, 0x308CC6,
     0xFFFFFF},
    {"BrightGrey", 0xD4D0C8, 0x101010, 0xFFFFFF, 0xEEEEEE, 0x202020, 0xD4D0C8, 0x101010, 0x99C1F1,
     0x000000},
    {"Dark", 0x31363B, 0xEFF0F1, 0x232629, 0x31363B, 0xEFF0F1, 0x31363B, 0xEFF0F1, 0x3DAEE9,
     0xEFF0F1},
    {"DarkGrey", 0x353535, 0xFFFFFF, 0x2A2A2A, 0x303030, 0xFFFFFF, 0x353535, 0xFFFFFF, 0x2A82DA,
     0x000000},
};

QPalette paletteOf(const Theme &theme)
{
    QPalette colours(QColor(theme.button), QColor(theme.window));
    const std::initializer_list<std::pair<QPalette::ColorRole, QRgb>> roles = {
        {QPalette::Window, theme.window},
        {QPalette::WindowText, theme.windowText},
        {QPalette::Base, theme.base},
        {QPalette::AlternateBase, theme.alternateBase},
        {QPalette::Text, theme.text},
        {QPalette::Button, theme.button},
        {QPalette::ButtonText, theme.buttonText},
        {QPalette::Highlight, theme.highlight},
        {QPalette::HighlightedText, theme.highlightedText}};
    for (const auto &[role, colour] : roles)
        colours.setColor(role, QColor(colour));
    return colours;
}

/// The colour that covers most of `place`: what its text stands on.
QList<QColor> plainGrounds(const QImage &window, const QRect &place)
{
    QHash<QRgb, int> counts;
    for (int y = place.top(); y <= place.bottom(); ++y) {
        for (int x = place.left(); x <= place.right(); ++x)
            ++counts[window.pixel(x, y)];
    }
    const auto max = std::max_element(counts.cbegin(), counts.cend());
    return {QColor(max.key())};
}

/// The colours of a ground that goes from one to another, down the left edge of `place` inside of
/// its outline, where no text stands.
QList<QColor> shadedGrounds(const QImage &window, const QRect &place)
{
    constexpr int outline = 4;
    QList<QColor> colours;
    for (int y = place.top() + outline; y <= place.bottom() - outline; ++y)
        colours.append(window.pixelColor(place.left() + 2, y));
    return colours;
}

bool isShaded(const QWidget &control)
{
    const auto *const list = qobject_cast<const QComboBox *>(&control);
    return qobject_cast<const QPushButton *>(&control) || (list && !list->isEditable());
}

/// The least ratio of `text` and what it stands on.
double leastRatio(const QColor &text, const QList<QColor> &grounds)
{
    double least = 21;
    for (const QColor &ground : grounds)
        least = std::min(least, Contrast::ratio(text, ground));
    return least;
}

QPalette::ColorRole textRole(const QWidget &control)
{
    if (qobject_cast<const QPushButton *>(&control) || qobject_cast<const QComboBox *>(&control))
        return QPalette::ButtonText;
    if (qobject_cast<const QLineEdit *>(&control) ||
        qobject_cast<const QPlainTextEdit *>(&control) ||
        qobject_cast<const QTableView *>(&control))
        return QPalette::Text;
    return QPalette::WindowText;
}

bool showsText(const QWidget &control)
{
    const auto *const button = qobject_cast<const QAbstractButton *>(&control);
    if (button && button->text().isEmpty())
        return false;
    return qobject_cast<const QLabel *>(&control) || qobject_cast<const QLineEdit *>(&control) ||
           qobject_cast<const QPlainTextEdit *>(&control) ||
           qobject_cast<const QTableView *>(&control) ||
           qobject_cast<const CaptionedFrame *>(&control) || isShaded(control) || button;
}

/// Where the text of `control` stands, in its own coordinates.
QRect textPlace(const QWidget &control)
{
    if (qobject_cast<const CaptionedFrame *>(&control))
        return {12, 0, 40, control.fontMetrics().height()};
    return control.rect();
}

QColor textOf(const QWidget &control)
{
    const auto *const frame = qobject_cast<const CaptionedFrame *>(&control);
    const bool enabled = frame ? frame->isFrameEnabled() : control.isEnabled();
    return control.palette().color(enabled ? QPalette::Active : QPalette::Disabled,
                                   textRole(control));
}

class Colours : public WindowsFixture, public ::testing::WithParamInterface<Theme>
{
protected:
    Colours() : m_before(QApplication::palette())
    {
        QApplication::setPalette(readable(paletteOf(GetParam())));
    }
    ~Colours() override
    {
        console.reset();
        QApplication::setPalette(m_before);
    }

    static bool isDark() { return Contrast::isDark(QApplication::palette()); }

    /// Expects every text of `window` to be readable where it stands.
    void expectReadable(QWidget &window)
    {
        const QImage shown = window.grab().toImage();
        for (const auto *const control : window.findChildren<QWidget *>()) {
            const QRect place(control->mapTo(&window, textPlace(*control).topLeft()),
                              textPlace(*control).size());
            if (!showsText(*control) || !control->isVisible() || !shown.rect().contains(place) ||
                place.isEmpty())
                continue;
            ++m_seen;
            const double ratio =
                leastRatio(textOf(*control), isShaded(*control) ? shadedGrounds(shown, place)
                                                                : plainGrounds(shown, place));
            // Its colour is given, and no bright ground takes it further.
            const bool given = control->objectName() == u"lblSMSChars" && !isDark();
            EXPECT_GE(ratio, given ? 2.6 : Contrast::least) << qPrintable(control->objectName());
        }
    }

    int m_seen = 0;

private:
    QPalette m_before;
};

INSTANTIATE_TEST_SUITE_P(Each, Colours, ::testing::ValuesIn(themes),
                         [](const auto &theme) { return std::string(theme.param.name); });

TEST_P(Colours, everyTextOfAServerCanBeReadOnItsGround)
{
    inEveryWindow([this](QWidget &window) { expectReadable(window); });
    EXPECT_GT(m_seen, 50);
}

TEST_P(Colours, everyTextOfAClientCanBeReadOnItsGroundAlsoWhereItIsDisabled)
{
    loadAsClient();
    show();
    expectReadable(*console);
    inDeviceDialog([this](QWidget &window) {
        EXPECT_FALSE(window.findChild<QWidget *>(u"txtPINCode"_s)->isEnabled());
        expectReadable(window);
    });
    EXPECT_GT(m_seen, 30);
}

TEST_P(Colours, rowsAndSelectionsCanBeReadInEveryState)
{
    const QPalette colours = QApplication::palette();
    for (const QPalette::ColorGroup group :
         {QPalette::Active, QPalette::Inactive, QPalette::Disabled}) {
        const auto ratio = [&](QPalette::ColorRole text, QPalette::ColorRole ground) {
            return Contrast::ratio(colours.color(group, text), colours.color(group, ground));
        };
        EXPECT_GE(ratio(QPalette::HighlightedText, QPalette::Highlight), Contrast::least);
        EXPECT_GE(ratio(QPalette::Text, QPalette::Base), Contrast::least);
        EXPECT_GE(ratio(QPalette::ButtonText, QPalette::Button), Contrast::least);
        EXPECT_GE(ratio(QPalette::WindowText, QPalette::Window), Contrast::least);
    }
    EXPECT_GE(
        Contrast::ratio(colours.color(QPalette::Text), colours.color(QPalette::AlternateBase)),
        Contrast::least);
    EXPECT_GE(Contrast::ratio(QToolTip::palette().color(QPalette::ToolTipText),
                              QToolTip::palette().color(QPalette::ToolTipBase)),
              Contrast::least);
}

TEST_P(Colours, disabledTextsCanBeToldFromEnabledOnes)
{
    const QPalette colours = QApplication::palette();
    for (const QPalette::ColorRole role :
         {QPalette::WindowText, QPalette::Text, QPalette::ButtonText})
        EXPECT_GE(Contrast::ratio(colours.color(QPalette::Active, role),
                                  colours.color(QPalette::Disabled, role)),
                  1.4);
}

TEST_P(Colours, rowThatFailedStandsOnTheGroundOnWhichRedReadsBest)
{
    loadAsServer();
    Q_EMIT engine()->SMSSent(u"1"_s, u"a"_s, 0);
    Q_EMIT engine()->SMSSentFailed(u"2"_s, u"b"_s, -1);
    const QAbstractItemModel *const rows = control<QTableView>("grdSentDetails")->model();
    const QModelIndex failed = rows->index(1, 1);
    const auto red = failed.data(Qt::ForegroundRole).value<QColor>();
    const auto ground = failed.data(Qt::BackgroundRole).value<QColor>();
    EXPECT_EQ(red, QColor(255, 0, 0));
    EXPECT_EQ(ground, isDark() ? QColor(Qt::black) : QColor(Qt::white));
    // Pure red on white stops short of the measure.
    EXPECT_GE(Contrast::ratio(red, ground), isDark() ? Contrast::least : 3.9);
    EXPECT_FALSE(rows->index(0, 1).data(Qt::BackgroundRole).isValid());
}

TEST_P(Colours, theCountersGivenColourStaysAndADarkWindowGivesItAGround)
{
    loadAsServer();
    show();
    const auto *const counter = control<QLabel>("lblSMSChars");
    EXPECT_EQ(counter->palette().color(QPalette::WindowText), QColor(0x66, 0x7E, 0xA2));
    EXPECT_EQ(counter->autoFillBackground(), isDark());
}

TEST_P(Colours, theCounterIsNotCutOffByItsLowLabel)
{
    loadAsServer();
    show();
    const QImage shown = control("lblSMSChars")->grab().toImage();
    const QRgb ground = shown.pixel(shown.width() - 1, 0);
    for (int x = 0; x < shown.width(); ++x)
        ASSERT_EQ(shown.pixel(x, shown.height() - 1), ground) << x;
}

} // namespace

} // namespace norvane
