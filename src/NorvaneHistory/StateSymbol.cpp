#include "NorvaneHistory/StateSymbol.h"

#include "foundation/ui/Contrast.h"

#include <QIconEngine>
#include <QPainter>
#include <QPainterPath>

namespace norvane {

namespace {

// The drawings stand in a square of this side.
constexpr qreal side = 16;

QPainterPath check(qreal left)
{
    QPainterPath path(QPointF(left, 8.5));
    path.lineTo(left + 3.5, 12);
    path.lineTo(left + 9.5, 4);
    return path;
}

QPainterPath ring()
{
    QPainterPath path;
    path.addEllipse(QRectF(2, 2, 12, 12));
    return path;
}

QPainterPath shapeOf(MessageState state)
{
    QPainterPath path;
    switch (state) {
    case MessageState::Waiting: // a clock
        path = ring();
        path.moveTo(8, 4.5);
        path.lineTo(8, 8);
        path.lineTo(10.5, 9.5);
        break;
    case MessageState::Sent:
        path = check(3.2);
        break;
    case MessageState::Delivered:
        path = check(0.8);
        path.addPath(check(5.4));
        break;
    case MessageState::Refused: // no entry
        path = ring();
        path.moveTo(4, 12);
        path.lineTo(12, 4);
        break;
    case MessageState::InDoubt: // a question mark
        path.moveTo(5, 5.5);
        path.cubicTo(5, 1.5, 11, 1.5, 11, 5.5);
        path.cubicTo(11, 8, 8, 7.5, 8, 10.5);
        path.moveTo(8, 13.4);
        path.lineTo(8, 13.6);
        break;
    case MessageState::Failed:
        path.moveTo(3.5, 3.5);
        path.lineTo(12.5, 12.5);
        path.moveTo(12.5, 3.5);
        path.lineTo(3.5, 12.5);
        break;
    }
    return path;
}

QColor hueOf(MessageState state)
{
    switch (state) {
    case MessageState::Waiting:
        return {0x5C, 0x66, 0x70};
    case MessageState::Sent:
        return {0x1F, 0x6F, 0xB5};
    case MessageState::Delivered:
        return {0x1E, 0x7E, 0x34};
    case MessageState::Refused:
        return {0x8A, 0x3F, 0xA0};
    case MessageState::InDoubt:
        return {0xB3, 0x6B, 0x00};
    case MessageState::Failed:
        break;
    }
    return {0xC0, 0x2B, 0x2B};
}

/// Draws the symbol in the size that is asked for.
class SymbolEngine : public QIconEngine
{
public:
    SymbolEngine(MessageState state, const QPalette &palette, QPalette::ColorRole ground)
        : m_state(state), m_palette(palette), m_ground(ground)
    {}

    void paint(QPainter *painter, const QRect &rect, QIcon::Mode mode,
               QIcon::State /*state*/) override
    {
        const auto role = mode == QIcon::Selected ? QPalette::Highlight : m_ground;
        const QColor ground = m_palette.color(QPalette::Active, role);
        painter->save();
        painter->setRenderHint(QPainter::Antialiasing);
        painter->translate(rect.topLeft());
        painter->scale(rect.width() / side, rect.height() / side);
        painter->setPen(QPen(StateSymbol::colour(m_state, ground), 1.8, Qt::SolidLine, Qt::RoundCap,
                             Qt::RoundJoin));
        painter->drawPath(shapeOf(m_state));
        painter->restore();
    }

    QPixmap pixmap(const QSize &size, QIcon::Mode mode, QIcon::State state) override
    {
        QPixmap drawn(size);
        drawn.fill(Qt::transparent);
        QPainter painter(&drawn);
        paint(&painter, QRect(QPoint(), size), mode, state);
        return drawn;
    }

    QIconEngine *clone() const override { return new SymbolEngine(*this); }

private:
    MessageState m_state;
    QPalette m_palette;
    QPalette::ColorRole m_ground;
};

} // namespace

QIcon StateSymbol::icon(MessageState state, const QPalette &palette, QPalette::ColorRole ground)
{
    return QIcon(new SymbolEngine(state, palette, ground));
}

QColor StateSymbol::colour(MessageState state, const QColor &ground)
{
    return Contrast::apart(hueOf(state), ground, Contrast::leastOfOutlines);
}

} // namespace norvane
