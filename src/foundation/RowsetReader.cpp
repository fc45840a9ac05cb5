#include "foundation/RowsetReader.h"

#include "foundation/XmlText.h"

#include <QHash>
#include <QXmlStreamReader>

#include <algorithm>
#include <utility>

namespace norvane {

using namespace Qt::StringLiterals;

namespace RowsetReader {
namespace {

constexpr QStringView schemaNamespace = u"uuid:BDC6E3F0-6DA3-11d1-A2A3-00AA00C14882";
constexpr QStringView rowsetNamespace = u"urn:schemas-microsoft-com:rowset";

constexpr int maxElementDepth = 16;
constexpr int maxEntityLength = 512;                 // characters that one entity may stand for
constexpr qsizetype maxLengthWithEntities = 131'072; // characters of a file that declares entities
constexpr qsizetype maxAttributes = 1'000;

/// Whether no tag of `text` has more than maxAttributes: the time that the toolkit's reader takes
/// grows with their square. Between two "<" there is one tag at most, and an attribute has an
/// equals sign with a quote behind it.
bool hasModestTags(QStringView text)
{
    qsizetype attributes = 0;
    bool afterEquals = false;
    for (const QChar unit : text) {
        if (unit == u'<')
            attributes = 0;
        else if (afterEquals && (unit == u'"' || unit == u'\''))
            ++attributes;
        if (attributes > maxAttributes)
            return false;
        afterEquals = unit == u'=' || (afterEquals && unit.isSpace());
    }
    return true;
}

class Reader
{
public:
    Reader(const QString &text, const QStringList &columns, const RowSink &sink)
        : m_xml(text), m_columns(columns), m_sink(sink)
    {
        m_xml.setEntityExpansionLimit(maxEntityLength);
    }

    bool readFile()
    {
        if (!readProlog() || m_xml.name() != u"xml" || !m_xml.namespaceUri().isEmpty())
            return false;
        bool sawSchema = false;
        bool sawData = false;
        while (nextChild()) {
            if (isElement(schemaNamespace, u"Schema") && !sawSchema)
                sawSchema = readSchema();
            else if (isElement(rowsetNamespace, u"data") && sawSchema && !sawData)
                sawData = readData();
            else
                m_good = false;
        }
        return m_good && sawData && readEpilog();
    }

private:
    bool isElement(QStringView namespaceUri, QStringView name) const
    {
        return m_xml.namespaceUri() == namespaceUri && m_xml.name() == name;
    }

    QString attribute(const QString &name) const
    {
        return m_xml.attributes().value(name).toString();
    }

    bool fail()
    {
        m_good = false;
        return false;
    }

    /// Up to the outermost element; false if there is none, or a document type that goes beyond
    /// entities of its own.
    bool readProlog()
    {
        while (!m_xml.atEnd()) {
            const auto token = m_xml.readNext();
            if (token == QXmlStreamReader::StartElement)
                return true;
            if (token == QXmlStreamReader::DTD && !isHarmlessType())
                return fail();
        }
        return fail();
    }

    bool isHarmlessType() const
    {
        const QStringView type = m_xml.text();
        if (!m_xml.dtdSystemId().isEmpty() || !m_xml.dtdPublicId().isEmpty() ||
            type.contains(u"<!ATTLIST") || type.contains(u'%'))
            return false;
        const auto entities = m_xml.entityDeclarations();
        return std::ranges::none_of(entities, [](const QXmlStreamEntityDeclaration &entity) {
            return !entity.systemId().isEmpty() || !entity.publicId().isEmpty();
        });
    }

    bool readEpilog()
    {
        while (!m_xml.atEnd())
            m_xml.readNext();
        return !m_xml.hasError();
    }

    /// To the next element inside the present one; false at the present one's end, and on anything
    /// that doesn't belong between elements.
    bool nextChild()
    {
        while (m_good) {
            const auto token = m_xml.readNext();
            if (token == QXmlStreamReader::StartElement)
                return true;
            if (token == QXmlStreamReader::EndElement)
                return false;
            const bool blank = token == QXmlStreamReader::Comment ||
                               token == QXmlStreamReader::ProcessingInstruction ||
                               (token == QXmlStreamReader::Characters && m_xml.isWhitespace());
            if (!blank)
                m_good = false;
        }
        return false;
    }

