#include "import/sheets/XlsxStyles.h"

#include "import/sheets/CellText.h"
#include "import/sheets/PackageParts.h"

XlsxStyles::XlsxStyles(const QByteArray &part)
{
    if (part.isEmpty())
        return;
    QXmlStreamReader xml(part);
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
            m_isDate.append(CellText::isDateFormat(identifier, m_codes.value(identifier)));
    }
    checkXml(xml);
}
