#include "foundation/ui/AccessibleControls.h"

#include "foundation/ui/CaptionedFrame.h"
#include "foundation/ui/ImageControl.h"

#include <QAccessible>
#include <QAccessibleWidget>

namespace norvane {

using namespace Qt::StringLiterals;

namespace {

/// The toolkit takes a window that is neither a dialog nor its own main window for a mere
/// container.
bool isPlainWindow(const QString &kind, const QWidget *widget)
{
    return kind == "QWidget"_L1 && widget && widget->windowType() == Qt::Window;
}

QAccessibleInterface *accessibleControl(const QString &kind, QObject *object)
{
    auto *const widget = qobject_cast<QWidget *>(object);
    if (isPlainWindow(kind, widget))
        return new QAccessibleWidget(widget, QAccessible::Window);
    if (auto *const frame = qobject_cast<CaptionedFrame *>(object))
        return new QAccessibleWidget(frame, QAccessible::Grouping);
    if (auto *const image = qobject_cast<ImageControl *>(object))
        return new QAccessibleWidget(image, QAccessible::Graphic);
    return nullptr;
}

} // namespace

void installAccessibleControls()
{
    QAccessible::installFactory(accessibleControl);
}

} // namespace norvane
