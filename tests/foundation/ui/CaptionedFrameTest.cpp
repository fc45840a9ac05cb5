#include "foundation/ui/CaptionedFrame.h"

#include "foundation/ui/Pixels.h"

#include <QLabel>
#include <QPushButton>
#include <QTest>

#include <gtest/gtest.h>

namespace norvane {

using namespace Qt::StringLiterals;

namespace {

class CaptionedFrameTest : public ::testing::Test
{
protected:
    CaptionedFrameTest()
    {
        frame.resize(200, 100);
        QPalette colours = frame.palette();
        colours.setColor(QPalette::Window, Qt::white);
        colours.setColor(QPalette::Active, QPalette::WindowText, Qt::red);
        colours.setColor(QPalette::Disabled, QPalette::WindowText, Qt::blue);
        frame.setPalette(colours);
    }

    QRect active() { return Pixels::around(frame.grab().toImage(), Pixels::isRed); }
    QRect greyed()
    {
        return Pixels::around(frame.grab().toImage(), [](const QColor &colour) {
            return colour.blue() > 200 && colour.red() < 60 && colour.green() < 60;
        });
    }
    /// Rows of the frame's border in the middle of its width.
    QList<int> borderRows()
    {
        const QImage image = frame.grab().toImage();
        QList<int> rows;
        for (int y = 0; y < image.height(); ++y) {
            if (image.pixelColor(image.width() / 2, y) != QColor(Qt::white))
                rows.append(y);
        }
        return rows;
    }

    CaptionedFrame frame;
};

TEST_F(CaptionedFrameTest, captionIsAPropertyAndTheAccessibleName)
{
    EXPECT_EQ(frame.caption(), QString());
    frame.setCaption(u"Estado"_s);
    EXPECT_EQ(frame.caption(), u"Estado"_s);
    EXPECT_EQ(frame.property("caption").toString(), u"Estado"_s);
    EXPECT_EQ(frame.accessibleName(), u"Estado"_s);
    frame.setProperty("caption", u"Otro"_s);
    EXPECT_EQ(frame.caption(), u"Otro"_s);
}

TEST_F(CaptionedFrameTest, captionStandsInTheTopLeftOfTheBorder)
{
    frame.setCaption(u"Estado"_s);
    const QRect shown = active();
    ASSERT_FALSE(shown.isEmpty());
    EXPECT_LT(shown.bottom(), frame.fontMetrics().height());
    EXPECT_LT(shown.right(), frame.width() / 2);
    EXPECT_EQ(borderRows().size(), 2);
    EXPECT_NEAR(borderRows().first(), frame.fontMetrics().height() / 2, 1);
    EXPECT_EQ(borderRows().last(), frame.height() - 1);
}

TEST_F(CaptionedFrameTest, withoutACaptionTheBorderIsWhole)
{
    EXPECT_EQ(borderRows(), (QList<int>{0, frame.height() - 1}));
}

TEST_F(CaptionedFrameTest, captionInterruptsTheBorder)
{
    frame.setCaption(QString(5, u' ') + u"."_s);
    const QImage image = frame.grab().toImage();
    const int row = frame.fontMetrics().height() / 2;
    EXPECT_EQ(image.pixelColor(14, row), QColor(Qt::white));
    EXPECT_NE(image.pixelColor(100, row), QColor(Qt::white));
}

TEST_F(CaptionedFrameTest, captionTooLongIsCutInsideTheFrame)
{
    frame.setCaption(QString(100, u'M'));
    const QRect shown = active();
    ASSERT_FALSE(shown.isEmpty());
    EXPECT_LT(shown.right(), frame.width() - 9);
    EXPECT_EQ(frame.caption(), QString(100, u'M'));
}

TEST_F(CaptionedFrameTest, ownFlagGreysTheCaptionAlone)
{
    frame.setCaption(u"Estado"_s);
    EXPECT_TRUE(frame.isFrameEnabled());
    EXPECT_FALSE(active().isEmpty());
    EXPECT_TRUE(greyed().isEmpty());
    frame.setFrameEnabled(false);
    EXPECT_FALSE(frame.isFrameEnabled());
    EXPECT_TRUE(active().isEmpty());
    EXPECT_FALSE(greyed().isEmpty());
    frame.setFrameEnabled(true);
    EXPECT_FALSE(active().isEmpty());
}

TEST_F(CaptionedFrameTest, ownFlagLeavesTheControlsInsideAlone)
{
    auto *const button = new QPushButton(&frame);
    auto *const label = new QLabel(&frame);
    label->setEnabled(false);
    int clicks = 0;
    QObject::connect(button, &QPushButton::clicked, &frame, [&] { ++clicks; });
    frame.setFrameEnabled(false);
    EXPECT_TRUE(button->isEnabled());
    EXPECT_FALSE(label->isEnabled());
    QTest::mouseClick(button, Qt::LeftButton);
    EXPECT_EQ(clicks, 1);
    frame.setFrameEnabled(true);
    EXPECT_FALSE(label->isEnabled());
}

} // namespace

} // namespace norvane
