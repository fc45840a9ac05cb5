#include "system/WholePath.h"

#include "NorvaneSMS/console/TerminalView.h"
#include "NorvaneSMS/queue/FindFiles.h"
#include "NorvaneSMS/queue/Fixture.h"
#include "NorvaneSMS/queue/QueueDropFile.h"
#include "NorvaneSMS/queue/QueueFileReader.h"
#include "NorvaneSMS/queue/QueueFileWriter.h"
#include "support/ManualTimers.h"
#include "support/RecordingEngine.h"
#include "support/WindowMessages.h"

#include <QDir>
#include <QProcess>
#include <QSet>

#include <algorithm>
#include <iostream>
#include <memory>
#include <vector>

namespace norvane {

using namespace Qt::StringLiterals;

namespace {

/// The platform's files, which count those that were read without one whole record in them.
class CountingStreams : public FileStreams
{
public:
    int openToRead(const QString &path, std::unique_ptr<ByteStream> &stream) override
    {
        std::unique_ptr<ByteStream> real;
        const int error = fileStreams().openToRead(path, real);
        if (error == 0)
            stream = std::make_unique<Stream>(*this, std::move(real));
        return error;
    }
    int createNew(const QString &path, std::unique_ptr<ByteStream> &stream) override
    {
        return fileStreams().createNew(path, stream);
    }
    int removeForced(const QString &path) override { return fileStreams().removeForced(path); }

    int filesRead = 0;
    int filesReadTooEarly = 0;

private:
    class Stream : public ByteStream
    {
    public:
        Stream(CountingStreams &owner, std::unique_ptr<ByteStream> real)
            : m_owner(owner), m_real(std::move(real))
        {}
        ~Stream() override
        {
            ++m_owner.filesRead;
            m_owner.filesReadTooEarly += m_bytes < 199 ? 1 : 0;
        }
        int read(qsizetype max, QByteArray &bytes) override
        {
            const int error = m_real->read(max, bytes);
            m_bytes += bytes.size();
            return error;
        }
        int write(const QByteArray &bytes) override { return m_real->write(bytes); }
        int close() override { return m_real->close(); }

    private:
        CountingStreams &m_owner;
        std::unique_ptr<ByteStream> m_real;
        qint64 m_bytes = 0;
    };
};

/// Processes that write so many drop files each into one folder, all at the same time.
class Writers
{
public:
    Writers(int count, int files, const QString &folder)
    {
        for (int i = 0; i < count; ++i) {
            m_running.push_back(std::make_unique<QProcess>());
            m_running.back()->start(QStringLiteral(NORVANE_DROP_FILE_WRITER),
                                    {QStringLiteral(NORVANE_LANGUAGE_DIR "/NorvaneSMS_ESN.XML"),
                                     folder, u"w%1"_s.arg(i), QString::number(files)});
        }
    }

    bool allEnded() const
    {
        return std::all_of(m_running.begin(), m_running.end(), [](const auto &writer) {
            return writer->state() == QProcess::NotRunning;
        });
    }

    /// How many writings failed; each for the fourth name that another writer took first.
    int refused() const
    {
        int count = 0;
        for (const auto &writer : m_running) {
            EXPECT_EQ(writer->exitCode(), 0);
            const QByteArray told = writer->readAllStandardOutput();
            EXPECT_EQ(told.count('\n'), told.count("File already exists - 58")) << told.constData();
            count += static_cast<int>(told.count('\n'));
        }
        return count;
    }

private:
    std::vector<std::unique_ptr<QProcess>> m_running;
};

constexpr int writerCount = 8;
constexpr int filesOfEach = 500;

/// Tells what became of the files, and holds the accounts.
void expectThatNothingElseIsLost(int arrived, int refused, const CountingStreams &streams,
                                 int ticks)
{
    constexpr int written = writerCount * filesOfEach;
    std::cout << arrived << " of " << written << " messages arrived in " << ticks << " ticks; "
              << streams.filesReadTooEarly << " files were read before their record was in them, "
              << refused << " writings were refused after four collisions\n";
    EXPECT_EQ(arrived + streams.filesReadTooEarly, streams.filesRead);
    EXPECT_EQ(arrived + streams.filesReadTooEarly + refused, written);
    EXPECT_GT(arrived, written / 2);
}

} // namespace

/// A server's console over the real engine, whose timer ticks when told.
class QueueExchange : public WholePath
{
protected:
    QueueExchange() { queueAccess.files = &streams; }
    ~QueueExchange() override { closeConsole(); }

    void tick()
    {
        timers.tick();
        processWindowMessages();
    }
    QStringList names() const { return QDir(queueFolder.path()).entryList(QDir::Files); }
    static QDateTime later() { return {QDate(2100, 1, 1), QTime(12, 30, 45), Qt::UTC}; }

