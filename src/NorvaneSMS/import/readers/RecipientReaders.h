#pragma once

#include "NorvaneSMS/import/readers/NumberedFiles.h"
#include "common/SpreadsheetConnection.h"
#include "foundation/clsCollection.h"

#include <QString>

#include <optional>

namespace norvane {

// The readers that fill the list of recipients. A number is cleaned of blanks and hyphens, and a
// row whose number is empty then is skipped; nothing else is looked at. What was read before a
// failure stays in the list.

enum class Duplicates {
    Keep,   ///< each item's key is "K" and the number of its row
    Remove, ///< each item's key is its cleaned number: the first one of a number stays
};

/// `text` without its blanks and hyphens.
QString CleanNumber(QString text);

/// A field of a record as text: nothing at all is an empty one.
QString FieldText(const std::optional<QString> &field);

/// The number of the file that texts are read under.
inline constexpr qint16 textFileNumber = 1;

/// Adds the lines of a text file, as they are. What stands before the first "|" of a line is its
/// number.
/// @throws NumberedFailure as NumberedFiles; then the file's number stays in use
void readTextRecipients(NumberedFiles &files, const QString &path, Duplicates duplicates,
                        clsCollection &recipients);

/// Adds the cleaned numbers of one field of a sheet.
/// @throws NumberedFailure as SpreadsheetConnection; NoSuchField at the first row
void readSheetRecipients(SpreadsheetConnection &connection, const QString &sheet,
                         const QString &field, Duplicates duplicates, clsCollection &recipients);

} // namespace norvane
