#include "foundation/ui/SvgPicture.h"

#include "foundation/ui/ImageControl.h"
#include "foundation/ui/Pixels.h"

#include <QDir>
#include <QFile>
#include <QTemporaryDir>

#include <gtest/gtest.h>

namespace norvane {

using namespace Qt::StringLiterals;

namespace {

QString drawing(const QString &name)
{
    return QStringLiteral(NORVANE_SOURCE_DIR "/resources/images/") + name + u".svg"_s;
}

QStringList allDrawings()
{
    const QDir folder(QStringLiteral(NORVANE_SOURCE_DIR "/resources/images"));
    QStringList files;
    for (const QString &name : folder.entryList({u"*.svg"_s}))
        files.append(folder.filePath(name));
    return files;
}

/// A drawing of the given size that red fills to its edges.
class RedDrawing
{
public:
    RedDrawing(int width, int height)
    {
        QFile out(file());
        if (!out.open(QIODevice::WriteOnly))
            qFatal("no drawing");
        out.write(u"<svg xmlns='http://www.w3.org/2000/svg' width='%1' height='%2'>"
                  "<rect width='%1' height='%2' fill='#ff0000'/></svg>"_s.arg(width)
                      .arg(height)
                      .toUtf8());
    }
    QString file() const { return m_folder.filePath(u"red.svg"_s); }

private:
    QTemporaryDir m_folder;
};

TEST(SvgPictureTest, everyDrawingOfTheConsoleShowsSomethingAtBothSharpnesses)
{
    const QStringList files = allDrawings();
    EXPECT_GT(files.size(), 10);
    for (const QString &file : files) {
        for (const qreal ratio : {1.0, 2.0}) {
            const QPixmap pixmap = SvgPicture::pixmap(file, {48, 48}, ratio);
            EXPECT_EQ(pixmap.size(), QSize(48, 48) * ratio) << qPrintable(file);
            EXPECT_EQ(pixmap.devicePixelRatio(), ratio);
            const QRect drawn = Pixels::opaque(pixmap.toImage());
            EXPECT_GT(qMax(drawn.width(), drawn.height()), 24 * ratio) << qPrintable(file);
        }
    }
}

TEST(SvgPictureTest, doubleSharpnessIsDrawnAndNotEnlarged)
{
    const QImage sharp = SvgPicture::pixmap(drawing(u"device"_s), {48, 48}, 2).toImage();
    const QImage enlarged =
        SvgPicture::pixmap(drawing(u"device"_s), {48, 48}, 1).toImage().scaled(96, 96);
    EXPECT_NE(sharp.convertToFormat(QImage::Format_ARGB32),
              enlarged.convertToFormat(QImage::Format_ARGB32));
}

TEST(SvgPictureTest, otherShapeIsScaledEvenlyAndCentred)
{
    const RedDrawing wide(40, 10);
    const QImage square = SvgPicture::pixmap(wide.file(), {80, 80}, 1).toImage();
    EXPECT_EQ(Pixels::opaque(square), QRect(0, 30, 80, 20));
    const QImage doubled = SvgPicture::pixmap(wide.file(), {80, 80}, 2).toImage();
    EXPECT_EQ(Pixels::opaque(doubled), QRect(0, 60, 160, 40));
    const RedDrawing high(10, 40);
    EXPECT_EQ(Pixels::opaque(SvgPicture::pixmap(high.file(), {80, 80}, 1).toImage()),
              QRect(30, 0, 20, 80));
}

TEST(SvgPictureTest, iconHasThreeSharpnessesAndItsOwnDisabledForm)
{
    const QIcon icon =
        SvgPicture::icon(drawing(u"button-test"_s), {24, 24}, drawing(u"button-test-disabled"_s));
    for (const qreal ratio : {1.0, 2.0, 3.0}) {
        const QPixmap normal = icon.pixmap(QSize(24, 24), ratio);
        const QPixmap disabled = icon.pixmap(QSize(24, 24), ratio, QIcon::Disabled);
        EXPECT_EQ(normal.size(), QSize(24, 24) * ratio);
        EXPECT_EQ(disabled.size(), QSize(24, 24) * ratio);
        EXPECT_EQ(normal.toImage(),
                  SvgPicture::pixmap(drawing(u"button-test"_s), {24, 24}, ratio).toImage());
        EXPECT_EQ(
            disabled.toImage(),
            SvgPicture::pixmap(drawing(u"button-test-disabled"_s), {24, 24}, ratio).toImage());
    }
}

TEST(SvgPictureTest, disabledDrawingsDifferFromTheEnabledOnes)
{
    for (const QString &name : {u"button-test"_s, u"button-start"_s, u"button-stop"_s})
        EXPECT_NE(SvgPicture::pixmap(drawing(name), {24, 24}, 1).toImage(),
                  SvgPicture::pixmap(drawing(name + u"-disabled"_s), {24, 24}, 1).toImage())
            << qPrintable(name);
}

TEST(ImageControlTest, drawingFillsItsPlace)
{
    const RedDrawing red(10, 10);
    ImageControl image(red.file());
    image.resize(48, 48);
    const QImage shown = image.grab().toImage();
    EXPECT_EQ(Pixels::around(shown, Pixels::isRed), QRect(QPoint(0, 0), shown.size()));
    image.resize(20, 20); // drawn anew at its new size
    const QImage smaller = image.grab().toImage();
    EXPECT_EQ(Pixels::around(smaller, Pixels::isRed), QRect(QPoint(0, 0), smaller.size()));
}

TEST(ImageControlTest, disabledPictureIsGreyed)
{
    const RedDrawing red(10, 10);
    ImageControl image(red.file());
    image.resize(48, 48);
    image.setEnabled(false);
    EXPECT_TRUE(Pixels::around(image.grab().toImage(), Pixels::isRed).isEmpty());
}

} // namespace

} // namespace norvane
