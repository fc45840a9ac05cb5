#include "NorvaneSheetReader/XlsxStyles.h"

#include "NorvaneSheetReader/PartXml.h"

#include <utility>

namespace norvane {

using namespace Qt::StringLiterals;

XlsxStyles::XlsxStyles(std::unique_ptr<PartStream> part)
{
    if (!part)
        return;
    PartXml xml(std::move(part));
    bool inCellFormats = false;
    while (!xml.atEnd()) {
        xml.readNext();
        if (xml.name() == u"cellXfs")
            inCellFormats = xml.isStartElement();
        if (!xml.isStartElement())
            continue;
        const qint32 identifier = xml.attributes().value("numFmtId"_L1).toInt();
        if (xml.name() == u"numFmt")
            m_codes.insert(identifier, xml.attributes().value("formatCode"_L1).toString());
        else if (xml.name() == u"xf" && inCellFormats)
            m_kinds.append(CellText::kindOf(identifier, m_codes.value(identifier)));
    }
    xml.finish();
}

} // namespace norvane
