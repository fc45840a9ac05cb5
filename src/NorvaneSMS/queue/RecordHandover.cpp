#include "NorvaneSMS/queue/RecordHandover.h"

#include "common/FailureNumbers.h"

#include <utility>

namespace norvane {

using namespace Qt::StringLiterals;

RecordHandover::RecordHandover(SMSManager &engine, const QString &messageFooter)
    : m_engine(engine), m_messageFooter(messageFooter)
{}

RecordHandover::~RecordHandover()
{
    try {
        commit();
    } catch (...) { // what the engine didn't take is lost, as behind any failure
    }
}

void RecordHandover::add(const QueueDropFile::Record &record)
{
    if (!std::exchange(m_open, true))
        m_engine.BeginBatch();
    m_engine.AddSMS(record.phone, record.message + m_messageFooter, record.deliveryDate);
    ++m_given;
    if (m_given - m_stored == batchRecords)
        commit();
}

void RecordHandover::commit()
{
    if (!std::exchange(m_open, false))
        return;
    const qsizetype before = std::exchange(m_stored, m_given);
    const qsizetype stored = m_engine.CommitBatch();
    if (stored == m_given - before)
        return;
    m_stored = before + stored;
    m_fellShort = true;
    Failure::raise(Failure::RemoteServerUnavailable, u"RecordHandover"_s);
}

} // namespace norvane
