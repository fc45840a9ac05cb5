#include "NorvaneSheetReader/OdsReader.h"

#include "NorvaneSheetReader/CellText.h"
#include "NorvaneSheetReader/PartXml.h"
#include "common/SpreadsheetConnection.h"

#include <QRegularExpression>

#include <algorithm>
#include <memory>
#include <utility>

namespace norvane {

using namespace Qt::StringLiterals;

namespace {

/// Reads the part with the cells. Names are taken without their namespace: no other element of a
/// sheet shares one of these.
class ContentReader
{
public:
    explicit ContentReader(std::unique_ptr<PartStream> content) : m_xml(std::move(content)) {}

    std::vector<SheetTable> read()
    {
        while (!m_xml.atEnd()) {
            m_xml.readNext();
            if (!m_xml.isStartElement())
                continue;
            if (is(u"table"))
                readTable();
            else if (!is(u"document-content") && !is(u"body") && !is(u"spreadsheet"))
                m_xml.skipCurrentElement();
        }
        m_xml.finish();
        return std::move(m_tables);
    }

private:
    bool is(QStringView name) const { return m_xml.name() == name; }

    QString attribute(QStringView name) const
    {
        for (const QXmlStreamAttribute &candidate : m_xml.attributes()) {
            if (candidate.name() == name && !isExtension(candidate))
                return candidate.value().toString();
        }
        return {};
    }

    /// Whether an attribute is one that an office suite adds to the format's own.
    static bool isExtension(const QXmlStreamAttribute &attribute)
    {
        return attribute.namespaceUri().contains("calcext"_L1);
    }

    /// Whether the present cell holds an error. The format has none: one program has a type of its
    /// own for them, and another leaves the error's word as the result of the formula.
    bool holdsAnError() const
    {
        static const QStringList words{u"#NULL!"_s, u"#DIV/0!"_s, u"#VALUE!"_s, u"#REF!"_s,
                                       u"#NAME?"_s, u"#NUM!"_s,   u"#N/A"_s};
        const bool hasType = std::ranges::any_of(m_xml.attributes(), [](const auto &candidate) {
            return candidate.name() == u"value-type" && candidate.value() == u"error";
        });
        return hasType ||
               (!attribute(u"formula").isEmpty() && words.contains(attribute(u"string-value")));
    }

    qint32 repetitions(QStringView name) const
    {
        bool isNumber = false;
        const qint32 count = attribute(name).toInt(&isNumber);
        return isNumber && count > 0 ? count : 1;
    }

    void readTable()
    {
        m_tables.emplace_back(attribute(u"name"), m_texts);
        m_row = 0;
        readRows();
        m_tables.back().finish();
    }

    void readRows()
    {
        while (m_xml.readNextStartElement()) {
            if (is(u"table-row"))
                readRow();
            else if (is(u"table-row-group") || is(u"table-header-rows") || is(u"table-rows"))
                readRows();
            else
                m_xml.skipCurrentElement();
        }
    }

    void readRow()
    {
        const qint32 count = repetitions(u"number-rows-repeated");
        qint64 column = 0;
        while (m_xml.readNextStartElement()) {
            if (!is(u"table-cell") && !is(u"covered-table-cell")) {
                m_xml.skipCurrentElement();
                continue;
            }
            const qint32 width = repetitions(u"number-columns-repeated");
            const QString value = readValue();
            if (!value.isNull())
                putAll(m_texts->add(value), column, width, count);
            column += width;
        }
        m_row += count;
    }

    void putAll(CellTexts::Place text, qint64 column, qint32 width, qint32 height)
    {
        for (qint64 row = m_row; row < m_row + height; ++row) {
            for (qint64 i = column; i < column + width; ++i)
                m_tables.back().set(static_cast<qint32>(qMin<qint64>(row, SheetTable::lastRow + 1)),
                                    static_cast<qint32>(qMin<qint64>(i, SheetTable::maxColumn + 1)),
                                    text);
        }
    }

