#pragma once

#include <QStyledItemDelegate>

namespace norvane {

/// Draws a text that is somewhat wider than its cell in narrower letters, so that its end can be
/// read: a moment without its minutes is of no use. A text that would need letters of less than
/// `narrowest` per cent is cut off as in any other grid.
class CondensedCellDelegate : public QStyledItemDelegate
{
    Q_OBJECT

public:
    using QStyledItemDelegate::QStyledItemDelegate;

    static constexpr int narrowest = 70; ///< per cent of the letters' width

    /// @param width  the room for the text, in pixels
    static QFont fittingFont(const QFont &font, const QString &text, int width);

protected:
    void initStyleOption(QStyleOptionViewItem *option, const QModelIndex &index) const override;
};

} // namespace norvane
