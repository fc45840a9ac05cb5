#pragma once

#include <QString>

namespace norvane {

/// The word for an engine's error code: a symbolic name shown as it stands, or for -2, -35 and -100
/// a text of the language file. Empty for 0 and for every code that has no word.
QString GetErrorText(qint32 code);

} // namespace norvane
