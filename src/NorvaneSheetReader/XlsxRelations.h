#pragma once

#include "NorvaneSheetReader/PackageParts.h"

#include <QHash>
#include <QString>

namespace norvane {

/// What a part of an Office Open XML archive says about its relations to other parts.
class XlsxRelations
{
public:
    struct Relation
    {
        QString type;   ///< without the address in front
        QString target; ///< the part's path within the archive
    };

    /// @param source  the part whose relations are read; empty for those of the archive itself
    /// @throws NumberedFailure BadFile
    XlsxRelations(const PackageParts &parts, const QString &source);

    /// An empty one, if there is none.
    Relation byId(const QString &identifier) const { return m_relations.value(identifier); }
    /// Of one of that type; empty if there is none.
    QString targetOfType(const QString &type) const;

private:
    QHash<QString, Relation> m_relations; ///< by identifier
};

} // namespace norvane
