#pragma once

#include <QString>

namespace norvane {

/// The form in which texts are compared without regard to case and accents.
namespace TextFold {

/// Decomposed (NFKD), without combining marks, and case-folded. What is no character, NUL and half
/// of a surrogate pair, becomes U+FFFD.
QString fold(const QString &text);

/// A number as it is dialled: without the spaces and punctuation that it is written with.
QString dialled(const QString &phone);

} // namespace TextFold

} // namespace norvane
