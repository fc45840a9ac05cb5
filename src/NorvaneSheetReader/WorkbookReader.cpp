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

std::vector<SheetTable> readZipped(const QByteArray &bytes)
{
    const PackageParts parts(bytes);
    if (parts.contains(u"_rels/.rels"_s))
        return readXlsx(parts);
    if (parts.contains(u"content.xml"_s) || isEncryptedOds(parts))
        return readOds(parts);
    SheetFailure::raise(SheetFailure::BadFile, u"The archive is no spreadsheet."_s);
}

} // namespace

std::vector<SheetTable> readWorkbook(const QString &path)
{
    QByteArray bytes;
    const int error = platformFiles().read(path, maxFileBytes, bytes);
    if (error == EFBIG)
        SheetFailure::raise(SheetFailure::BadFile, u"The file is too large."_s);
    if (error != 0)
        Failure::raiseErrno(error, u"readWorkbook"_s);
    if (CompoundFile::isOne(bytes))
        return readXls(bytes);
    if (bytes.startsWith("PK\x03\x04"))
        return readZipped(bytes);
    SheetFailure::raise(SheetFailure::BadFile, u"The file is no spreadsheet."_s);
}

SheetFrames::Answer WorkbookReader::answer(const SheetFrames::Question &question)
{
    SheetFrames::Answer answer;
    try {
        switch (question.operation) {
        case SheetFrames::Operation::Open:
            open(question.name);
            answer.names = sheetNames();
            break;
        case SheetFrames::Operation::Describe:
            answer.names = sheet(question.name).fields();
            answer.rows = sheet(question.name).rows();
            break;
        case SheetFrames::Operation::Values:
            answer.values = values(sheet(question.name), question);
            break;
        }
    } catch (const std::exception &) {
        answer.failure = Failure::fromException(std::current_exception());
    }
    return answer;
}

void WorkbookReader::open(const QString &path)
{
    m_sheets.clear();
    m_sheets = readWorkbook(path);
}

QStringList WorkbookReader::sheetNames() const
{
    QStringList names;
    for (const SheetTable &table : m_sheets)
        names.append(table.name());
    return names;
}

const SheetTable &WorkbookReader::sheet(const QString &name) const
{
    const auto found = std::ranges::find_if(m_sheets, [&](const SheetTable &table) {
        return table.name().compare(name, Qt::CaseInsensitive) == 0;
    });
    if (found == m_sheets.end())
        SheetFailure::raiseNoSuchSheet(name);
    return *found;
}

QList<std::optional<QString>> WorkbookReader::values(const SheetTable &table,
                                                     const SheetFrames::Question &question)
{
    const std::optional<qint32> field = table.fieldIndex(question.field);
    if (!field)
        SheetFailure::raiseNoSuchField();
    QList<std::optional<QString>> values;
    qsizetype units = 0;
    for (qint32 row = qMax(0, question.first);
         row < table.rows() && values.size() < maxValues && units < maxUnits; ++row) {
        values.append(table.value(row, *field));
        units += values.last() ? values.last()->size() : 0;
    }
    return values;
}

} // namespace norvane
