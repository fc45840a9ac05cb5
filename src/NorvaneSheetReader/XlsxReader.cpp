#include "NorvaneSheetReader/XlsxReader.h"

#include "NorvaneSheetReader/CellText.h"
#include "NorvaneSheetReader/PartXml.h"
#include "NorvaneSheetReader/XlsxRelations.h"
#include "NorvaneSheetReader/XlsxStyles.h"
#include "common/SpreadsheetConnection.h"

#include <algorithm>
#include <memory>
#include <utility>

namespace norvane {

using namespace Qt::StringLiterals;

namespace {

/// `text` with its escapes decoded: "_x000D_" stands for the character of that number, which XML
/// may have no place for, and "_x005F_" for a "_" that begins none.
QString unescaped(const QString &text)
{
    constexpr qsizetype length = 7;
    QString decoded = text;
    for (qsizetype at = decoded.indexOf(u"_x"); at >= 0; at = decoded.indexOf(u"_x", at + 1)) {
        const QStringView escape = QStringView(decoded).mid(at, length);
        const QStringView digits = escape.mid(2, 4);
        const bool isNumber = std::ranges::all_of(
            digits, [](QChar digit) { return u"0123456789ABCDEFabcdef"_s.contains(digit); });
        if (isNumber && escape.size() == length && escape.back() == u'_')
            decoded.replace(at, length, QChar(digits.toUShort(nullptr, 16)));
    }
    return decoded;
}

/// Reads the text elements up to the end of the present element. Reading aids aren't of the text.
QString readTexts(QXmlStreamReader &xml)
{
    QString text = u""_s;
    while (xml.readNextStartElement()) {
        if (xml.name() == u"t")
            text += unescaped(xml.readElementText(QXmlStreamReader::IncludeChildElements));
        else if (xml.name() == u"r")
            text += readTexts(xml);
        else
            xml.skipCurrentElement();
    }
    return text;
}

using SharedStrings = QList<CellTexts::Place>;

/// @param part  null for a workbook without
SharedStrings readSharedStrings(std::unique_ptr<PartStream> part, CellTexts &texts)
{
    SharedStrings strings;
    if (!part)
        return strings;
    PartXml xml(std::move(part));
    xml.readNextStartElement();
    while (xml.readNextStartElement()) {
        if (xml.name() == u"si") {
            texts.countShared();
            strings.append(texts.add(readTexts(xml)));
        } else {
            xml.skipCurrentElement();
        }
    }
    xml.finish();
    return strings;
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
        column = qMin<qint64>(column, SheetTable::maxColumn + 2);
        row = qMin<qint64>(row, SheetTable::lastRow + 2);
    }
    return {static_cast<qint32>(column - 1), static_cast<qint32>(row - 1)};
}

class XlsxWorkbook
{
public:
    explicit XlsxWorkbook(const PackageParts &parts)
        : m_parts(parts), m_path(workbookPath()), m_relations(parts, m_path),
          m_strings(readSharedStrings(relatedPart(u"sharedStrings"_s), *m_texts)),
          m_styles(relatedPart(u"styles"_s))
    {}

    std::vector<SheetTable> read()
    {
        for (const Sheet &sheet : readSheetList()) {
            m_tables.emplace_back(sheet.name, m_texts);
            readCells(sheet.path);
            m_tables.back().finish();
        }
        return std::move(m_tables);
    }

private:
    struct Sheet
    {
        QString name;
        QString path;
    };

    QString workbookPath() const
    {
        const QString path = XlsxRelations(m_parts, QString()).targetOfType(u"officeDocument"_s);
        if (path.isEmpty())
            SheetFailure::raise(SheetFailure::BadFile, u"The archive holds no workbook."_s);
        return path;
    }

    /// A part that the workbook can't do without.
    PartXml openPart(const QString &path) const
    {
        std::unique_ptr<PartStream> part = m_parts.open(path);
        if (!part)
            SheetFailure::raise(SheetFailure::BadFile,
                                u"The archive lacks a part of the workbook."_s);
        return PartXml(std::move(part));
    }

