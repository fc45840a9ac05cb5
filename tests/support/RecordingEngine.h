#pragma once

#include "contract/SMSManager.h"

#include <QQueue>
#include <QStringList>

#include <functional>
#include <utility>

namespace norvane {

using namespace Qt::StringLiterals;

/// An engine for tests: notes every call in order, answers as scripted, and raises events.
class RecordingEngine : public SMSManager
{
    Q_OBJECT

public:
    /// What outlives the engine objects of one console: the list of calls and the answers.
    struct Script
    {
        QStringList calls;
        qint32 status = 0;
        QQueue<qint32> statuses; ///< answered one after the other, before `status`
        qint32 queueSize = 0;
        qint32 testResult = 1;
        bool setAnswer = true;
        QList<QueueRow> queue;
        DeviceSettings settings;
        QQueue<int> failingCalls; ///< the call of this number, counted from 1, fails with 462
        QString failingCall;      ///< the first call that begins so fails with 462
        QList<SMSList> lists;     ///< of AddSMSList
        int objectsMade = 0;
        std::function<void(const QString &call)> inCall; ///< runs while any call is being answered
        std::function<void()> inNew;                     ///< runs while an object is being made
        std::function<void()> inGetQueue;                ///< runs while GetQueue is being answered
        std::function<void()> inTestDevice; ///< runs while TestDevice is being answered
        std::function<void()> inAddSMS;     ///< runs while AddSMS is being answered
        bool batchIsOpen = false;           ///< between BeginBatch and CommitBatch
        /// Runs while CommitBatch is being answered; gives how many of the batch are stored.
        std::function<qsizetype(qsizetype messages)> inCommit;
        /// What UpdateQueue was given, the newest last.
        QList<QueueRecordSet> updates;
        /// Events that wait: the next DeliverPendingEvents raises them.
        QList<std::function<void(SMSManager &)>> pendingEvents;
    };

    explicit RecordingEngine(Script &script) : m_script(script), m_number(++script.objectsMade)
    {
        m_script.calls.append(u"new %1"_s.arg(m_number));
        if (m_script.inNew)
            m_script.inNew();
    }
    ~RecordingEngine() override { m_script.calls.append(u"release %1"_s.arg(m_number)); }

    void StartEngine() override { note(u"StartEngine"_s); }
    void StopEngine() override { note(u"StopEngine"_s); }
    qint32 TestDevice() override
    {
        note(u"TestDevice"_s);
        if (m_script.inTestDevice)
            m_script.inTestDevice();
        return m_script.testResult;
    }
    qint32 GetEngineStatus() override
    {
        note(u"GetEngineStatus"_s);
        return m_script.statuses.isEmpty() ? m_script.status : m_script.statuses.dequeue();
    }
    void AddSMS(const QString &phone, const QString &message, const QDateTime &date) override
    {
        note(u"AddSMS(%1|%2|%3)"_s.arg(phone, message, date.toString(u"yyyy-MM-ddTHH:mm:ss"_s)));
        ++m_batched;
        if (m_script.inAddSMS)
            m_script.inAddSMS();
    }
    void BeginBatch() override
    {
        m_script.batchIsOpen = true;
        m_batched = 0;
    }
    qsizetype CommitBatch() override
    {
        m_script.batchIsOpen = false;
        return m_script.inCommit ? m_script.inCommit(m_batched) : m_batched;
    }
    void AddSMSList(const SMSList &list, const QDateTime &date) override
    {
        note(u"AddSMSList(%1|%2)"_s.arg(list.Count()).arg(date.toString(u"yyyy-MM-ddTHH:mm:ss"_s)));
        m_script.lists.append(list);
    }
    qint32 GetQueueSize() override
    {
        note(u"GetQueueSize"_s);
        return m_script.queueSize;
    }
    void ClearQueue() override { note(u"ClearQueue"_s); }
    QueueRecordSet GetQueue() override
    {
        note(u"GetQueue"_s);
        if (m_script.inGetQueue)
            m_script.inGetQueue();
        return QueueRecordSet(m_script.queue);
    }
    void UpdateQueue(const QueueRecordSet &records) override
    {
        note(u"UpdateQueue"_s);
        m_script.updates.append(records);
    }
    void ApplySettings() override { note(u"ApplySettings"_s); }
    DeviceSettings GetDeviceSettings() override
    {
        note(u"GetDeviceSettings"_s);
        return m_script.settings;
    }
    bool SetDeviceSettings(const DeviceSettings &settings) override
    {
        note(u"SetDeviceSettings(%1)"_s.arg(settings.Parameter));
        m_script.settings = settings;
        return m_script.setAnswer;
    }
    void DeliverPendingEvents() override
    {
        note(u"DeliverPendingEvents"_s);
        for (const auto &raise : std::exchange(m_script.pendingEvents, {}))
            raise(*this);
    }

private:
    void note(const QString &call);

    Script &m_script;
    int m_number;
    int m_callsMade = 0;
    qsizetype m_batched = 0; ///< messages of the batch
};

} // namespace norvane
