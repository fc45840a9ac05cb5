#include "common/SpreadsheetConnection.h"

namespace SheetFailure {

void raise(Number number, const QString &description)
{
    throw NumberedFailure(number, QStringLiteral("Spreadsheet"), description);
}

void raiseNoCurrentRecord()
{
    raise(NoCurrentRecord, u"Either BOF or EOF is True, or the current record has been deleted. "
                           u"Requested operation requires a current record."_qs);
}

void raiseNoSuchField()
{
    raise(NoSuchField,
          u"Item cannot be found in the collection corresponding to the requested name or "
          u"ordinal."_qs);
}

void raiseNoSuchSheet(const QString &sheet)
{
    raise(NoSuchSheet, u"There is no sheet '%1' in this file."_qs.arg(sheet));
}

} // namespace SheetFailure
