#include "foundation/cls_Localize.h"

#include "common/FailureNumbers.h"
#include "common/platform/PlatformFiles.h"
#include "foundation/RowsetReader.h"

#include <limits>

namespace norvane {

using namespace Qt::StringLiterals;

bool cls_Localize::Init(const QString &strFile, const QString &strLanguageID)
{
    m_languageId = strLanguageID;
    m_isOpen = false;
    m_texts.clear();

    QByteArray bytes;
    if (platformFiles().read(strFile, RowsetReader::maxFileBytes, bytes) != 0)
        return false;

    bool hasRows = false;
    const bool isTable =
        RowsetReader::read(bytes, {u"ResID"_s, u"ResSTring"_s}, [&](const QStringList &row) {
            hasRows = true;
            if (row.at(0).isNull())
                return true;
            bool isWhole = false;
            const qint64 id = row.at(0).toLongLong(&isWhole);
            using Id = std::numeric_limits<qint32>;
            if (isWhole && id >= Id::min() && id <= Id::max() &&
                !m_texts.contains(static_cast<qint32>(id)))
                m_texts.insert(static_cast<qint32>(id), row.at(1));
            return isWhole;
        });
    m_isOpen = isTable && hasRows;
    if (!m_isOpen)
        m_texts.clear();
    return m_isOpen;
}

QString cls_Localize::GS(qint32 id, const QStringList &arguments) const
{
    if (!m_isOpen)
        Failure::raise(Failure::ObjectClosed, u"cls_Localize"_s);
    const auto found = m_texts.constFind(id);
    if (found == m_texts.constEnd())
        return QString::number(id) + u"\\\?\?\?\?\?\?\?\?\?\?\?\?"_s;

    QString text = *found;
    for (qsizetype n = 0; n < arguments.size(); ++n)
        text.replace(u'%' + QString::number(n + 1), arguments.at(n));
    text.replace(u"{\\CrLf}"_s, u"\r\n"_s);
    text.replace(u"{\\Cr}"_s, u"\r"_s);
    text.replace(u"{\\Tab}"_s, u"\t"_s);
    return text;
}

} // namespace norvane
