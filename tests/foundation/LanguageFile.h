#pragma once

#include <QByteArray>

namespace norvane {

/// Pieces of a language file, for tests that vary one of them.
namespace LanguageFile {

extern const QByteArray declaration; ///< for UTF-8
extern const QByteArray open;        ///< the outermost element with its namespaces
extern const QByteArray schema;
extern const QByteArray close;

/// One row; both values as they stand in XML.
QByteArray row(const QByteArray &id, const QByteArray &text);

/// A whole file with these rows.
QByteArray with(const QByteArray &rows);

} // namespace LanguageFile

} // namespace norvane
