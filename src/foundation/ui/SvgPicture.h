#pragma once

#include <QIcon>
#include <QPixmap>
#include <QSize>
#include <QString>

namespace norvane {

namespace SvgPicture {

/// The drawing `file` at `size` logical pixels, sharp at the pixel ratio `ratio`; scaled evenly and
/// centred where its shape differs.
QPixmap pixmap(const QString &file, QSize size, qreal ratio);

/// An icon of the drawing at `size` logical pixels, for screens of one to three pixels a point,
/// with `disabledFile` as its disabled form where one is given.
QIcon icon(const QString &file, QSize size, const QString &disabledFile = {});

} // namespace SvgPicture

} // namespace norvane
