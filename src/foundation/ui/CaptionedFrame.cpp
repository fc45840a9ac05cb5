#include "foundation/ui/CaptionedFrame.h"

#include <QPainter>
#include <QPainterPath>

namespace norvane {

namespace {
constexpr int captionIndent = 9; // pixels from the left edge to the caption
constexpr int captionGap = 3;    // pixels of border left free on both sides of it
constexpr qreal frameRadius = 3;
} // namespace

CaptionedFrame::CaptionedFrame(QWidget *parent) : QWidget(parent) {}

void CaptionedFrame::setCaption(const QString &caption)
{
    m_caption = caption;
    setAccessibleName(caption);
    update();
}

void CaptionedFrame::setFrameEnabled(bool enabled)
{
    m_enabled = enabled;
    update();
}

void CaptionedFrame::paintEvent(QPaintEvent *)
{
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);

    const QFontMetrics metrics = fontMetrics();
    const int halfCaption = m_caption.isEmpty() ? 0 : metrics.height() / 2;
    const int room = width() - 2 * (captionIndent + captionGap);
    const QString shown = metrics.elidedText(m_caption, Qt::ElideRight, room);
    const QRect captionRect(captionIndent + captionGap, 0, metrics.horizontalAdvance(shown),
                            metrics.height());

    if (!shown.isEmpty()) {
        const QRect gap = captionRect.adjusted(-captionGap, 0, captionGap, 0);
        painter.setClipRegion(QRegion(rect()).subtracted(QRegion(gap)));
    }
    QColor border = palette().color(QPalette::WindowText);
    border.setAlphaF(0.28F);
    painter.setPen(QPen(border, 1));
    painter.drawRoundedRect(QRectF(rect()).adjusted(0.5, halfCaption + 0.5, -0.5, -0.5),
                            frameRadius, frameRadius);
    painter.setClipping(false);

    const QPalette::ColorGroup group = m_enabled ? QPalette::Active : QPalette::Disabled;
    painter.setPen(palette().color(group, QPalette::WindowText));
    painter.drawText(captionRect, Qt::AlignLeft | Qt::AlignVCenter, shown);
}

} // namespace norvane
