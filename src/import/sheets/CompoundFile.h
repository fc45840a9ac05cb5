#pragma once

#include <QByteArray>
#include <QList>
#include <QString>

/// A file of streams in chained sectors, as office programs wrote them before they took to
/// archives.
class CompoundFile
{
public:
    static bool isOne(const QByteArray &bytes);

    /// @param bytes  must outlive this object
    /// @throws NumberedFailure BadFile for chains that lead nowhere
    explicit CompoundFile(const QByteArray &bytes);

    /// Whether there is a stream of this name.
    bool contains(const QString &name) const;
    /// The bytes of a stream; none if it isn't there.
    /// @throws NumberedFailure BadFile for a damaged stream
    QByteArray stream(const QString &name) const;

private:
    struct Entry
    {
        QString name;
        quint32 start;
        quint32 length;
        bool isRoot;
    };

    quint32 number(qsizetype offset) const;
    QByteArray sector(quint32 index) const;
    void readAllocation();
    void readEntries();
    QByteArray chain(quint32 start, qsizetype most) const;
    QByteArray smallChain(quint32 start, qsizetype length) const;
    const Entry *find(const QString &name) const;

    const QByteArray &m_bytes;
    qsizetype m_sectorLength = 0;
    qsizetype m_smallSectorLength = 0;
    QList<quint32> m_next;      ///< the sector behind each sector
    QList<quint32> m_nextSmall; ///< the same of the small sectors
    QByteArray m_small;         ///< the sectors that small streams lie in
    QList<Entry> m_entries;
};
