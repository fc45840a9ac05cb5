#pragma once

#include <QString>

namespace norvane {

using namespace Qt::StringLiterals;

/// A tooltip that shows `text` as it stands, whatever marks it holds, and as far as it fits a
/// screen.
inline QString plainTip(const QString &text)
{
    constexpr qsizetype maxCharacters = 1000;
    return u"<p style=\"white-space:pre-wrap\">"_s + text.left(maxCharacters).toHtmlEscaped() +
           u"</p>"_s;
}

} // namespace norvane
