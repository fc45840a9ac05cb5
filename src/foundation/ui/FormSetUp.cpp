#include "foundation/ui/FormSetUp.h"

#include "foundation/ui/Twips.h"
#include "foundation/ui/WindowPlace.h"

#include <QWidget>

namespace norvane {

QPoint FormSetUp::centred(QSize form, QSize screen)
{
    const QSize shown = form.boundedTo(screen);
    return {(screen.width() - shown.width()) / 2, (screen.height() - shown.height()) / 2};
}

QSizeF twipsPerPixel(const QWidget *widget)
{
    return {Twips::perPixel(static_cast<float>(widget->logicalDpiX())),
            Twips::perPixel(static_cast<float>(widget->logicalDpiY()))};
}

void CenterForm(QWidget *form)
{
    WindowPlace::of(form).centre();
}

} // namespace norvane
