#pragma once

#include <QByteArray>
#include <QList>
#include <QString>

#include <optional>

namespace norvane {

namespace Biff {

enum Id : quint16 {
    Formula = 0x0006,
    End = 0x000A,
    DateMode = 0x0022,
    Encrypted = 0x002F,
    Continue = 0x003C,
    BoundSheet = 0x0085,
    MulRk = 0x00BD,
    RichString = 0x00D6,
    CellFormat = 0x00E0,
    SharedStrings = 0x00FC,
    LabelShared = 0x00FD,
    Number = 0x0203,
    Label = 0x0204,
    BooleanOrError = 0x0205,
    FormulaString = 0x0207,
    Rk = 0x027E,
    NumberFormat = 0x041E,
    Begin = 0x0809,
};

/// One record, with the records that continue it. Reading past its end gives zeros.
class Record
{
public:
    Record(quint16 id, QByteArrayView data) : m_id(id), m_pieces{data} {}

    quint16 id() const { return m_id; }
    void continueWith(QByteArrayView data) { m_pieces.append(data); }

    // At an offset of the first piece.
    quint8 byteAt(qsizetype offset) const;
    quint16 shortAt(qsizetype offset) const;
    quint32 longAt(qsizetype offset) const;
    double doubleAt(qsizetype offset) const;

    // From front to back, over all pieces.
    void skipTo(qsizetype offset) { m_position = offset; }
    bool atEnd() const;
    void skip(qsizetype count);
    quint8 takeByte();
    quint16 takeShort();
    quint32 takeLong();
    /// Text of a workbook of version 8: flags, and what the flags tell. A piece that begins within
    /// the characters has flags of its own in front.
    QString takeText(qsizetype length);
    /// Text of version 5: one byte a character.
    QString takeAnsi(qsizetype length);

private:
    QString takeCharacters(qsizetype length, bool wide);

    quint16 m_id;
    QList<QByteArrayView> m_pieces;
    qsizetype m_piece = 0;
    qsizetype m_position = 0;
};

/// The records of a stream, from an offset on.
class RecordReader
{
public:
    RecordReader(const QByteArray &stream, qsizetype offset) : m_stream(stream), m_offset(offset) {}

    /// The next record; nothing at the end, and where a record is cut short.
    std::optional<Record> next();

private:
    std::optional<Record> one();

    const QByteArray &m_stream;
    qsizetype m_offset;
};

} // namespace Biff

} // namespace norvane
