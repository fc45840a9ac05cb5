#include "NorvaneSheetReader/WorkbookReader.h"

#include "NorvaneSheetReader/CompoundFile.h"
#include "NorvaneSheetReader/OdsReader.h"
#include "NorvaneSheetReader/PackageParts.h"
#include "NorvaneSheetReader/XlsReader.h"
#include "NorvaneSheetReader/XlsxReader.h"
#include "common/FailureNumbers.h"
#include "common/platform/PlatformFiles.h"

#include <algorithm>
#include <cerrno>

namespace norvane {

using namespace Qt::StringLiterals;

namespace {

constexpr qint64 maxFileBytes = 128 << 20;

// What one answer with values holds at most; one value may be longer.
constexpr qsizetype maxValues = 8192;
constexpr qsizetype maxUnits = 1 << 20;

using Sheets = Result<std::vector<SheetTable>, NumberedFailure>;

Sheets readZipped(const QByteArray &bytes)
{
    const PackageParts parts(bytes);
    if (parts.contains(u"_rels/.rels"_s))
        return readXlsx(parts);
    if (parts.contains(u"content.xml"_s) || isEncryptedOds(parts))
        return readOds(parts);
    return failed(SheetFailure::badFile(u"The archive is no spreadsheet."_s));
}

/// Each cell, record and element may be refused, so the readers of the formats throw from wherever
/// they are; that ends here.
Sheets parse(const QByteArray &bytes)
{
    try {
        if (CompoundFile::isOne(bytes))
            return readXls(bytes);
        if (bytes.startsWith("PK\x03\x04"))
            return readZipped(bytes);
    } catch (const NumberedFailure &failure) {
        return failed(failure);
    }
    return failed(SheetFailure::badFile(u"The file is no spreadsheet."_s));
}

} // namespace

Result<std::vector<SheetTable>, NumberedFailure> readWorkbook(const QString &path)
{
    QByteArray bytes;
    const int error = platformFiles().read(path, maxFileBytes, bytes);
    if (error == EFBIG)
        return failed(SheetFailure::badFile(u"The file is too large."_s));
    if (error != 0)
        return failed(Failure::ofErrno(error, u"readWorkbook"_s));
    return parse(bytes);
}

SheetFrames::Reply WorkbookReader::answer(const SheetFrames::Question &question)
{
    try {
        return carryOut(question);
    } catch (const std::exception &) { // memory that has run out, above all
        return failed(Failure::fromException(std::current_exception()));
    }
}

SheetFrames::Reply WorkbookReader::carryOut(const SheetFrames::Question &question)
{
    if (question.operation == SheetFrames::Operation::Open)
        return open(question.name);
    const SheetTable *const table = find(question.name);
    if (!table)
        return failed(SheetFailure::noSuchSheet(question.name));
    return question.operation == SheetFrames::Operation::Describe ? describe(*table)
                                                                  : values(*table, question);
}

SheetFrames::Reply WorkbookReader::open(const QString &path)
{
    m_sheets.clear();
    auto sheets = readWorkbook(path);
    if (!sheets)
        return failed(sheets.error());
    m_sheets = *std::move(sheets);
    return SheetFrames::Answer{sheetNames(), 0, {}};
}

QStringList WorkbookReader::sheetNames() const
{
    QStringList names;
    for (const SheetTable &table : m_sheets)
        names.append(table.name());
    return names;
}

const SheetTable *WorkbookReader::find(const QString &sheet) const
{
    const auto found = std::ranges::find_if(m_sheets, [&](const SheetTable &table) {
        return table.name().compare(sheet, Qt::CaseInsensitive) == 0;
    });
    return found != m_sheets.end() ? &*found : nullptr;
}

SheetFrames::Reply WorkbookReader::describe(const SheetTable &table)
{
    return SheetFrames::Answer{table.fields(), table.rows(), {}};
}

SheetFrames::Reply WorkbookReader::values(const SheetTable &table,
                                          const SheetFrames::Question &question)
{
    const std::optional<qint32> field = table.fieldIndex(question.field);
    if (!field)
        return failed(SheetFailure::noSuchField());
    SheetFrames::Answer answer;
    qsizetype units = 0;
    for (qint32 row = qMax(0, question.first);
         row < table.rows() && answer.values.size() < maxValues && units < maxUnits; ++row) {
        answer.values.append(table.value(row, *field));
        units += answer.values.last() ? answer.values.last()->size() : 0;
    }
    return answer;
}

} // namespace norvane
