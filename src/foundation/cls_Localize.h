#pragma once

#include <QHash>
#include <QString>
#include <QStringList>

namespace norvane {

/// A language file: the operator's texts by number.
class cls_Localize
{
public:
    cls_Localize() = default;

    /// Empty until `Init` has been called.
    QString LanguageID() const { return m_languageId; }

    /// Reads the whole language file. To be called once, directly after construction.
    /// @return false if it can't be read, is no language file or has no rows
    bool Init(const QString &strFile, const QString &strLanguageID);

    /// The text of the first row with that number, its placeholders "%1", "%2", ... replaced by the
    /// arguments one after the other, and then its escapes for line ends and tabs by what they
    /// stand for. A number without a row gives the number and a row of question marks.
    /// @throws NumberedFailure 3704 unless `Init` has given true
    QString GS(qint32 id, const QStringList &arguments = {}) const;

    /// Whether there is a row with that number.
    bool has(qint32 id) const { return m_texts.contains(id); }

private:
    QString m_languageId;
    QHash<qint32, QString> m_texts;
    bool m_isOpen = false;
};

} // namespace norvane
