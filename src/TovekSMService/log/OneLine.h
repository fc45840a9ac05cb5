#pragma once

#include <QString>

namespace norvane {

/// `text` with a space for each control character and line separator, which would part lines and
/// columns or steer the terminal.
inline QString onOneLine(QString text)
{
    for (QChar &unit : text) {
        const QChar::Category category = unit.category();
        if (category == QChar::Other_Control || category == QChar::Separator_Line ||
            category == QChar::Separator_Paragraph)
            unit = u' ';
    }
    return text;
}

} // namespace norvane
