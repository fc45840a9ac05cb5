#include "NorvaneSheetReader/CompoundFile.h"

#include "common/SpreadsheetConnection.h"

#include <QtEndian>

#include <algorithm>
#include <limits>

namespace norvane {

using namespace Qt::StringLiterals;

namespace {

constexpr quint32 lastSector = 0xFFFFFFFA; ///< numbers from here on are marks
constexpr qsizetype headerLength = 512;
constexpr qsizetype entryLength = 128;
constexpr quint32 smallStream = 4096; ///< streams below this length lie in small sectors

[[noreturn]] void failAsDamaged()
{
    SheetFailure::raise(SheetFailure::BadFile, u"The workbook's file is damaged."_s);
}

QList<quint32> numbersOf(const QByteArray &bytes)
{
    QList<quint32> numbers(bytes.size() / 4);
    for (qsizetype i = 0; i < numbers.size(); ++i)
        numbers[i] = qFromLittleEndian<quint32>(bytes.constData() + i * 4);
    return numbers;
}

} // namespace

bool CompoundFile::isOne(const QByteArray &bytes)
{
    return bytes.startsWith("\xD0\xCF\x11\xE0\xA1\xB1\x1A\xE1");
}

CompoundFile::CompoundFile(const QByteArray &bytes) : m_bytes(bytes)
{
    if (bytes.size() < headerLength)
        failAsDamaged();
    const auto shift = [&](qsizetype offset) {
        return qFromLittleEndian<quint16>(bytes.constData() + offset);
    };
    if ((shift(30) != 9 && shift(30) != 12) || shift(32) != 6)
        failAsDamaged();
    m_sectorLength = qsizetype{1} << shift(30);
    m_smallSectorLength = qsizetype{1} << shift(32);
    readAllocation();
    readEntries();
    m_nextSmall = numbersOf(chain(number(60), std::numeric_limits<qsizetype>::max()));
    readRoot();
}

quint32 CompoundFile::number(qsizetype offset) const
{
    return qFromLittleEndian<quint32>(m_bytes.constData() + offset);
}

/// The last sector of a file may be cut short.
QByteArray CompoundFile::sector(quint32 index) const
{
    const qsizetype offset = (static_cast<qsizetype>(index) + 1) * m_sectorLength;
    if (index >= lastSector || offset >= m_bytes.size())
        failAsDamaged();
    return m_bytes.mid(offset, m_sectorLength).leftJustified(m_sectorLength, '\0');
}

void CompoundFile::readAllocation()
{
    QList<quint32> tables = numbersOf(m_bytes.mid(76, 109 * 4));
    const qsizetype maxSectors = m_bytes.size() / m_sectorLength + 1;
    quint32 next = number(68);
    for (qsizetype i = 0; next < lastSector; ++i) {
        if (i > maxSectors)
            failAsDamaged();
        QList<quint32> more = numbersOf(sector(next));
        next = more.takeLast();
        tables += more;
    }
    tables.removeIf([](quint32 index) { return index >= lastSector; });
    if (tables.size() > maxSectors)
        failAsDamaged();
    for (const quint32 index : std::as_const(tables))
        m_next += numbersOf(sector(index));
}

void CompoundFile::readEntries()
{
    const QByteArray entries = chain(number(48), std::numeric_limits<qsizetype>::max());
    for (qsizetype at = 0; at + entryLength <= entries.size(); at += entryLength) {
        const char *const entry = entries.constData() + at;
        const auto longAt = [&](qsizetype offset) {
            return qFromLittleEndian<quint32>(entry + offset);
        };
        const qsizetype units = qBound(0, qFromLittleEndian<quint16>(entry + 64) / 2 - 1, 31);
        QString name(units, Qt::Uninitialized);
        for (qsizetype i = 0; i < units; ++i)
            name[i] = QChar(qFromLittleEndian<quint16>(entry + i * 2));
        m_entries.append({name, static_cast<Kind>(entry[66]), longAt(68), longAt(72), longAt(76),
                          longAt(116), longAt(120)});
    }
}

/// Notes the streams of the root, and the sectors of the small ones.
void CompoundFile::readRoot()
{
    const auto root = std::ranges::find(m_entries, Kind::Root, &Entry::kind);
    if (root == m_entries.end())
        return;
    m_small = chain(root->start, root->length);
    QList<bool> seen(m_entries.size(), false);
    QList<quint32> open{root->child};
    while (!open.isEmpty()) {
        const quint32 index = open.takeLast();
        if (index >= lastSector)
            continue;
        // Siblings that lead back to themselves have no end.
        if (index >= static_cast<quint32>(m_entries.size()) || seen.at(index))
            failAsDamaged();
        seen[index] = true;
        const Entry &entry = m_entries.at(index);
        if (entry.kind == Kind::Stream)
            m_rootStreams.append(entry);
        open << entry.before << entry.behind;
    }
}

QByteArray CompoundFile::chain(quint32 start, qsizetype max) const
{
    QByteArray bytes;
    for (quint32 index = start; index < lastSector && bytes.size() < max;) {
        // A chain longer than the file goes in circles.
        if (bytes.size() > m_bytes.size() || index >= static_cast<quint32>(m_next.size()))
            failAsDamaged();
        bytes += sector(index);
        index = m_next.at(index);
    }
    return bytes.left(max);
}

QByteArray CompoundFile::smallChain(quint32 start, qsizetype length) const
{
    QByteArray bytes;
    for (quint32 index = start; index < lastSector && bytes.size() < length;) {
        const qsizetype offset = static_cast<qsizetype>(index) * m_smallSectorLength;
        // Behind the last sector nothing is added, and a chain could go in circles for ever.
        if (bytes.size() > m_small.size() || index >= static_cast<quint32>(m_nextSmall.size()) ||
            offset >= m_small.size())
            failAsDamaged();
        bytes += m_small.mid(offset, m_smallSectorLength);
        index = m_nextSmall.at(index);
    }
    return bytes.left(length);
}

const CompoundFile::Entry *CompoundFile::find(const QString &name) const
{
    const auto found = std::ranges::find_if(m_rootStreams, [&](const Entry &entry) {
        return entry.name.compare(name, Qt::CaseInsensitive) == 0;
    });
    return found != m_rootStreams.end() ? &*found : nullptr;
}

bool CompoundFile::contains(const QString &name) const
{
    return find(name) != nullptr;
}

QByteArray CompoundFile::stream(const QString &name) const
{
    const Entry *const entry = find(name);
    if (entry == nullptr)
        return {};
    const QByteArray bytes = entry->length < smallStream ? smallChain(entry->start, entry->length)
                                                         : chain(entry->start, entry->length);
    if (bytes.size() < static_cast<qsizetype>(entry->length))
        failAsDamaged();
    return bytes;
}

} // namespace norvane
