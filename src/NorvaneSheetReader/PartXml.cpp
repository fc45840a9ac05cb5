#include "NorvaneSheetReader/PartXml.h"

#include "common/SpreadsheetConnection.h"

#include <utility>

namespace norvane {

using namespace Qt::StringLiterals;

PartXml::PartXml(std::unique_ptr<PartStream> part)
    : QXmlStreamReader(part.get()), m_part(std::move(part))
{}

void PartXml::finish()
{
    while (!atEnd())
        readNext();
    m_part->finish();
    if (hasError())
        SheetFailure::raise(SheetFailure::BadFile,
                            u"The workbook is damaged (%1)."_s.arg(errorString()));
}

} // namespace norvane
