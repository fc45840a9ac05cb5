#include "foundation/ui/FormSetUp.h"

#include <QScreen>
#include <QWidget>

QPoint FormSetUp::centred(QSize form, QSize screen)
{
    const QSize shown = form.boundedTo(screen);
    return {(screen.width() - shown.width()) / 2, (screen.height() - shown.height()) / 2};
}

void CenterForm(QWidget *form)
{
    const QRect screen = form->screen()->geometry();
    form->move(screen.topLeft() + FormSetUp::centred(form->frameGeometry().size(), screen.size()));
}
