#pragma once

#include <QPoint>
#include <QSize>
#include <QSizeF>

class QWidget;

namespace norvane {

namespace FormSetUp {

/// Where a form of the outer size `form` stands in the middle of `screen`, both in pixels. A form
/// larger than the screen counts as large as the screen; half a pixel is cut off.
QPoint centred(QSize form, QSize screen);

} // namespace FormSetUp

/// Horizontal and vertical twips of a pixel on the screen of `widget`.
QSizeF twipsPerPixel(const QWidget *widget);

/// The common form set-up: moves `form` to the middle of its screen by its outer size, which stays.
/// Before it has been shown its frame isn't known: it moves on when that comes.
void CenterForm(QWidget *form);

} // namespace norvane
