#include "foundation/ui/ConsoleStyle.h"

#include "foundation/ui/Contrast.h"
#include "foundation/ui/SvgPicture.h"

#include <QApplication>
#include <QCheckBox>
#include <QComboBox>
#include <QDateEdit>
#include <QLineEdit>
#include <QMessageBox>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QRadioButton>

#include <gtest/gtest.h>

#include <memory>

namespace norvane {

using namespace Qt::StringLiterals;

namespace {

QPalette darkColours()
{
    QPalette colours(QColor(0x31, 0x36, 0x3B));
    colours.setColor(QPalette::Base, QColor(0x23, 0x26, 0x29));
    return colours;
}

/// The brightest part of the left edge of `control`, halfway down.
int edgeBrightness(QWidget &control)
{
    const QImage shown = control.grab().toImage();
    int brightest = 0;
    for (int x = 0; x < 2; ++x)
        brightest = std::max(brightest, qGray(shown.pixel(x, shown.height() / 2)));
    return brightest;
}

class ConsoleStyleTest : public ::testing::Test
{
protected:
    template <typename Control>
    std::unique_ptr<Control> made(const QPalette &colours)
    {
        auto control = std::make_unique<Control>();
        control->setStyle(&style);
        control->setPalette(colours);
        control->resize(100, 40);
        return control;
    }

    ConsoleStyle style;
};

TEST_F(ConsoleStyleTest, boxesShowTheProgramsOwnPictures)
{
    const std::pair<QStyle::StandardPixmap, const char *> rows[] = {
        {QStyle::SP_MessageBoxQuestion, ":/images/box-question.svg"},
        {QStyle::SP_MessageBoxWarning, ":/images/box-warning.svg"},
        {QStyle::SP_MessageBoxCritical, ":/images/box-critical.svg"},
        {QStyle::SP_MessageBoxInformation, ":/images/box-information.svg"}};
    for (const auto &[picture, file] : rows) {
        const QImage shown = style.standardIcon(picture, nullptr, nullptr).pixmap(32).toImage();
        EXPECT_EQ(shown, SvgPicture::pixmap(QLatin1String(file), {32, 32}, 1).toImage()) << file;
        EXPECT_GT(qAlpha(shown.pixel(16, 8)), 0) << file;
    }
    EXPECT_EQ(style.pixelMetric(QStyle::PM_MessageBoxIconSize, nullptr, nullptr), 32);
    EXPECT_FALSE(style.standardIcon(QStyle::SP_DirIcon, nullptr, nullptr).isNull());
}

TEST_F(ConsoleStyleTest, buttonsOfBoxesBearNoPictures)
{
    QMessageBox box;
    box.setStandardButtons(QMessageBox::Yes | QMessageBox::No);
    for (const QAbstractButton *const button : box.buttons())
        EXPECT_TRUE(button->icon().isNull()) << qPrintable(button->text());
}

TEST_F(ConsoleStyleTest, fieldsCanBeToldFromADarkWindow)
{
    const int window = qGray(darkColours().color(QPalette::Window).rgb());
    EXPECT_GT(edgeBrightness(*made<QLineEdit>(darkColours())), window + 40);
    EXPECT_GT(edgeBrightness(*made<QPlainTextEdit>(darkColours())), window + 40);
}

TEST_F(ConsoleStyleTest, onABrightWindowTheToolkitsOutlinesStay)
{
    const QPalette bright(QColor(0xEF, 0xEF, 0xEF));
    const auto ours = made<QPlainTextEdit>(bright);
    const auto toolkits = made<QPlainTextEdit>(bright);
    QProxyStyle fusion(u"Fusion"_s);
    toolkits->setStyle(&fusion);
    EXPECT_EQ(ours->grab().toImage(), toolkits->grab().toImage());
}

/// How many points of `control` have the colour of the focus.
int focusPoints(QWidget &control)
{
    QCoreApplication::processEvents();
    const QPalette &colours = control.palette();
    const QRgb focus = Contrast::apart(colours.color(QPalette::Highlight),
                                       colours.color(QPalette::Window), Contrast::leastOfOutlines)
                           .rgb();
    const QImage shown = control.grab().toImage();
    int points = 0;
    for (int y = 0; y < shown.height(); ++y) {
        for (int x = 0; x < shown.width(); ++x)
            points += shown.pixel(x, y) == focus ? 1 : 0;
    }
    return points;
}

TEST_F(ConsoleStyleTest, outlineTellsWhichControlHasTheFocusOnADarkWindowAndOnABrightOne)
{
    QPalette bright(QColor(0xEF, 0xEF, 0xEF));
    bright.setColor(QPalette::Highlight, QColor(0x99, 0xC1, 0xF1));
    QPalette dark = darkColours();
    dark.setColor(QPalette::Highlight, QColor(0x2A, 0x73, 0x98));
    for (const QPalette &colours : {bright, dark}) {
        QWidget window;
        window.setPalette(colours);
        QPushButton other(&window);
        auto *const drop = new QComboBox(&window);
        drop->addItem(u"one"_s);
        const std::initializer_list<QWidget *> controls = {new QLineEdit(&window),
                                                           new QPlainTextEdit(&window),
                                                           new QDateEdit(&window),
                                                           drop,
                                                           new QPushButton(u"a"_s, &window),
                                                           new QRadioButton(u"radio"_s, &window),
                                                           new QCheckBox(u"check"_s, &window)};
        for (QWidget *const control : controls) {
            control->setStyle(&style);
            control->setGeometry(10, 10, 120, 30);
        }
        window.show();
        QApplication::setActiveWindow(&window);
        for (QWidget *const control : controls) {
            const char *const kind = control->metaObject()->className();
            control->raise();
            other.setFocus();
            EXPECT_EQ(focusPoints(*control), 0) << kind;
            control->setFocus(Qt::TabFocusReason);
            EXPECT_GT(focusPoints(*control), 40) << kind;
        }
    }
}

} // namespace

} // namespace norvane
