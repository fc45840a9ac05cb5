#pragma once

#include "NorvaneSMS/queue/QueueDropFile.h"
#include "contract/SMSManager.h"

#include <QString>

namespace norvane {

/// Hands records to the engine: one AddSMS for each, in batches. Its destructor closes a batch that
/// is still open.
class RecordHandover
{
public:
    /// Records of one batch: many enough that a commit for them costs little, few enough that the
    /// engine answers at once.
    static constexpr qsizetype batchRecords = 500;

    /// @param engine  must outlive this object
    RecordHandover(SMSManager &engine, const QString &messageFooter);
    RecordHandover(const RecordHandover &) = delete;
    RecordHandover &operator=(const RecordHandover &) = delete;
    ~RecordHandover();

    /// @throws NumberedFailure when the engine fails for this record, or for one before it
    void add(const QueueDropFile::Record &record);
    /// Lets the engine store what it was given so far.
    /// @throws NumberedFailure when the engine failed in doing so
    void commit();

    /// Records that the engine was given.
    qsizetype given() const { return m_given; }
    /// Records that it has stored, or was asked to store without reporting the result. If
    /// fellShort(), the record after these is the one that it failed for.
    qsizetype stored() const { return m_stored; }
    bool fellShort() const { return m_fellShort; }

private:
    SMSManager &m_engine;
    const QString m_messageFooter;
    bool m_open = false; ///< a batch is
    qsizetype m_given = 0;
    qsizetype m_stored = 0;
    bool m_fellShort = false;
};

} // namespace norvane