    QString readValue()
    {
        const bool isError = holdsAnError();
        const QString type = attribute(u"value-type");
        const QString stored = storedValue(type);
        const QString paragraphs = readParagraphs();
        if (isError)
            return {};
        // What is shown of a cell without a type is its text.
        const bool isText = type.isEmpty() || type == u"string";
        return isText && stored.isNull() ? paragraphs : stored;
    }

    QString storedValue(const QString &type) const
    {
        if (type == u"float" || type == u"percentage" || type == u"currency")
            return numberOf(attribute(u"value"));
        if (type == u"boolean")
            return CellText::ofBoolean(attribute(u"boolean-value") == u"true");
        if (type == u"date")
            return CellText::ofMoment(attribute(u"date-value"));
        if (type == u"time")
            return durationOf(attribute(u"time-value"));
        return type == u"string" ? attribute(u"string-value") : QString();
    }

    static QString numberOf(const QString &value)
    {
        bool isNumber = false;
        const double number = value.toDouble(&isNumber);
        return isNumber ? CellText::ofNumber(number) : QString();
    }

    /// Days, hours, minutes and seconds; years and months have no length. The hours go on beyond a
    /// day, also those of a date in a format that shows the time alone.
    static QString durationOf(const QString &value)
    {
        static const QRegularExpression duration(
            u"^(-?)P(?=.)(?:(\\d+)D)?(?:T(?=.)(?:(\\d+)H)?(?:(\\d+)M)?"
            "(?:(\\d+(?:[.,]\\d*)?)S)?)?$"_s);
        const QRegularExpressionMatch match = duration.match(value);
        if (!match.hasMatch())
            return {};
        const auto captured = [&](int group) {
            return match.captured(group).replace(u',', u'.').toDouble();
        };
        const double seconds =
            captured(2) * 86400 + captured(3) * 3600 + captured(4) * 60 + captured(5);
        return CellText::ofDuration(match.capturedLength(1) > 0 ? -seconds : seconds);
    }

    /// The cell's paragraphs, a line each; null if it has none. Notes and drawings aren't of them.
    QString readParagraphs()
    {
        QString text;
        while (m_xml.readNextStartElement()) {
            if (!is(u"p")) {
                m_xml.skipCurrentElement();
                continue;
            }
            text += text.isNull() ? u""_s : u"\n"_s;
            text += readRuns();
        }
        return text;
    }

    QString readRuns()
    {
        QString text = u""_s;
        for (int depth = 1; depth > 0 && !m_xml.atEnd();) {
            m_xml.readNext();
            if (m_xml.isCharacters()) {
                text += m_xml.text();
            } else if (m_xml.isEndElement()) {
                --depth;
            } else if (m_xml.isStartElement() && is(u"annotation")) {
                m_xml.skipCurrentElement();
            } else if (m_xml.isStartElement()) {
                ++depth;
                text += blanksOf();
            }
        }
        return text;
    }

    /// What an element of a text stands for by itself.
    QString blanksOf() const
    {
        constexpr qint32 max = 32767;
        if (is(u"s"))
            return QString(qMin(repetitions(u"c"), max), u' ');
        if (is(u"tab"))
            return u"\t"_s;
        return is(u"line-break") ? u"\n"_s : QString();
    }

    PartXml m_xml;
    std::shared_ptr<CellTexts> m_texts = std::make_shared<CellTexts>();
    std::vector<SheetTable> m_tables;
    qint64 m_row = 0;
};

} // namespace

bool isEncryptedOds(const PackageParts &parts)
{
    return parts.bytes(u"META-INF/manifest.xml"_s).contains("encryption-data");
}

std::vector<SheetTable> readOds(const PackageParts &parts)
{
    if (isEncryptedOds(parts))
        SheetFailure::raise(SheetFailure::BadFile, u"The workbook is encrypted."_s);
    std::unique_ptr<PartStream> content = parts.open(u"content.xml"_s);
    if (!content)
        SheetFailure::raise(SheetFailure::BadFile, u"The archive holds no workbook."_s);
    return ContentReader(std::move(content)).read();
}

} // namespace norvane
