#include "import/sheets/XlsxReader.h"

#include "import/sheets/CellText.h"
#include "import/sheets/XlsxStyles.h"

#include <QDateTime>
#include <QHash>

namespace {

/// Reads the text elements up to the end of the present element. Reading aids aren't of the text.
QString readTexts(QXmlStreamReader &xml)
{
    QString text = u""_qs;
    while (xml.readNextStartElement()) {
        if (xml.name() == u"t")
            text += xml.readElementText(QXmlStreamReader::IncludeChildElements);
        else if (xml.name() == u"r")
            text += readTexts(xml);
        else
            xml.skipCurrentElement();
    }
    return text;
}

QStringList readSharedStrings(const QByteArray &part)
{
    QStringList texts;
    if (part.isEmpty())
        return texts;
    QXmlStreamReader xml(part);
    xml.readNextStartElement();
    while (xml.readNextStartElement()) {
        if (xml.name() == u"si")
            texts.append(readTexts(xml));
        else
            xml.skipCurrentElement();
    }
    checkXml(xml);
    return texts;
}

struct Relation
{
    QString type; ///< without the address in front
    QString target;
};

QHash<QString, Relation> readRelations(const QByteArray &part)
{
    QHash<QString, Relation> relations;
    QXmlStreamReader xml(part);
    xml.readNextStartElement();
    while (xml.readNextStartElement()) {
        const QXmlStreamAttributes attributes = xml.attributes();
        const QString type = attributes.value(QLatin1String("Type")).toString();
        relations.insert(attributes.value(QLatin1String("Id")).toString(),
                         {type.mid(type.lastIndexOf(u'/') + 1),
                          attributes.value(QLatin1String("Target")).toString()});
        xml.skipCurrentElement();
    }
    checkXml(xml);
    return relations;
}

/// Column and row of an address like "B7", counted from 0; -1 for what it doesn't tell.
std::pair<qint32, qint32> placeOf(QStringView address)
{
    qint64 column = 0;
    qint64 row = 0;
    for (const QChar character : address) {
        if (character >= u'A' && character <= u'Z')
            column = column * 26 + (character.unicode() - u'A' + 1);
        else if (character >= u'0' && character <= u'9')
            row = row * 10 + (character.unicode() - u'0');
        column = qMin<qint64>(column, SheetTable::LastColumn + 2);
        row = qMin<qint64>(row, SheetTable::LastRow + 2);
    }
    return {static_cast<qint32>(column - 1), static_cast<qint32>(row - 1)};
}

class XlsxWorkbook
{
public:
    explicit XlsxWorkbook(const PackageParts &parts)
        : m_parts(parts), m_path(workbookPath()),
          m_relations(
              readRelations(parts.part(folder() + QStringLiteral("_rels/") +
                                       m_path.mid(folder().size()) + QStringLiteral(".rels")))),
          m_strings(readSharedStrings(relatedPart(QStringLiteral("sharedStrings")))),
          m_styles(relatedPart(QStringLiteral("styles")))
    {}

    std::vector<SheetTable> read()
    {
        QXmlStreamReader xml(m_parts.part(m_path));
        while (!xml.atEnd()) {
            xml.readNext();
            if (!xml.isStartElement())
                continue;
            if (xml.name() == u"workbookPr") {
                const auto from1904 = xml.attributes().value(QLatin1String("date1904"));
                m_from1904 = from1904 == u"1" || from1904 == u"true";
            } else if (xml.name() == u"sheet") {
                readSheet(xml.attributes());
            }
        }
        checkXml(xml);
        return std::move(m_tables);
    }

private:
    QString workbookPath() const
    {
        for (const Relation &relation :
             readRelations(m_parts.part(QStringLiteral("_rels/.rels")))) {
            if (relation.type == u"officeDocument")
                return relation.target.startsWith(u'/') ? relation.target.mid(1) : relation.target;
        }
        SheetFailure::raise(SheetFailure::BadFile, u"The archive holds no workbook."_qs);
    }

