#pragma once

#include <QByteArray>

/// Pieces of a language file, for tests that vary one of them.
namespace LanguageFile {

extern const QByteArray Declaration; ///< for UTF-8
extern const QByteArray Open;        ///< the outermost element with its namespaces
extern const QByteArray Schema;
extern const QByteArray Close;

/// One row; both values as they stand in XML.
QByteArray row(const QByteArray &id, const QByteArray &text);

/// A whole file with these rows.
QByteArray with(const QByteArray &rows);

} // namespace LanguageFile
