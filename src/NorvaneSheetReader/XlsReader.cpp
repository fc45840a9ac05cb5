#include "NorvaneSheetReader/XlsReader.h"

#include "NorvaneSheetReader/CellText.h"
#include "NorvaneSheetReader/CompoundFile.h"
#include "NorvaneSheetReader/XlsSheet.h"
#include "common/SpreadsheetConnection.h"

#include <QHash>

namespace norvane {

using namespace Qt::StringLiterals;

namespace {

constexpr quint16 version5 = 0x0500;
constexpr quint16 version8 = 0x0600;

/// Reads what stands in front of the sheets.
class GlobalsReader
{
public:
    explicit GlobalsReader(const QByteArray &stream)
    {
        Biff::RecordReader records(stream, 0);
        std::optional<Biff::Record> record = records.next();
        if (!record || record->id() != Biff::Begin ||
            (record->shortAt(0) != version5 && record->shortAt(0) != version8))
            SheetFailure::raise(SheetFailure::BadFile,
                                u"The workbook is of a version that isn't read."_s);
        globals.isVersion8 = record->shortAt(0) == version8;
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
            SheetFailure::raise(SheetFailure::BadFile, u"The workbook is encrypted."_s);
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
    if (file.contains(u"EncryptedPackage"_s))
        SheetFailure::raise(SheetFailure::BadFile, u"The workbook is encrypted."_s);
    for (const QString &name : {u"Workbook"_s, u"Book"_s}) {
        if (file.contains(name))
            return readBiff(file.stream(name));
    }
    SheetFailure::raise(SheetFailure::BadFile, u"The file holds no workbook."_s);
}

} // namespace norvane