    QString folder() const { return m_path.left(m_path.lastIndexOf(u'/') + 1); }

    QByteArray partOf(const Relation &relation) const
    {
        return m_parts.part(relation.target.startsWith(u'/') ? relation.target.mid(1)
                                                             : folder() + relation.target);
    }

    QByteArray relatedPart(const QString &type) const
    {
        for (const Relation &relation : m_relations) {
            if (relation.type == type)
                return partOf(relation);
        }
        return {};
    }

    void readSheet(const QXmlStreamAttributes &attributes)
    {
        QString identifier;
        for (const QXmlStreamAttribute &attribute : attributes) {
            if (attribute.name() == u"id")
                identifier = attribute.value().toString();
        }
        const Relation relation = m_relations.value(identifier);
        if (relation.type != u"worksheet")
            return; // a sheet that is a chart or a macro
        m_tables.emplace_back(attributes.value(QLatin1String("name")).toString(), m_budget);
        readCells(partOf(relation));
        m_tables.back().finish();
    }

    void readCells(const QByteArray &part)
    {
        QXmlStreamReader xml(part);
        qint32 row = -1;
        qint32 column = -1;
        while (!xml.atEnd()) {
            xml.readNext();
            if (!xml.isStartElement())
                continue;
            if (xml.name() == u"row") {
                const qint32 told = placeOf(xml.attributes().value(QLatin1String("r"))).second;
                row = told >= 0 ? told : row + 1;
                column = -1;
            } else if (xml.name() == u"c") {
                const auto place = placeOf(xml.attributes().value(QLatin1String("r")));
                column = place.first >= 0 ? place.first : column + 1;
                row = place.second >= 0 ? place.second : row;
                const QString value = readCell(xml);
                if (!value.isNull())
                    m_tables.back().set(row, column, value);
            }
        }
        checkXml(xml);
    }

    QString readCell(QXmlStreamReader &xml) const
    {
        const QString type = xml.attributes().value(QLatin1String("t")).toString();
        const qint32 format = xml.attributes().value(QLatin1String("s")).toInt();
        QString stored;
        QString written;
        while (xml.readNextStartElement()) {
            if (xml.name() == u"v")
                stored = xml.readElementText(QXmlStreamReader::IncludeChildElements);
            else if (xml.name() == u"is")
                written = readTexts(xml);
            else
                xml.skipCurrentElement();
        }
        return type == u"inlineStr" ? written : textOf(type, format, stored);
    }

    QString textOf(const QString &type, qint32 format, const QString &stored) const
    {
        bool isNumber = false;
        if (type == u"s") {
            const qint32 index = stored.toInt(&isNumber);
            return isNumber ? m_strings.value(index) : QString();
        }
        if (type == u"str")
            return stored;
        if (type == u"b")
            return stored.isEmpty() ? QString() : CellText::ofBoolean(stored.trimmed() != u"0");
        if (type == u"e")
            return {};
        if (type == u"d") {
            const QDateTime moment = QDateTime::fromString(stored.left(19), Qt::ISODate);
            return CellText::ofDateTime(moment.date().year(), moment.date().month(),
                                        moment.date().day(), moment.time().hour(),
                                        moment.time().minute(), moment.time().second());
        }
        const double number = stored.trimmed().toDouble(&isNumber);
        if (!isNumber)
            return {};
        return m_styles.isDate(format) ? CellText::ofSerial(number, m_from1904)
                                       : CellText::ofNumber(number);
    }

    const PackageParts &m_parts;
    const QString m_path;
    const QHash<QString, Relation> m_relations;
    const QStringList m_strings;
    const XlsxStyles m_styles;
    bool m_from1904 = false;
    CellBudget m_budget;
    std::vector<SheetTable> m_tables;
};

} // namespace

std::vector<SheetTable> readXlsx(const PackageParts &parts)
{
    return XlsxWorkbook(parts).read();
}
