#pragma once

#include "contract/SMSList.h"

#include <QString>
#include <QStringList>

namespace norvane {

class clsCollection;

/// `message` with every "%" and number replaced by the field of that number. The fields are taken
/// in rising order, each over the text that the ones before it have left: what a field brings in is
/// replaced as well, and "%10" is field 1 and a "0". A number that no field has stays.
QString FillTemplate(QString message, const QStringList &fields);

/// The messages that `text` gives for the imported recipients that have a phone. It is normalised
/// before its template is filled.
/// @throws NumberedFailure 6 for more than a list holds
SMSList BulkList(const QString &text, const clsCollection &recipients);

} // namespace norvane
