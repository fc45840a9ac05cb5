#include "foundation/ui/ImageControl.h"

#include "foundation/ui/SvgPicture.h"

#include <QPainter>
#include <QStyle>
#include <QStyleOption>

namespace norvane {

ImageControl::ImageControl(const QString &file, QWidget *parent) : QWidget(parent), m_file(file) {}

void ImageControl::paintEvent(QPaintEvent *)
{
    const qreal ratio = devicePixelRatioF();
    if (m_drawn.isNull() || m_drawn.size() != size() * ratio)
        m_drawn = SvgPicture::pixmap(m_file, size(), ratio);

    QPixmap shown = m_drawn;
    if (!isEnabled()) {
        QStyleOption option;
        option.initFrom(this);
        shown = style()->generatedIconPixmap(QIcon::Disabled, m_drawn, &option);
    }
    QPainter(this).drawPixmap(0, 0, shown);
}

} // namespace norvane
