#pragma once

#include <QByteArray>

namespace norvane {

namespace simulator {

/// Takes octets one after the other. Reading past the end gives zeros and nothing, and is
/// remembered, so that a reader asks once after several fields.
class OctetReader
{
public:
    explicit OctetReader(const QByteArray &data) : m_data(data) {}

    int octet()
    {
        if (m_position >= m_data.size()) {
            m_failed = true;
            return 0;
        }
        return static_cast<unsigned char>(m_data.at(m_position++));
    }

    QByteArray octets(qsizetype count)
    {
        if (count > m_data.size() - m_position) {
            m_failed = true;
            return {};
        }
        m_position += count;
        return m_data.mid(m_position - count, count);
    }

    bool atEnd() const { return m_position == m_data.size(); }
    bool failed() const { return m_failed; }

private:
    QByteArray m_data;
    qsizetype m_position = 0;
    bool m_failed = false;
};

} // namespace simulator

} // namespace norvane
