// Draws a picture in a size:
//   draw_icon PICTURE.svg SIZE RESULT.png
// For the build; it isn't installed.

#include <QCoreApplication>
#include <QImage>
#include <QPainter>
#include <QSvgRenderer>

#include <cstdio>
#include <cstdlib>

int main(int argc, char **argv)
{
    const QCoreApplication application(argc, argv);
    const QStringList arguments = QCoreApplication::arguments();
    const int size = arguments.size() == 4 ? arguments.at(2).toInt() : 0;
    QSvgRenderer picture;
    if (size < 1 || !picture.load(arguments.at(1))) {
        std::fputs("draw_icon: a picture, its size and a result are wanted\n", stderr);
        return EXIT_FAILURE;
    }

    QImage image(size, size, QImage::Format_ARGB32);
    image.fill(Qt::transparent);
    QPainter painter(&image);
    painter.setRenderHint(QPainter::Antialiasing);
    picture.render(&painter);
    painter.end();
    if (!image.save(arguments.at(3), "PNG")) {
        std::fputs("draw_icon: the result can't be written\n", stderr);
        return EXIT_FAILURE;
    }
    return EXIT_SUCCESS;
}
