#pragma once

#include <QByteArray>
#include <QList>
#include <QString>

namespace norvane {

// Workbooks of the BIFF kind that tests lay out record by record.

/// A stream, or a storage with what it holds.
struct CompoundEntry
{
    QString name;
    QByteArray content = {};
    QList<CompoundEntry> children = {};
};

/// A compound file with these in its root. Streams are filled with zeros up to 4,096 bytes.
QByteArray compoundOf(const QList<CompoundEntry> &entries);

/// A record: its number, its length, its data.
QByteArray biffRecord(quint16 id, const QByteArray &data);
QByteArray littleShort(quint16 number);
QByteArray littleLong(quint32 number);
QByteArray littleDouble(double number);

struct BiffSheet
{
    QByteArray name; ///< of letters of one byte
    QByteArray records;
    quint8 visibility = 0;
};

/// A workbook's stream.
/// @param globals  records in front of the sheets
QByteArray biffOf(const QList<BiffSheet> &sheets, const QByteArray &globals = {},
                  quint16 version = 0x0600);

/// An .xls that holds just that stream.
QByteArray xlsOf(const QList<BiffSheet> &sheets, const QByteArray &globals = {},
                 quint16 version = 0x0600);

/// A cell with a text of its own (LABEL), of letters of one byte.
QByteArray biffLabel(quint16 row, quint16 column, const QByteArray &text);

} // namespace norvane
