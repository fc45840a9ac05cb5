#include "NorvaneSMS/console/SendRoute.h"

#include "NorvaneSMS/queue/Fixture.h"
#include "common/NumberedFailure.h"
#include "foundation/FileSystem.h"
#include "support/LoadedLanguage.h"
#include "support/NotedWaiting.h"
#include "support/RecordingEngine.h"
#include "support/RecordingMessageBoxes.h"
#include "support/ScriptedStreams.h"

#include <QDir>
#include <QTemporaryDir>

namespace norvane {

namespace {

class SendRouteTest : public testing::Test
{
protected:
    SendRoute server() { return {&m_engine, {nullptr, {}, {}}}; }
    SendRoute client() { return client(m_folder.path()); }
    SendRoute client(const QString &folder)
    {
        return {nullptr, {&m_files, folder, {&m_streams, &m_waiting}}};
    }
    SendRoute::Outcome send(const SendRoute &route)
    {
        return route.send(u"600"_s, u"text"_s, u" footer"_s, m_date);
    }
    static SMSList twoMessages()
    {
        SMSList list;
        list.Add(u"600"_s, u"one"_s);
        list.Add(u"601"_s, u"two"_s);
        return list;
    }
    QStringList takeCalls() { return std::exchange(m_script.calls, {}); }
    QStringList files() const { return QDir(m_folder.path()).entryList(QDir::Files, QDir::Name); }
    QByteArray dropped() const { return bytesOf(m_folder.filePath(files().value(0))); }

    const QDateTime m_date{QDate(2026, 11, 20), QTime(9, 30), Qt::UTC};
    const LoadedLanguage m_language{u"ESN"_s};
    RecordingEngine::Script m_script;
    RecordingEngine m_engine{m_script};
    RecordingMessageBoxes m_boxes;
    FileSystem m_files;
    QTemporaryDir m_folder;
    ScriptedStreams m_streams;
    NotedWaiting m_waiting;
};

TEST_F(SendRouteTest, aServerHandsTheMessageWithItsFooterToTheEngine)
{
    m_script.status = SMSManager::running;
    takeCalls();
    EXPECT_EQ(send(server()), SendRoute::Outcome::HandedOn);
    EXPECT_EQ(takeCalls(), (QStringList{u"AddSMS(600|text footer|2026-11-20T09:30:00)"_s,
                                        u"GetEngineStatus"_s}));
}

TEST_F(SendRouteTest, aServerStartsAnEngineThatIsStopped)
{
    for (const qint32 status : {SMSManager::stopped, SMSManager::running, 2, -1}) {
        m_script.status = status;
        send(server());
        EXPECT_EQ(takeCalls().contains(u"StartEngine"_s), status == SMSManager::stopped) << status;
        server().sendList(twoMessages(), m_date);
        EXPECT_EQ(takeCalls().contains(u"StartEngine"_s), status == SMSManager::stopped) << status;
    }
}

TEST_F(SendRouteTest, aServerHandsAListToTheEngineAsItStands)
{
    m_script.status = SMSManager::running;
    EXPECT_EQ(server().sendList(twoMessages(), m_date), SendRoute::Outcome::HandedOn);
    ASSERT_EQ(m_script.lists.size(), 1);
    EXPECT_EQ(m_script.lists.first().Count(), 2);
    EXPECT_TRUE(takeCalls().contains(u"AddSMSList(2|2026-11-20T09:30:00)"_s));
}

TEST_F(SendRouteTest, anEngineThatRefusesTheMessageIsNotStarted)
{
    m_script.failingCall = u"AddSMS"_s;
    EXPECT_THROW(send(server()), NumberedFailure);
    EXPECT_FALSE(m_script.calls.contains(u"StartEngine"_s));
}

TEST_F(SendRouteTest, aClientWritesADropFileWithoutTheFooter)
{
    takeCalls();
    EXPECT_EQ(send(client()), SendRoute::Outcome::HandedOn);
    EXPECT_EQ(files(), QStringList{u"sms.0"_s});
    EXPECT_TRUE(dropped().startsWith("600 "));
    EXPECT_TRUE(dropped().contains("text"));
    EXPECT_FALSE(dropped().contains("footer"));
    EXPECT_TRUE(takeCalls().isEmpty());
}

TEST_F(SendRouteTest, aClientWritesAListIntoOneDropFile)
{
    EXPECT_EQ(client().sendList(twoMessages(), m_date), SendRoute::Outcome::HandedOn);
    EXPECT_EQ(files().size(), 1);
    EXPECT_LT(dropped().indexOf("one"), dropped().indexOf("two"));
}

TEST_F(SendRouteTest, aClientWithoutItsFolderWritesNothing)
{
    const SendRoute route = client(m_folder.filePath(u"none"_s));
    EXPECT_EQ(send(route), SendRoute::Outcome::FolderMissing);
    EXPECT_EQ(route.sendList(twoMessages(), m_date), SendRoute::Outcome::FolderMissing);
    EXPECT_TRUE(files().isEmpty());
    EXPECT_TRUE(m_boxes.shown.isEmpty()) << "what is shown of that is the caller's";
}

TEST_F(SendRouteTest, aDropFileThatCannotBeWrittenIsShownByItsWriter)
{
    m_streams.onCreate = [](const QString &) { return 70; };
    EXPECT_EQ(send(client()), SendRoute::Outcome::HandedOn);
    EXPECT_EQ(m_boxes.shown.size(), 1);
    EXPECT_TRUE(files().isEmpty());
}

} // namespace

} // namespace norvane
