#pragma once

#include <QByteArray>
#include <QString>
#include <QStringList>

#include <functional>

namespace norvane {

/// Reads a table in the persisted rowset form of XML: a schema that declares the columns, then one
/// element a row with one attribute a column.
namespace RowsetReader {

constexpr qint64 maxFileBytes = 8 * 1024 * 1024;

/// Takes the values of one row, in the order of the columns asked for. A value that the row doesn't
/// have is a null string. False ends the reading.
using RowSink = std::function<bool(const QStringList &values)>;

/// Hands every row of the table in `bytes` to `sink`, in the file's order. Encoded in UTF-8,
/// UTF-16, ISO-8859-1 or windows-1252. Rows seen before a fault are handed over as well.
/// @param columns  the names of the columns, letter for letter
/// @return false unless the whole of `bytes` is such a table, has every one of the columns, and
///         `sink` took every row. Anything that refers to another file is none, nor is what would
///         take undue time or memory to read.
bool read(const QByteArray &bytes, const QStringList &columns, const RowSink &sink);

} // namespace RowsetReader

} // namespace norvane
