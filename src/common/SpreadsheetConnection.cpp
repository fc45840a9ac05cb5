#include "common/SpreadsheetConnection.h"

namespace norvane {

using namespace Qt::StringLiterals;

namespace SheetFailure {

namespace {

NumberedFailure numbered(Number number, const QString &description)
{
    return {number, u"Spreadsheet"_s, description};
}

} // namespace

void raise(Number number, const QString &description)
{
    throw numbered(number, description);
}

void raiseNoCurrentRecord()
{
    raise(NoCurrentRecord, u"Either BOF or EOF is True, or the current record has been deleted. "
                           u"Requested operation requires a current record."_s);
}

NumberedFailure badFile(const QString &description)
{
    return numbered(BadFile, description);
}

NumberedFailure noSuchField()
{
    return numbered(NoSuchField,
                    u"Item cannot be found in the collection corresponding to the requested name "
                    u"or ordinal."_s);
}

NumberedFailure noSuchSheet(const QString &sheet)
{
    return numbered(NoSuchSheet, u"There is no sheet '%1' in this file."_s.arg(sheet));
}

} // namespace SheetFailure

} // namespace norvane