    /// Passes over the present element with all that is in it.
    void skip()
    {
        int depth = 1;
        while (depth > 0 && m_good) {
            const auto token = m_xml.readNext();
            if (token == QXmlStreamReader::StartElement)
                ++depth;
            else if (token == QXmlStreamReader::EndElement)
                --depth;
            if (m_xml.hasError() || depth > maxElementDepth)
                m_good = false;
        }
    }

    // A column's type is declared inside the row's type, or outside and referred to by it.
    bool readSchema()
    {
        m_rowNamespace = u'#' + attribute(u"id"_s);
        if (m_rowNamespace.size() < 2)
            return fail();
        bool sawRowType = false;
        while (nextChild()) {
            if (isElement(schemaNamespace, u"AttributeType")) {
                declareColumn();
            } else if (isElement(schemaNamespace, u"ElementType") &&
                       attribute(u"name"_s) == u"row") {
                sawRowType = true;
                readRowType();
            } else {
                skip();
            }
        }
        return m_good && sawRowType && findColumns();
    }

    void readRowType()
    {
        while (nextChild()) {
            if (isElement(schemaNamespace, u"AttributeType"))
                m_rowAttributes.append(declareColumn());
            else if (isElement(schemaNamespace, u"attribute")) {
                m_rowAttributes.append(attribute(u"type"_s));
                skip();
            } else {
                skip();
            }
        }
    }

    /// The attribute that stands for the column in a row.
    QString declareColumn()
    {
        const QXmlStreamAttributes attributes = m_xml.attributes();
        const QString attribute = attributes.value(u"name"_s).toString();
        const QString column =
            attributes.hasAttribute(rowsetNamespace.toString(), u"name"_s)
                ? attributes.value(rowsetNamespace.toString(), u"name"_s).toString()
                : attribute;
        if (!m_columnOf.contains(attribute))
            m_columnOf.insert(attribute, column);
        skip();
        return attribute;
    }

    bool findColumns()
    {
        for (const QString &column : m_columns) {
            const auto found = std::ranges::find_if(m_rowAttributes, [&](const QString &attribute) {
                return m_columnOf.contains(attribute) && m_columnOf.value(attribute) == column;
            });
            if (found == m_rowAttributes.end())
                return fail();
            m_attributes.append(*found);
        }
        return true;
    }

    bool readData()
    {
        while (nextChild()) {
            if (!isElement(m_rowNamespace, u"row") || !takeRow())
                return fail();
            if (nextChild())
                return fail();
        }
        return m_good;
    }

    bool takeRow()
    {
        const QXmlStreamAttributes attributes = m_xml.attributes();
        QStringList values;
        for (const QString &name : std::as_const(m_attributes)) {
            QString value;
            if (attributes.hasAttribute(QString(), name))
                value = attributes.value(QString(), name).toString();
            values.append(value);
        }
        return m_sink(values);
    }

    QXmlStreamReader m_xml;
    const QStringList &m_columns;
    const RowSink &m_sink;
    bool m_good = true;
    QString m_rowNamespace;
    QHash<QString, QString> m_columnOf; ///< by attribute
    QStringList m_rowAttributes;        ///< those that the row's type has
    QStringList m_attributes;           ///< of the columns asked for, in their order
};

} // namespace

bool read(const QByteArray &bytes, const QStringList &columns, const RowSink &sink)
{
    if (bytes.size() > maxFileBytes)
        return false;
    const auto text = decodedXml(bytes);
    if (!text || !hasModestTags(*text))
        return false;
    if (text->size() > maxLengthWithEntities && text->contains(u"<!DOCTYPE"))
        return false;
    return Reader(*text, columns, sink).readFile();
}

} // namespace RowsetReader

} // namespace norvane
