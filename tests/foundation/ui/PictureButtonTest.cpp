#include "foundation/ui/PictureButton.h"

#include "foundation/ui/Pixels.h"

#include <QApplication>
#include <QKeyEvent>
#include <QTest>

#include <gtest/gtest.h>

namespace norvane {

using namespace Qt::StringLiterals;

namespace {

class PictureButtonTest : public ::testing::Test
{
protected:
    PictureButtonTest()
    {
        QPixmap red(24, 24);
        red.fill(Qt::red);
        button.setIcon(red);
        button.setIconSize(red.size());
        button.resize(71, 56);
        QPalette colours = button.palette();
        colours.setColor(QPalette::ButtonText, Qt::blue);
        colours.setColor(QPalette::Disabled, QPalette::ButtonText, Qt::gray);
        button.setPalette(colours);
    }

    QRect picture() { return Pixels::around(button.grab().toImage(), Pixels::isRed); }
    /// Where the caption is drawn.
    QRect caption()
    {
        return Pixels::around(button.grab().toImage(), [](const QColor &colour) {
            return colour.blue() > colour.red() + 100 && colour.blue() > colour.green() + 100;
        });
    }

    PictureButton button;
};

TEST_F(PictureButtonTest, pictureStandsAboveItsCaptionBothInTheMiddle)
{
    button.setText(u"Enviar"_s);
    EXPECT_EQ(picture().size(), QSize(24, 24));
    EXPECT_NEAR(picture().center().x(), button.rect().center().x(), 1);
    ASSERT_FALSE(caption().isEmpty());
    EXPECT_GT(caption().top(), picture().bottom());
    EXPECT_NEAR(caption().center().x(), button.rect().center().x(), 2);
    EXPECT_LT(caption().height(), button.fontMetrics().height());
}

TEST_F(PictureButtonTest, pictureWithoutCaptionStandsInTheMiddle)
{
    button.resize(42, 34);
    EXPECT_EQ(picture().size(), QSize(24, 24));
    EXPECT_NEAR(picture().center().x(), button.rect().center().x(), 1);
    EXPECT_NEAR(picture().center().y(), button.rect().center().y(), 1);
    EXPECT_TRUE(caption().isEmpty());
}

TEST_F(PictureButtonTest, wideCaptionIsBrokenBetweenWords)
{
    button.setText(u"Probar dispositivo"_s);
    ASSERT_GT(button.fontMetrics().horizontalAdvance(button.text()), button.width());
    EXPECT_GT(caption().height(), button.fontMetrics().height());
    EXPECT_LE(caption().width(), button.width() - 6);
    EXPECT_LE(caption().bottom(), button.height() - 3);
    EXPECT_GE(picture().top(), 2);
}

TEST_F(PictureButtonTest, pictureTooHighIsDrawnSmallerAndTheCaptionNotCut)
{
    button.setText(u"Enviar"_s);
    const int captionHeight = caption().height();
    button.resize(71, 34);
    EXPECT_LT(picture().height(), 24);
    EXPECT_GT(picture().height(), 5);
    EXPECT_EQ(picture().width(), picture().height());
    EXPECT_EQ(caption().height(), captionHeight);
    EXPECT_GT(caption().top(), picture().bottom());
}

TEST_F(PictureButtonTest, disabledButtonShowsItsDisabledPicture)
{
    QPixmap green(24, 24);
    green.fill(Qt::green);
    QIcon icon = button.icon();
    icon.addPixmap(green, QIcon::Disabled);
    button.setIcon(icon);
    button.setText(u"Enviar"_s);
    EXPECT_FALSE(picture().isEmpty());
    button.setEnabled(false);
    EXPECT_TRUE(picture().isEmpty());
    EXPECT_EQ(Pixels::around(
                  button.grab().toImage(),
                  [](const QColor &colour) { return colour.green() > 200 && colour.red() < 60; })
                  .size(),
              QSize(24, 24));
    EXPECT_TRUE(caption().isEmpty()); // the caption is greyed too
}

TEST_F(PictureButtonTest, clicksAndKeysPressIt)
{
    int clicks = 0;
    QObject::connect(&button, &QPushButton::clicked, &button, [&] { ++clicks; });
    QTest::mouseClick(&button, Qt::LeftButton);
    QTest::keyClick(&button, Qt::Key_Space);
    QTest::keyClick(&button, Qt::Key_Return);
    QTest::keyClick(&button, Qt::Key_Enter);
    EXPECT_EQ(clicks, 4);
    button.setEnabled(false);
    QTest::mouseClick(&button, Qt::LeftButton);
    EXPECT_EQ(clicks, 4);
}

TEST_F(PictureButtonTest, keyThatIsHeldPressesItOnce)
{
    int presses = 0;
    QObject::connect(&button, &PictureButton::clicked, &button, [&] { ++presses; });
    for (const Qt::Key key : {Qt::Key_Return, Qt::Key_Enter}) {
        presses = 0;
        for (const bool repeated : {false, true, true}) {
            QKeyEvent press(QEvent::KeyPress, key, Qt::NoModifier, {}, repeated);
            QApplication::sendEvent(&button, &press);
        }
        EXPECT_EQ(presses, 1);
    }
}

} // namespace

} // namespace norvane
