#include "foundation/ui/SvgPicture.h"

#include <QPainter>
#include <QSvgRenderer>

/// The drawings stand in a library, whose resources have to be asked for; outside any namespace.
static void useDrawings()
{
    Q_INIT_RESOURCE(resources);
}

namespace norvane {

QPixmap SvgPicture::pixmap(const QString &file, QSize size, qreal ratio)
{
    useDrawings();
    QPixmap pixmap(size * ratio);
    pixmap.setDevicePixelRatio(ratio);
    pixmap.fill(Qt::transparent);
    QSvgRenderer renderer(file);
    const QSizeF drawn = QSizeF(renderer.defaultSize()).scaled(size, Qt::KeepAspectRatio);
    QPainter painter(&pixmap);
    renderer.render(&painter, QRectF(QPointF((size.width() - drawn.width()) / 2,
                                             (size.height() - drawn.height()) / 2),
                                     drawn));
    return pixmap;
}

QIcon SvgPicture::icon(const QString &file, QSize size, const QString &disabledFile)
{
    QIcon icon;
    for (const qreal ratio : {1.0, 2.0, 3.0}) {
        icon.addPixmap(pixmap(file, size, ratio));
        if (!disabledFile.isEmpty())
            icon.addPixmap(pixmap(disabledFile, size, ratio), QIcon::Disabled);
    }
    return icon;
}

} // namespace norvane
