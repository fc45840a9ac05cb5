#include "NorvaneSheetReader/XlsReader.h"

#include "NorvaneSheetReader/CellText.h"
#include "NorvaneSheetReader/CompoundFile.h"
#include "NorvaneSheetReader/XlsSheet.h"
#include "common/SpreadsheetConnection.h"

#include <QHash>

namespace {

constexpr quint16 Version5 = 0x0500;
constexpr quint16 Version8 = 0x0600;

/// Reads what stands in front of the sheets.
class GlobalsReader
{
public:
    explicit GlobalsReader(const QByteArray &stream)
    {
        Biff::RecordReader records(stream, 0);
        std::optional<Biff::Record> record = records.next();
        if (!record || record->id() != Biff::Begin ||
            (record->shortAt(0) != Version5 && record->shortAt(0) != Version8))
            SheetFailure::raise(SheetFailure::BadFile,
                                u"The workbook is of a version that isn't read."_qs);
        globals.isVersion8 = record->shortAt(0) == Version8;
        while ((record = records.next()) && record->id() != Biff::End)
            read(*record);
        for (const quint16 format : std::as_const(m_formatOfCells))
            globals.kinds.append(CellText::kindOf(format, m_codes.value(format)));
    }

    struct Sheet
    {
        qsizetype offset;
        QString name;
    };

    XlsGlobals globals;
    QList<Sheet> sheets;

private:
    void read(Biff::Record &record)
    {
        switch (record.id()) {
        case Biff::Encrypted:
            SheetFailure::raise(SheetFailure::BadFile, u"The workbook is encrypted."_qs);
        case Biff::DateMode:
            globals.from1904 = record.shortAt(0) == 1;
            break;
        case Biff::BoundSheet:
            readSheet(record);
            break;
        case Biff::NumberFormat:
            readFormat(record);
            break;
        case Biff::CellFormat:
            m_formatOfCells.append(record.shortAt(2));
            break;
        case Biff::SharedStrings:
            readStrings(record);
            break;
        default:
            break;
        }
    }

    QString takeShortText(Biff::Record &record) const
    {
        const quint8 length = record.takeByte();
        return globals.isVersion8 ? record.takeText(length) : record.takeAnsi(length);
    }

    void readSheet(Biff::Record &record)
    {
        constexpr quint8 worksheet = 0;
        if (record.byteAt(5) != worksheet)
            return;
        record.skipTo(6);
        sheets.append({static_cast<qsizetype>(record.longAt(0)), takeShortText(record)});
    }

    void readFormat(Biff::Record &record)
    {
        const quint16 identifier = record.takeShort();
        m_codes.insert(identifier, globals.isVersion8 ? record.takeText(record.takeShort())
                                                      : takeShortText(record));
    }

    void readStrings(Biff::Record &record)
    {
        record.skipTo(8); // two counts, neither of which is relied on
        while (!record.atEnd()) {
            globals.texts->countShared();
            globals.sharedStrings.append(globals.texts->add(record.takeText(record.takeShort())));
        }
    }

    QHash<quint16, QString> m_codes;
    QList<quint16> m_formatOfCells;
};

} // namespace

std::vector<SheetTable> readBiff(const QByteArray &stream)
{
    const GlobalsReader workbook(stream);
    std::vector<SheetTable> tables;
    for (const GlobalsReader::Sheet &sheet : workbook.sheets) {
        tables.emplace_back(sheet.name, workbook.globals.texts);
        readXlsSheet(stream, sheet.offset, workbook.globals, tables.back());
        tables.back().finish();
    }
    return tables;
}

std::vector<SheetTable> readXls(const QByteArray &bytes)
{
    const CompoundFile file(bytes);
    if (file.contains(QStringLiteral("EncryptedPackage")))
        SheetFailure::raise(SheetFailure::BadFile, u"The workbook is encrypted."_qs);
    for (const QString &name : {QStringLiteral("Workbook"), QStringLiteral("Book")}) {
        if (file.contains(name))
            return readBiff(file.stream(name));
    }
    SheetFailure::raise(SheetFailure::BadFile, u"The file holds no workbook."_qs);
}