    std::unique_ptr<PartStream> relatedPart(const QString &type) const
    {
        return m_parts.open(m_relations.targetOfType(type));
    }

    QList<Sheet> readSheetList()
    {
        QList<Sheet> sheets;
        PartXml xml = openPart(m_path);
        while (!xml.atEnd()) {
            xml.readNext();
            if (!xml.isStartElement())
                continue;
            if (xml.name() == u"workbookPr") {
                const auto from1904 = xml.attributes().value("date1904"_L1);
                m_from1904 = from1904 == u"1" || from1904 == u"true";
            } else if (xml.name() == u"sheet") {
                addSheet(xml.attributes(), sheets);
            }
        }
        xml.finish();
        return sheets;
    }

    void addSheet(const QXmlStreamAttributes &attributes, QList<Sheet> &sheets) const
    {
        QString identifier;
        for (const QXmlStreamAttribute &attribute : attributes) {
            if (attribute.name() == u"id")
                identifier = attribute.value().toString();
        }
        // Sheets that are charts or macros are left out.
        const XlsxRelations::Relation relation = m_relations.byId(identifier);
        if (relation.type == u"worksheet")
            sheets.append({unescaped(attributes.value("name"_L1).toString()), relation.target});
    }

    void readCells(const QString &path)
    {
        PartXml xml = openPart(path);
        qint32 row = -1;
        qint32 column = -1;
        while (!xml.atEnd()) {
            xml.readNext();
            if (!xml.isStartElement())
                continue;
            if (xml.name() == u"row") {
                const qint32 stated = placeOf(xml.attributes().value("r"_L1)).second;
                row = stated >= 0 ? stated : row + 1;
                column = -1;
            } else if (xml.name() == u"c") {
                const auto place = placeOf(xml.attributes().value("r"_L1));
                column = place.first >= 0 ? place.first : column + 1;
                row = place.second >= 0 ? place.second : row;
                const CellTexts::Place value = readCell(xml);
                if (value != CellTexts::none)
                    m_tables.back().set(row, column, value);
            }
        }
        xml.finish();
    }

    CellTexts::Place readCell(QXmlStreamReader &xml)
    {
        const QString type = xml.attributes().value("t"_L1).toString();
        const qint32 format = xml.attributes().value("s"_L1).toInt();
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
        if (type == u"s")
            return sharedString(stored);
        return m_texts->add(type == u"inlineStr" ? written : textOf(type, format, stored));
    }

    CellTexts::Place sharedString(const QString &stored) const
    {
        bool isNumber = false;
        const qint32 index = stored.toInt(&isNumber);
        return isNumber ? m_strings.value(index, CellTexts::none) : CellTexts::none;
    }

    QString textOf(const QString &type, qint32 format, const QString &stored) const
    {
        if (type == u"str")
            return unescaped(stored);
        if (type == u"b")
            return stored.isEmpty() ? QString() : CellText::ofBoolean(stored.trimmed() != u"0");
        if (type == u"e")
            return {};
        if (type == u"d")
            return CellText::ofMoment(stored);
        bool isNumber = false;
        const double number = stored.trimmed().toDouble(&isNumber);
        if (!isNumber)
            return {};
        return CellText::ofDays(number, m_styles.kindOf(format), m_from1904);
    }

    const PackageParts &m_parts;
    const QString m_path;
    const XlsxRelations m_relations;
    const std::shared_ptr<CellTexts> m_texts = std::make_shared<CellTexts>();
    const SharedStrings m_strings;
    const XlsxStyles m_styles;
    bool m_from1904 = false;
    std::vector<SheetTable> m_tables;
};

} // namespace

std::vector<SheetTable> readXlsx(const PackageParts &parts)
{
    return XlsxWorkbook(parts).read();
}

} // namespace norvane
