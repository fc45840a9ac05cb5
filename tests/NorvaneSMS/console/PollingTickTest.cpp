#include "NorvaneSMS/console/PollingTick.h"

#include "NorvaneSMS/queue/Fixture.h"
#include "common/NumberedFailure.h"
#include "foundation/FileSystem.h"
#include "support/RecordingEngine.h"
#include "support/RecordingMessageBoxes.h"
#include "support/ScriptedStreams.h"

#include <QCoreApplication>
#include <QDir>
#include <QTemporaryDir>

namespace norvane {

namespace {

using Outcome = PollingTick::Outcome;

class PollingTickTest : public testing::Test
{
protected:
    PollingTickTest() { m_engine = std::make_unique<RecordingEngine>(m_script); }

    void drop(int files)
    {
        for (int number = 0; number < files; ++number)
            writeFile(m_folder.filePath(u"sms.%1"_s.arg(number)),
                      QByteArray("912345678").leftJustified(25) + "05032009140709" +
                          QByteArray("text").leftJustified(160));
    }
    Outcome run() { return m_tick.run(m_files, m_folder.path(), u" footer"_s); }
    qsizetype messages() const { return m_script.calls.filter(u"AddSMS("_s).size(); }
    qsizetype files() const { return QDir(m_folder.path()).entryList(QDir::Files).size(); }
    /// Runs `action` when events are processed next.
    static void post(const std::function<void()> &action)
    {
        QMetaObject::invokeMethod(qApp, action, Qt::QueuedConnection);
    }

    RecordingEngine::Script m_script;
    std::unique_ptr<SMSManager> m_engine;
    RecordingMessageBoxes m_boxes;
    ScriptedStreams m_streams;
    FileSystem m_files;
    QTemporaryDir m_folder;
    QStringList m_asked; ///< which folders
    bool m_polled = true;
    PollingTick m_tick{m_engine, {&m_streams, &realWait()}, [this](const QString &folder) {
                           m_asked.append(folder);
                           return m_polled;
                       }};
};

TEST_F(PollingTickTest, handsTheFilesToTheEngineAndTakesThemAway)
{
    drop(3);
    EXPECT_EQ(run(), Outcome::Done);
    EXPECT_EQ(messages(), 3);
    EXPECT_TRUE(m_script.calls.contains(u"AddSMS(912345678|text footer|2009-03-05T14:07:09)"_s))
        << qPrintable(m_script.calls.join(u'\n'));
    EXPECT_EQ(files(), 0);
    EXPECT_EQ(m_asked.count(m_folder.path()), m_asked.size());
}

TEST_F(PollingTickTest, anEmptyFolderIsDone)
{
    EXPECT_EQ(run(), Outcome::Done);
    EXPECT_TRUE(m_asked.isEmpty());
}

TEST_F(PollingTickTest, aMissingFolderIsReportedByEachTick)
{
    ASSERT_TRUE(m_folder.remove());
    EXPECT_EQ(run(), Outcome::FolderMissing);
    EXPECT_EQ(run(), Outcome::FolderMissing);
}

TEST_F(PollingTickTest, eventsAreProcessedBehindTheFirstFileAndEveryTwentiethAfterIt)
{
    drop(42);
    QList<qsizetype> seen;
    std::function<void()> note = [&] {
        seen.append(messages());
        post(note);
    };
    post(note);
    EXPECT_EQ(run(), Outcome::Done);
    EXPECT_EQ(seen, (QList<qsizetype>{1, 21, 41}));
    QCoreApplication::removePostedEvents(qApp);
}

TEST_F(PollingTickTest, nothingIsTakenOfAFolderThatIsNotPolledAnyMore)
{
    drop(30);
    post([this] { m_polled = false; });
    EXPECT_EQ(run(), Outcome::Done);
    EXPECT_EQ(messages(), 1);
    EXPECT_EQ(files(), 29);
    m_polled = true;
    EXPECT_EQ(run(), Outcome::Done);
    EXPECT_EQ(files(), 0);
}

TEST_F(PollingTickTest, theEngineMayBeReplacedBetweenTwoFiles)
{
    drop(2);
    post([this] { m_engine = std::make_unique<RecordingEngine>(m_script); });
    EXPECT_EQ(run(), Outcome::Done);
    const qsizetype replaced = m_script.calls.indexOf(u"new 2"_s);
    EXPECT_EQ(m_script.calls.mid(replaced).filter(u"AddSMS("_s).size(), 1);
}

TEST_F(PollingTickTest, aTickInTheMiddleOfAnotherOneIsSkipped)
{
    drop(2);
    std::optional<Outcome> inner;
    post([&] { inner = run(); });
    EXPECT_EQ(run(), Outcome::Done);
    EXPECT_EQ(inner, Outcome::Skipped);
    EXPECT_EQ(messages(), 2) << "each one once";
}

TEST_F(PollingTickTest, behindAFileThatCannotBeTakenAwayAllTicksAreSkipped)
{
    drop(1);
    m_streams.onRemove = [](const QString &) { return 13; };
    EXPECT_THROW(run(), NumberedFailure);
    m_streams.onRemove = nullptr;
    EXPECT_EQ(run(), Outcome::Skipped);
    EXPECT_EQ(files(), 1);
}

} // namespace

} // namespace norvane
