#pragma once

#include "contract/BusTypes.h"

#include <QDBusConnection>
#include <QDBusMessage>
#include <QDBusVirtualObject>
#include <QStringList>
#include <QThread>

#include <functional>
#include <memory>
#include <utility>

namespace norvane {

using namespace Qt::StringLiterals;

/// Stands on the bus of this test in the engine's place, on a thread of its own, and answers as
/// told. It goes from the bus with this object at the latest.
class ReplacedEngine
{
public:
    /// The answer to a call; a message of no type for one that isn't known.
    using Answer = std::function<QDBusMessage(const QDBusMessage &call)>;

    explicit ReplacedEngine(Answer answer)
        : m_bus(QDBusConnection::connectToBus(QDBusConnection::SessionBus, connectionName())),
          m_object(std::make_unique<Object>(*this, std::move(answer)))
    {
        m_object->moveToThread(&m_thread);
        m_thread.start();
        m_bus.registerVirtualObject(QLatin1String(Bus::objectPath), m_object.get());
        m_isThere = m_bus.registerService(QLatin1String(Bus::serviceName));
    }
    ReplacedEngine(const ReplacedEngine &) = delete;
    ReplacedEngine &operator=(const ReplacedEngine &) = delete;
    ~ReplacedEngine()
    {
        vanish();
        m_bus.unregisterObject(QLatin1String(Bus::objectPath));
        m_thread.quit();
        m_thread.wait();
        QDBusConnection::disconnectFromBus(connectionName());
    }

    bool isThere() const { return m_isThere; }
    /// Leaves the bus as an engine that ends. May be called while a call is being answered.
    void vanish() { m_bus.unregisterService(QLatin1String(Bus::serviceName)); }
    /// The answer that is being given is the last one: who has it finds no engine any more.
    void vanishWithThisAnswer() { m_goes = true; }

    /// The answer to GetQueue that holds `rows` of a snapshot of `total` rows.
    static QDBusMessage page(const QDBusMessage &call, quint64 snapshot, quint32 total,
                             const BusQueueRows &rows)
    {
        return call.createReply(
            {QVariant::fromValue(snapshot), QVariant::fromValue(total), QVariant::fromValue(rows)});
    }

private:
    class Object : public QDBusVirtualObject
    {
    public:
        Object(ReplacedEngine &owner, Answer answer) : m_owner(owner), m_answer(std::move(answer))
        {}
        QString introspect(const QString &) const override { return {}; }
        bool handleMessage(const QDBusMessage &call, const QDBusConnection &bus) override
        {
            QDBusMessage answer = m_answer(call);
            if (answer.type() == QDBusMessage::InvalidMessage)
                answer = call.createErrorReply(QDBusError::UnknownMethod, call.member());
            // In this order: whoever has the answer could ask again before the name is gone.
            if (std::exchange(m_owner.m_goes, false))
                m_owner.vanish();
            bus.send(answer);
            return true;
        }

    private:
        ReplacedEngine &m_owner;
        Answer m_answer;
    };

    static QString connectionName() { return u"replaced engine"_s; }

    QDBusConnection m_bus;
    QThread m_thread;
    std::unique_ptr<Object> m_object;
    bool m_isThere = false;
    bool m_goes = false; ///< used on the object's thread alone
};

} // namespace norvane