    ManualTimers timers;
    CountingStreams streams;
};

TEST_F(QueueExchange, whatAWriterLeavesIsSentByARunningEngine)
{
    const auto engine = makeProxy();
    engine->StartEngine();
    WriteSMSFile(u"+34 600-123 456"_s, {QDate(2009, 3, 5), QTime(14, 7, 9), Qt::UTC},
                 u"Adéus, ñandú"_s, queueFolder.path());
    tick();
    EXPECT_TRUE(names().isEmpty());
    waitForReceived(1);
    EXPECT_EQ(received(0), u"Adeus, nandu"_s);
    EXPECT_EQ(device->messages().first().value(u"number"_s).toString(), u"+34600123456"_s);
}

TEST_F(QueueExchange, whatArrivesWhileTheEngineIsStoppedWaitsForTheOperator)
{
    WriteSMSFile(u"1"_s, {QDate(2009, 3, 5), QTime(14, 7, 9), Qt::UTC}, u"due"_s,
                 queueFolder.path());
    tick();
    ASSERT_TRUE(eventually([&] { return label("lblQueueSize") == GS(3760025, 1); }));
    EXPECT_EQ(label("lblEngineStatus"), GS(3760026));
    EXPECT_TRUE(device->messages().isEmpty());
    QTest::mouseClick(control<QPushButton>("btnStart"), Qt::LeftButton);
    waitForReceived(1);
}

TEST_F(QueueExchange, aBulkFileIsQueuedInItsOrder)
{
    SMSList list;
    for (int i = 0; i < 300; ++i)
        list.Add(u"912345678"_s, u"m %1"_s.arg(i));
    WriteSMSFileBulk(list, later(), queueFolder.path());
    tick();
    const QueueRecordSet records = makeProxy()->GetQueue();
    ASSERT_EQ(records.rows().size(), 300);
    for (int i = 0; i < 300; ++i)
        ASSERT_EQ(records.rows().at(i).message, u"m %1"_s.arg(i));
    EXPECT_EQ(records.rows().first().deliveryDate, u"2100-01-01T12:30:45"_s);
}

TEST_F(QueueExchange, everyByteReachesTheEngineButNulWhichIsASpaceThere)
{
    writeFile(queueFolder.filePath(u"sms.0"_s),
              fixture(u"bytes"_s).replace(25, 14, "01012100000000"));
    tick();
    const QueueRecordSet records = makeProxy()->GetQueue();
    ASSERT_EQ(records.rows().size(), 1);
    const QString message = records.rows().first().message;
    ASSERT_EQ(message.size(), 160);
    EXPECT_EQ(message.at(1), u' ');
    EXPECT_EQ(message.at(1 + 0x1A), QChar(0x1A));
    EXPECT_EQ(message.at(1 + 32 + 1), u'€');
}

TEST_F(QueueExchange, eightWritersAndAServerThatPollsMeanwhileLoseOnlyWhatWasReadTooEarly)
{
    int ticks = 0;
    const Writers writers(writerCount, filesOfEach, queueFolder.path());
    ASSERT_TRUE(eventually([&] {
        tick();
        ++ticks;
        return writers.allEnded();
    }));
    tick(); // takes what the last ones left
    EXPECT_TRUE(names().isEmpty());

    const QueueRecordSet records = makeProxy()->GetQueue();
    QSet<QString> messages;
    for (const QueueRow &row : records.rows()) {
        EXPECT_EQ(row.phone, u"9123456"_s);
        EXPECT_EQ(row.deliveryDate, u"2100-01-01T12:30:45"_s);
        const QStringList parts = row.message.split(u' ');
        EXPECT_TRUE(parts.size() == 2 && parts.first().size() == 2 &&
                    parts.last().toInt() < filesOfEach)
            << row.message.toStdString();
        messages.insert(row.message);
    }
    const auto arrived = static_cast<int>(records.rows().size());
    EXPECT_EQ(messages.size(), arrived) << "nothing arrives twice";
    expectThatNothingElseIsLost(arrived, writers.refused(), streams, ticks);
    EXPECT_TRUE(boxes.shown.isEmpty());
    EXPECT_EQ(control<TerminalView>("txtTerm")->text(), QString());
}

TEST(QueueRace, aReaderAsQuickAsCanBeLosesOnlyWhatItReadsTooEarly)
{
    const QTemporaryDir folder;
    RecordingMessageBoxes boxes;
    CountingStreams streams;
    RecordingEngine::Script script;
    RecordingEngine engine(script);
    script.calls.clear();
    int ticks = 0;
    const Writers writers(writerCount, filesOfEach, folder.path());
    for (bool ended = false; !ended;) {
        ended = writers.allEnded(); // before the last look into the folder
        QString path = folder.path();
        qint16 files = 0;
        qint16 folders = 0;
        FileSearchResult found;
        FindFiles(path, QString::fromUtf16(QueueDropFile::pattern), files, folders, found,
                  Descent::StayInFolder);
        for (const QString &file : found.Files)
            ImportSMSFile(file, engine, QString(), {&streams, nullptr});
        QCoreApplication::processEvents();
        ++ticks;
    }
    ASSERT_TRUE(writers.allEnded());
    EXPECT_TRUE(QDir(folder.path()).isEmpty());
    const auto arrived = static_cast<int>(script.calls.size());
    EXPECT_EQ(QSet<QString>(script.calls.begin(), script.calls.end()).size(), arrived);
    EXPECT_EQ(script.calls.filter(u"AddSMS(9123456|w"_s).size(), arrived);
    expectThatNothingElseIsLost(arrived, writers.refused(), streams, ticks);
}

} // namespace norvane
