#include "NorvaneSheetReader/XlsxRelations.h"

#include "NorvaneSheetReader/PartXml.h"
#include "common/SpreadsheetConnection.h"

#include <QStringList>

#include <algorithm>
#include <utility>

namespace norvane {

using namespace Qt::StringLiterals;

namespace {

/// The path of what `source` calls `target`, relative to its own folder or to the archive.
QString resolved(const QString &source, const QString &target)
{
    const bool isAbsolute = target.startsWith(u'/');
    QStringList path = isAbsolute ? QStringList() : source.split(u'/').mid(0, source.count(u'/'));
    for (const QString &step : target.split(u'/', Qt::SkipEmptyParts)) {
        if (step == u"..") {
            if (!path.isEmpty())
                path.removeLast();
        } else if (step != u".") {
            path.append(step);
        }
    }
    return path.join(u'/');
}

} // namespace

XlsxRelations::XlsxRelations(const PackageParts &parts, const QString &source)
{
    const qsizetype folder = source.lastIndexOf(u'/') + 1;
    std::unique_ptr<PartStream> part =
        parts.open(source.left(folder) + u"_rels/"_s + source.mid(folder) + u".rels"_s);
    if (!part)
        SheetFailure::raise(SheetFailure::BadFile, u"The archive holds no workbook."_s);
    PartXml xml(std::move(part));
    xml.readNextStartElement();
    while (xml.readNextStartElement()) {
        const QXmlStreamAttributes attributes = xml.attributes();
        const QString type = attributes.value("Type"_L1).toString();
        m_relations.insert(attributes.value("Id"_L1).toString(),
                           {type.mid(type.lastIndexOf(u'/') + 1),
                            resolved(source, attributes.value("Target"_L1).toString())});
        xml.skipCurrentElement();
    }
    xml.finish();
}

QString XlsxRelations::targetOfType(const QString &type) const
{
    const auto found = std::ranges::find(m_relations, type, &Relation::type);
    return found != m_relations.end() ? found->target : QString();
}

} // namespace norvane
