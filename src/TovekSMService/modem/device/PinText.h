#pragma once

#include <QRegularExpression>
#include <QString>

namespace norvane {

/// A PIN is 4 to 8 digits (3GPP TS 31.101, 9.5.1). Nothing else may leave as one.
inline bool isPin(const QString &text)
{
    using namespace Qt::StringLiterals;
    static const QRegularExpression digits(u"\\A[0-9]{4,8}\\z"_s);
    return digits.match(text).hasMatch();
}

} // namespace norvane
