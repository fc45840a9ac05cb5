#include "NorvaneSheetReader/BiffFile.h"

#include "NorvaneSheetReader/LittleEndian.h"

#include <bit>

namespace norvane {

using namespace Qt::StringLiterals;

namespace {

constexpr quint16 begin = 0x0809;
constexpr quint16 end = 0x000A;
constexpr quint16 boundSheet = 0x0085;
constexpr quint16 label = 0x0204;

constexpr qsizetype sectorLength = 512;
constexpr quint32 endOfChain = 0xFFFFFFFE;
constexpr quint32 none = 0xFFFFFFFF;

QByteArray filled(const QByteArray &bytes, qsizetype unit, char with = '\0')
{
    return bytes.leftJustified((bytes.size() + unit - 1) / unit * unit, with);
}

/// Lays out directory, allocation and streams. The sectors: the table of the chains, the directory,
/// the streams one behind the other.
class CompoundWriter
{
public:
    explicit CompoundWriter(const QList<CompoundEntry> &entries)
    {
        m_entries.append(QByteArray());
        const quint32 first = addSiblings(entries);
        m_entries[0] = entry(u"Root Entry"_s, '\5', none, first, endOfChain, 0);
        m_directory = filled(m_entries.join(), sectorLength);
    }

    QByteArray file()
    {
        const qsizetype directorySectors = m_directory.size() / sectorLength;
        const auto firstOfStreams = static_cast<quint32>(1 + directorySectors);
        QByteArray table = little<quint32>(0xFFFFFFFD) + chain(1, directorySectors);
        QByteArray contents;
        for (const Stream &stream : std::as_const(m_streams)) {
            const auto start =
                static_cast<quint32>(firstOfStreams + contents.size() / sectorLength);
            m_directory.replace(stream.entry * 128 + 116, 4, little(start));
            table += chain(start, stream.content.size() / sectorLength);
            contents += stream.content;
        }
        Q_ASSERT(table.size() <= sectorLength);
        return header() + filled(table, sectorLength, '\xFF') + m_directory + contents;
    }

private:
    struct Stream
    {
        qsizetype entry;
        QByteArray content;
    };

    /// Each sibling is sorted behind the one before, as far as the chain is concerned.
    quint32 addSiblings(const QList<CompoundEntry> &siblings)
    {
        quint32 next = none;
        for (auto sibling = siblings.crbegin(); sibling != siblings.crend(); ++sibling) {
            const bool isStream = sibling->children.isEmpty();
            const quint32 child = addSiblings(sibling->children);
            const QByteArray content =
                filled(sibling->content.leftJustified(4096, '\0'), sectorLength);
            if (isStream)
                m_streams.append({m_entries.size(), content});
            m_entries.append(entry(sibling->name, isStream ? '\2' : '\1', next, child, 0,
                                   isStream ? static_cast<quint32>(content.size()) : 0));
            next = static_cast<quint32>(m_entries.size() - 1);
        }
        return next;
    }

    static QByteArray entry(const QString &name, char kind, quint32 next, quint32 child,
                            quint32 start, quint32 length)
    {
        QByteArray units;
        for (const QChar unit : name)
            units += little<quint16>(unit.unicode());
        return units.leftJustified(64, '\0') + little(static_cast<quint16>((name.size() + 1) * 2)) +
               kind + '\1' + little(none) + little(next) + little(child) + QByteArray(36, '\0') +
               little(start) + little(length) + QByteArray(4, '\0');
    }

    static QByteArray chain(quint32 first, qsizetype count)
    {
        QByteArray numbers;
        for (qsizetype i = 1; i < count; ++i)
            numbers += little(static_cast<quint32>(first + i));
        return numbers + little(endOfChain);
    }

    static QByteArray header()
    {
        const QByteArray front =
            QByteArray("\xD0\xCF\x11\xE0\xA1\xB1\x1A\xE1") + QByteArray(16, '\0') +
            little<quint16>(0x3E) + little<quint16>(3) + little<quint16>(0xFFFE) +
            little<quint16>(9) + little<quint16>(6) + QByteArray(10, '\0') + little<quint32>(1) +
            little<quint32>(1) + little<quint32>(0) + little<quint32>(4096) + little(endOfChain) +
            little<quint32>(0) + little(endOfChain) + little<quint32>(0) + little<quint32>(0);
        return front.leftJustified(sectorLength, '\xFF');
    }

    QList<QByteArray> m_entries;
    QList<Stream> m_streams;
    QByteArray m_directory;
};

} // namespace

QByteArray compoundOf(const QList<CompoundEntry> &entries)
{
    return CompoundWriter(entries).file();
}

QByteArray biffRecord(quint16 id, const QByteArray &data)
{
    return little(id) + little(static_cast<quint16>(data.size())) + data;
}

QByteArray littleShort(quint16 number)
{
    return little(number);
}

QByteArray littleLong(quint32 number)
{
    return little(number);
}

QByteArray littleDouble(double number)
{
    return little(std::bit_cast<quint64>(number));
}

QByteArray biffOf(const QList<BiffSheet> &sheets, const QByteArray &globals, quint16 version)
{
    const auto opening = [&](quint16 type) {
        return biffRecord(begin, little(version) + little(type) + QByteArray(12, '\0'));
    };
    const QByteArray front = opening(5) + globals;
    const QByteArray flags(version == 0x0600 ? 1 : 0, '\0');
    const auto bound = [&](const BiffSheet &sheet, qsizetype offset) {
        return biffRecord(
            boundSheet, little(static_cast<quint32>(offset)) + static_cast<char>(sheet.visibility) +
                            '\0' + static_cast<char>(sheet.name.size()) + flags + sheet.name);
    };
    const QByteArray closing = biffRecord(end, {});
    qsizetype offset = front.size() + closing.size();
    for (const BiffSheet &sheet : sheets)
        offset += bound(sheet, 0).size();
    QByteArray list;
    QByteArray contents;
    for (const BiffSheet &sheet : sheets) {
        list += bound(sheet, offset + contents.size());
        contents += opening(0x10) + sheet.records + closing;
    }
    return front + list + closing + contents;
}

QByteArray xlsOf(const QList<BiffSheet> &sheets, const QByteArray &globals, quint16 version)
{
    return compoundOf(
        {{version == 0x0600 ? u"Workbook"_s : u"Book"_s, biffOf(sheets, globals, version)}});
}

QByteArray biffLabel(quint16 row, quint16 column, const QByteArray &text)
{
    return biffRecord(label, little(row) + little(column) + little<quint16>(0) +
                                 little(static_cast<quint16>(text.size())) + '\0' + text);
}

} // namespace norvane
