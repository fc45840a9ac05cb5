#pragma once

#include <QString>

namespace norvane {

/// The Boolean that a stored text stands for: "True" or "False" in any case, or a number, of which
/// 0 is false and any other true. Blanks around it don't count.
/// @throws NumberedFailure 13 for any other text, the empty text included
bool toBoolean(const QString &text);

/// "True" or "False": the form in which a Boolean is stored.
QString booleanText(bool value);

} // namespace norvane
