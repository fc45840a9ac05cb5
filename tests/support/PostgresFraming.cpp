#include "support/PostgresFraming.h"

#include <QtEndian>

#include <algorithm>

namespace norvane {

namespace {

constexpr qsizetype lengthSize = 4; // bytes, which the length counts as well

} // namespace

PostgresMessage::Request PostgresMessage::request() const
{
    constexpr quint32 cancel = 80877102;
    constexpr quint32 encryptByTls = 80877103;
    constexpr quint32 encryptByGss = 80877104;
    if (type != 0 || bytes.size() < 2 * lengthSize)
        return Request::None;
    switch (qFromBigEndian<quint32>(bytes.constData() + lengthSize)) {
    case cancel:
        return Request::Cancel;
    case encryptByTls:
    case encryptByGss:
        return Request::Encrypt;
    default:
        return Request::StartUp;
    }
}

QList<PostgresMessage> PostgresFraming::read(const QByteArray &bytes)
{
    m_rest += bytes;
    QList<PostgresMessage> messages;
    qsizetype start = 0;
    while (true) {
        const qsizetype typeSize = m_isStarting ? 0 : 1;
        const char *const begin = m_rest.constData() + start;
        const qsizetype available = m_rest.size() - start;
        if (available < typeSize + lengthSize)
            break;
        const qsizetype length = qFromBigEndian<quint32>(begin + typeSize);
        const qsizetype size = typeSize + std::max(length, lengthSize);
        if (available < size)
            break;
        messages.append({m_isStarting ? '\0' : *begin, QByteArray(begin, size)});
        if (messages.constLast().request() == PostgresMessage::Request::StartUp)
            m_isStarting = false;
        start += size;
    }
    m_rest.remove(0, start);
    return messages;
}

} // namespace norvane
