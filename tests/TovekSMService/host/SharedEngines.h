#pragma once

#include "TovekSMService/host/SharingEngine.h"
#include "support/PostgresServer.h"

#include <QDBusMetaType>
#include <QDir>

#include <memory>

namespace norvane {

using namespace Qt::StringLiterals;

/// Two engines that share a queue in a database.
class SharedEngines : public testing::Test
{
protected:
    static PostgresServer &server()
    {
        static PostgresServer one(PostgresServer::Durability::Unflushed,
                                  PostgresServer::Listen::SocketAndLoopback);
        return one;
    }

    SharedEngines() : m_conninfo(server().freshDatabase(u"shared"_s))
    {
        qDBusRegisterMetaType<WireEntry>();
        qDBusRegisterMetaType<QList<WireEntry>>();
        qDBusRegisterMetaType<WireRow>();
        qDBusRegisterMetaType<QList<WireRow>>();
    }
    ~SharedEngines() override
    {
        m_first.reset();
        m_second.reset();
        if (!server().isRunning())
            server().start();
        QDir(qEnvironmentVariable("XDG_DATA_HOME") + u"/TovekSMService"_s).removeRecursively();
    }

    void makeBoth(const QStringList &simulator = {}, const QByteArray &more = {})
    {
        m_first = std::make_unique<SharingEngine>(QString(), m_conninfo, simulator, more);
        m_second = std::make_unique<SharingEngine>(u"second"_s, m_conninfo, simulator, more);
    }
    static QString value(const QString &query)
    {
        const PostgresServer::Rows rows = server().sql(query, u"shared"_s);
        return rows.isEmpty() ? QString() : rows.constFirst().constFirst();
    }
    static bool eventually(const QString &query, const QString &expected)
    {
        return waitUntil([&] { return value(query) == expected; });
    }
    /// What became of the messages, as "codexcount".
    static QString outcomes()
    {
        return u"SELECT string_agg(code || 'x' || n, ' ' ORDER BY code) FROM "
               "(SELECT code, count(*) AS n FROM outcome GROUP BY code) each"_s;
    }
    /// Makes a role that may work with the tables, and nothing else.
    /// @return how to connect by it
    QString makeLeastRole() const
    {
        for (const QString &statement :
             {u"DROP ROLE IF EXISTS norvane_engine"_s, u"CREATE ROLE norvane_engine LOGIN"_s,
              u"REVOKE ALL ON DATABASE shared FROM PUBLIC"_s,
              u"GRANT CONNECT ON DATABASE shared TO norvane_engine"_s,
              u"GRANT USAGE ON SCHEMA public TO norvane_engine"_s,
              u"GRANT SELECT, INSERT, UPDATE, DELETE ON ALL TABLES IN SCHEMA public TO "
              "norvane_engine"_s})
            server().sql(statement, u"shared"_s);
        return QString(m_conninfo).replace(u"user=norvane"_s, u"user=norvane_engine"_s);
    }
    static void dropLeastRole()
    {
        server().sql(u"DROP OWNED BY norvane_engine"_s, u"shared"_s);
        server().sql(u"DROP ROLE norvane_engine"_s, u"shared"_s);
    }
    /// Lets an engine look as if it had been silent for long enough.
    static void silence(const QString &engine)
    {
        server().sql(
            u"UPDATE engine SET seen = seen - interval '31 s' WHERE name = '%1'"_s.arg(engine),
            u"shared"_s);
    }
    /// Starts both, and lets the second one begin to send a message.
    void startBothAndSubmitBySecond()
    {
        m_first->start();
        m_second->start();
        submitBySecond();
    }
    void submitBySecond()
    {
        EXPECT_EQ(m_second->add(u"held"_s).type(), QDBusMessage::ReplyMessage);
        m_second->call("StartEngine");
        ASSERT_TRUE(waitUntil([this] { return m_second->isSubmitting(); }));
    }
    /// Lets the second engine begin to send a message, and stand still in the middle.
    void sendAndSuspendSecond()
    {
        m_second->start();
        ASSERT_NO_FATAL_FAILURE(submitBySecond());
        m_second->suspend();
    }

    QString m_conninfo;
    std::unique_ptr<SharingEngine> m_first;
    std::unique_ptr<SharingEngine> m_second;
};

} // namespace norvane
