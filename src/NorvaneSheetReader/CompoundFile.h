#pragma once

#include <QByteArray>
#include <QList>
#include <QString>

namespace norvane {

/// A file of streams in chained sectors, as office programs wrote them before they took to
/// archives.
class CompoundFile
{
public:
    static bool isOne(const QByteArray &bytes);

    /// @param bytes  must outlive this object
    /// @throws NumberedFailure BadFile for chains that lead nowhere
    explicit CompoundFile(const QByteArray &bytes);

    // What is embedded in the file lies in storages of its own and isn't looked at.

    /// Whether there is a stream of this name in the root.
    bool contains(const QString &name) const;
    /// The bytes of a stream of the root; none if it isn't there.
    /// @throws NumberedFailure BadFile for a damaged stream
    QByteArray stream(const QString &name) const;

private:
    enum class Kind : quint8 { None = 0, Storage = 1, Stream = 2, Root = 5 };
    struct Entry
    {
        QString name;
        Kind kind;
        quint32 before; ///< the entry that leads to the siblings sorted in front of this one
        quint32 behind; ///< the same of those behind it
        quint32 child;  ///< the entry that leads to what a storage holds
        quint32 start;
        quint32 length;
    };

    quint32 number(qsizetype offset) const;
    QByteArray sector(quint32 index) const;
    void readAllocation();
    void readEntries();
    void readRoot();
    QByteArray chain(quint32 start, qsizetype max) const;
    QByteArray smallChain(quint32 start, qsizetype length) const;
    const Entry *find(const QString &name) const;

    const QByteArray &m_bytes;
    qsizetype m_sectorLength = 0;
    qsizetype m_smallSectorLength = 0;
    QList<quint32> m_next;      ///< the sector behind each sector
    QList<quint32> m_nextSmall; ///< the same of the small sectors
    QByteArray m_small;         ///< the sectors that small streams lie in
    QList<Entry> m_entries;     ///< by their numbers
    QList<Entry> m_rootStreams;
};

} // namespace norvane
