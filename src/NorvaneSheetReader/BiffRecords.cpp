#include "NorvaneSheetReader/BiffRecords.h"

#include "common/CodePages.h"

#include <QtEndian>

#include <bit>

namespace norvane {

using namespace Qt::StringLiterals;

namespace Biff {
namespace {

enum TextFlag : quint8 { Wide = 0x01, WithPhonetics = 0x04, WithRuns = 0x08 };

template <typename Number>
Number numberAt(QByteArrayView data, qsizetype offset)
{
    if (offset + static_cast<qsizetype>(sizeof(Number)) > data.size())
        return 0;
    return qFromLittleEndian<Number>(data.data() + offset);
}

} // namespace

quint8 Record::byteAt(qsizetype offset) const
{
    return numberAt<quint8>(m_pieces.first(), offset);
}

quint16 Record::shortAt(qsizetype offset) const
{
    return numberAt<quint16>(m_pieces.first(), offset);
}

quint32 Record::longAt(qsizetype offset) const
{
    return numberAt<quint32>(m_pieces.first(), offset);
}

double Record::doubleAt(qsizetype offset) const
{
    return std::bit_cast<double>(numberAt<quint64>(m_pieces.first(), offset));
}

bool Record::atEnd() const
{
    for (qsizetype piece = m_piece; piece < m_pieces.size(); ++piece) {
        if (m_pieces.at(piece).size() > (piece == m_piece ? m_position : 0))
            return false;
    }
    return true;
}

quint8 Record::takeByte()
{
    while (m_piece < m_pieces.size() && m_position >= m_pieces.at(m_piece).size()) {
        ++m_piece;
        m_position = 0;
    }
    return m_piece < m_pieces.size() ? static_cast<quint8>(m_pieces.at(m_piece).at(m_position++))
                                     : quint8{0};
}

void Record::skip(qsizetype count)
{
    for (; count > 0 && !atEnd(); --count)
        takeByte();
}

quint16 Record::takeShort()
{
    const quint16 low = takeByte();
    return static_cast<quint16>(low | (takeByte() << 8));
}

quint32 Record::takeLong()
{
    const quint32 low = takeShort();
    return low | (static_cast<quint32>(takeShort()) << 16);
}

QString Record::takeText(qsizetype length)
{
    const quint8 flags = takeByte();
    const qsizetype runs = (flags & WithRuns) != 0 ? takeShort() : 0;
    const qsizetype phonetics = (flags & WithPhonetics) != 0 ? takeLong() : 0;
    const QString text = takeCharacters(length, (flags & Wide) != 0);
    skip(runs * 4 + phonetics);
    return text;
}

QString Record::takeCharacters(qsizetype length, bool wide)
{
    QString text = u""_s;
    while (text.size() < length && !atEnd()) {
        if (m_position >= m_pieces.at(m_piece).size()) {
            ++m_piece;
            m_position = 0;
            wide = (takeByte() & Wide) != 0;
            continue;
        }
        text += QChar(wide ? takeShort() : quint16{takeByte()});
    }
    return text;
}

QString Record::takeAnsi(qsizetype length)
{
    QByteArray bytes;
    while (bytes.size() < length && !atEnd())
        bytes += static_cast<char>(takeByte());
    return bytes.isEmpty() ? u""_s : CodePages::fromAnsi(bytes);
}

std::optional<Record> RecordReader::one()
{
    const QByteArrayView rest = QByteArrayView(m_stream).sliced(qMin(m_offset, m_stream.size()));
    const qsizetype length = numberAt<quint16>(rest, 2);
    if (rest.size() < 4 + length)
        return std::nullopt;
    m_offset += 4 + length;
    return Record(numberAt<quint16>(rest, 0), rest.sliced(4, length));
}

std::optional<Record> RecordReader::next()
{
    std::optional<Record> record = one();
    while (record) {
        const qsizetype behind = m_offset;
        const QByteArrayView rest = QByteArrayView(m_stream).sliced(behind);
        if (numberAt<quint16>(rest, 0) != Continue)
            break;
        const qsizetype length = numberAt<quint16>(rest, 2);
        if (rest.size() < 4 + length)
            break;
        record->continueWith(rest.sliced(4, length));
        m_offset += 4 + length;
    }
    return record;
}

} // namespace Biff

} // namespace norvane
