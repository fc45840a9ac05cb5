#include "NorvaneSheetReader/XlsSheet.h"

#include "common/SpreadsheetConnection.h"

#include <bit>

namespace norvane {

using namespace Qt::StringLiterals;

namespace {

double numberOfRk(quint32 rk)
{
    constexpr quint32 isHundredfold = 1;
    constexpr quint32 isInteger = 2;
    const double number = (rk & isInteger) != 0
                              ? static_cast<double>(static_cast<qint32>(rk) >> 2)
                              : std::bit_cast<double>(static_cast<quint64>(rk & ~3U) << 32);
    return (rk & isHundredfold) != 0 ? number / 100 : number;
}

class SheetReader
{
public:
    SheetReader(const XlsGlobals &globals, SheetTable &table) : m_globals(globals), m_table(table)
    {}

    void read(Biff::Record &record)
    {
        switch (record.id()) {
        case Biff::LabelShared:
            m_table.set(record.shortAt(0), record.shortAt(2),
                        m_globals.sharedStrings.value(static_cast<qsizetype>(record.longAt(6)),
                                                      CellTexts::none));
            break;
        case Biff::Label:
        case Biff::RichString:
            record.skipTo(6);
            put(record, takeText(record));
            break;
        case Biff::Number:
            put(record, textOf(record.doubleAt(6), record.shortAt(4)));
            break;
        case Biff::Rk:
            put(record, textOf(numberOfRk(record.longAt(6)), record.shortAt(4)));
            break;
        case Biff::MulRk:
            readMulRk(record);
            break;
        case Biff::BooleanOrError:
            if (record.byteAt(7) == 0)
                put(record, CellText::ofBoolean(record.byteAt(6) != 0));
            break;
        case Biff::Formula:
            readFormula(record);
            break;
        case Biff::FormulaString:
            if (m_awaitsText) {
                m_table.set(m_formulaRow, m_formulaColumn, takeText(record));
                m_awaitsText = false;
            }
            break;
        default:
            break;
        }
    }

private:
    QString takeText(Biff::Record &record) const
    {
        const quint16 length = record.takeShort();
        return m_globals.isVersion8 ? record.takeText(length) : record.takeAnsi(length);
    }

    QString textOf(double number, quint16 format) const
    {
        return CellText::ofDays(number, m_globals.kinds.value(format), m_globals.from1904);
    }

    void put(const Biff::Record &record, const QString &text)
    {
        m_table.set(record.shortAt(0), record.shortAt(2), text);
    }

    void readMulRk(Biff::Record &record)
    {
        const quint16 row = record.takeShort();
        qint32 column = record.takeShort();
        constexpr qsizetype entryLength = 6;
        for (qsizetype at = 4; column <= SheetTable::maxColumn; at += entryLength, ++column) {
            record.skipTo(at + entryLength); // the last entry is followed by the last column
            if (record.atEnd())
                break;
            m_table.set(row, column, textOf(numberOfRk(record.longAt(at + 2)), record.shortAt(at)));
        }
    }

    /// The stored result of a formula; a text follows in a record of its own.
    void readFormula(const Biff::Record &record)
    {
        enum Kind : quint8 { Text, Boolean, Error, Empty };
        m_awaitsText = false;
        if (record.shortAt(12) != 0xFFFF) {
            put(record, textOf(record.doubleAt(6), record.shortAt(4)));
        } else if (record.byteAt(6) == Text) {
            m_awaitsText = true;
            m_formulaRow = record.shortAt(0);
            m_formulaColumn = record.shortAt(2);
        } else if (record.byteAt(6) == Boolean) {
            put(record, CellText::ofBoolean(record.byteAt(8) != 0));
        }
    }

    const XlsGlobals &m_globals;
    SheetTable &m_table;
    bool m_awaitsText = false;
    qint32 m_formulaRow = 0;
    qint32 m_formulaColumn = 0;
};

} // namespace

void readXlsSheet(const QByteArray &stream, qsizetype offset, const XlsGlobals &globals,
                  SheetTable &table)
{
    Biff::RecordReader records(stream, offset);
    SheetReader reader(globals, table);
    int depth = 0; // a chart within a sheet is a part with a beginning and an end of its own
    while (std::optional<Biff::Record> record = records.next()) {
        if (record->id() == Biff::Begin)
            ++depth;
        else if (record->id() == Biff::End && --depth <= 0)
            return;
        else if (depth == 1)
            reader.read(*record);
    }
    SheetFailure::raise(SheetFailure::BadFile, u"The workbook ends in the middle of a sheet."_s);
}

} // namespace norvane
