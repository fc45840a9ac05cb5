#include "foundation/ui/Look.h"

#include <QApplication>
#include <QFont>
#include <QPalette>
#include <QStyleFactory>

namespace {

constexpr int pointSize = 8;

/// Half-way between a text and its ground, which reads as disabled and still reads.
QColor faded(const QColor &text, const QColor &ground)
{
    return QColor((text.red() + ground.red()) / 2, (text.green() + ground.green()) / 2,
                  (text.blue() + ground.blue()) / 2);
}

} // namespace

void applyLook()
{
    QApplication::setStyle(QStyleFactory::create(QStringLiteral("Fusion")));
    QFont font(QStringLiteral("Liberation Sans"), pointSize);
    font.setStyleHint(QFont::SansSerif);
    QApplication::setFont(font);

    QPalette colours = QApplication::palette();
    for (const QPalette::ColorRole role :
         {QPalette::WindowText, QPalette::Text, QPalette::ButtonText}) {
        const QColor ground = colours.color(
            QPalette::Active, role == QPalette::Text ? QPalette::Base : QPalette::Window);
        colours.setColor(QPalette::Disabled, role,
                         faded(colours.color(QPalette::Active, role), ground));
    }
    QApplication::setPalette(colours);
}
