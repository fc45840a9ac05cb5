#include "NorvaneSMS/console/CondensedCellDelegate.h"

#include <QFontMetrics>
#include <QStyle>
#include <QWidget>

namespace norvane {

QFont CondensedCellDelegate::fittingFont(const QFont &font, const QString &text, int width)
{
    const auto fits = [&text, width](const QFont &candidate) {
        return QFontMetricsF(candidate).horizontalAdvance(text) <= width;
    };
    if (fits(font))
        return font;
    QFont narrower = font;
    for (int stretch = QFont::Unstretched - 2; stretch >= narrowest; stretch -= 2) {
        narrower.setStretch(stretch);
        if (fits(narrower))
            return narrower;
    }
    return font;
}

void CondensedCellDelegate::initStyleOption(QStyleOptionViewItem *option,
                                            const QModelIndex &index) const
{
    QStyledItemDelegate::initStyleOption(option, index);
    if (!option->widget || option->text.isEmpty() || option->rect.isEmpty())
        return;
    const QStyle *const style = option->widget->style();
    const int margin = style->pixelMetric(QStyle::PM_FocusFrameHMargin, option, option->widget) + 1;
    const QFont font = fittingFont(option->font, option->text, option->rect.width() - 2 * margin);
    if (font == option->font)
        return;
    option->font = font;
    option->fontMetrics = QFontMetrics(font);
}

} // namespace norvane
