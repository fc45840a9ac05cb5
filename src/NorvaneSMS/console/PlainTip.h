#pragma once

#include <QString>

/// A tooltip that shows `text` as it stands, whatever marks it holds, and as far as it fits a
/// screen.
inline QString plainTip(const QString &text)
{
    constexpr qsizetype mostCharacters = 1000;
    return QStringLiteral("<p style=\"white-space:pre-wrap\">") +
           text.left(mostCharacters).toHtmlEscaped() + QStringLiteral("</p>");
}
