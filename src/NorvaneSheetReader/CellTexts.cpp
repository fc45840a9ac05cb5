#include "NorvaneSheetReader/CellTexts.h"

#include "common/SpreadsheetConnection.h"

#include <algorithm>
#include <cstring>

namespace norvane {

using namespace Qt::StringLiterals;

namespace {

constexpr std::size_t blockLength = 1 << 20;

/// In front of each text: its length in characters, and whether they take two bytes each.
struct Header
{
    quint32 length : 31;
    quint32 isWide : 1;
};

} // namespace

CellTexts::Place CellTexts::add(const QString &text)
{
    if (text.isNull())
        return none;
    const bool isWide =
        std::ranges::any_of(text, [](QChar character) { return character.unicode() > 0xFF; });
    const auto length = static_cast<std::size_t>(text.size());
    const Header header{static_cast<quint32>(length) & 0x7FFFFFFF, isWide};
    char *const at = room(sizeof header + length * (isWide ? sizeof(QChar) : 1));
    const Place place = (static_cast<Place>(m_blocks.size() - 1) << 32) |
                        static_cast<Place>(at - m_blocks.back().get());
    std::memcpy(at, &header, sizeof header);
    if (isWide)
        std::memcpy(at + sizeof header, text.constData(), length * sizeof(QChar));
    else
        std::ranges::transform(text, at + sizeof header,
                               [](QChar character) { return static_cast<char>(character.cell()); });
    return place;
}

QString CellTexts::at(Place place) const
{
    if (place == none)
        return {};
    const char *const at = m_blocks.at(place >> 32).get() + (place & 0xFFFFFFFF);
    Header header{};
    std::memcpy(&header, at, sizeof header);
    if (header.isWide == 0)
        return QString::fromLatin1(at + sizeof header, header.length);
    QString text(static_cast<qsizetype>(header.length), Qt::Uninitialized);
    std::memcpy(text.data(), at + sizeof header, header.length * sizeof(QChar));
    return text;
}

void CellTexts::count(qint64 &counter)
{
    if (++counter > maxCells)
        SheetFailure::raise(SheetFailure::BadFile,
                            u"The workbook holds more than 6,000,000 cells."_s);
}

/// Room behind the last text, in a new block if the last one has none left.
char *CellTexts::room(std::size_t bytes)
{
    m_bytes += static_cast<qint64>(bytes);
    if (m_bytes > maxBytes)
        SheetFailure::raise(SheetFailure::BadFile,
                            u"The workbook holds more than 256 MiB of text."_s);
    if (m_blockLength - m_used < bytes) {
        m_blockLength = std::max(blockLength, bytes);
        m_blocks.push_back(std::make_unique_for_overwrite<char[]>(m_blockLength));
        m_used = 0;
    }
    char *const at = m_blocks.back().get() + m_used;
    m_used += bytes;
    return at;
}

} // namespace norvane
