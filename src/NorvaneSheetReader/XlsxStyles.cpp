#include "NorvaneSheetReader/XlsxStyles.h"

#include "NorvaneSheetReader/PartXml.h"

#include <utility>

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
        const qint32 identifier = xml.attributes().value(QLatin1String("numFmtId")).toInt();
        if (xml.name() == u"numFmt")
            m_codes.insert(identifier,
                           xml.attributes().value(QLatin1String("formatCode")).toString());
        else if (xml.name() == u"xf" && inCellFormats)
            m_kinds.append(CellText::kindOf(identifier, m_codes.value(identifier)));
    }
    xml.finish();
}
