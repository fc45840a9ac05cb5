#include "common/SpreadsheetConnection.h"

namespace norvane {

using namespace Qt::StringLiterals;

namespace SheetFailure {

void raise(Number number, const QString &description)
{
    throw NumberedFailure(number, u"Spreadsheet"_s, description);
}

void raiseNoCurrentRecord()
{
    raise(NoCurrentRecord, u"Either BOF or EOF is True, or the current record has been deleted. "
                           u"Requested operation requires a current record."_s);
}

void raiseNoSuchField()
{
    raise(NoSuchField,
          u"Item cannot be found in the collection corresponding to the requested name or "
          u"ordinal."_s);
}

void raiseNoSuchSheet(const QString &sheet)
{
    raise(NoSuchSheet, u"There is no sheet '%1' in this file."_s.arg(sheet));
}

} // namespace SheetFailure

} // namespace norvane
