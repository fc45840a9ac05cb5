#pragma once

#include <QByteArray>
#include <QList>
#include <QString>

namespace norvane {

// Spreadsheets that tests lay out themselves.

struct ZipEntry
{
    QByteArray name;
    QByteArray content;
};

/// A zip archive with compressed entries.
QByteArray zipOf(const QList<ZipEntry> &entries);
/// The same with all lengths in fields of 64 bits, as programs write it that don't know beforehand
/// how much will come.
QByteArray zip64Of(const QList<ZipEntry> &entries);

/// An .xlsx of one sheet, "Hoja1", whose element `worksheet` holds `rows` as its data.
QByteArray xlsxOf(const QByteArray &rows, const QByteArray &sharedStrings = {});

/// An .ods of one sheet, "Hoja1", whose element `table` holds `rows`.
QByteArray odsOf(const QByteArray &rows, const QByteArray &prologue = {});

} // namespace norvane
