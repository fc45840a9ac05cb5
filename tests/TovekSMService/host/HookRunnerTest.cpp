#include "TovekSMService/host/HookRunner.h"

#include "TovekSMService/dispatch/DispatcherFixture.h"

#include "support/TurnedTime.h"
#include "support/WaitUntil.h"

#include <QDir>
#include <QFile>
#include <QTemporaryDir>

#include <fcntl.h>
#include <signal.h>
#include <sys/stat.h>
#include <unistd.h>

namespace norvane {

using namespace Qt::StringLiterals;

namespace {

/// Real scripts in a folder whose name a shell would take apart.
class HookRunnerTest : public testing::Test
{
protected:
    HookRunnerTest() : m_hooks(std::make_unique<HookRunner>(m_time))
    {
        EXPECT_TRUE(QDir().mkpath(path({})));
        QObject::connect(m_hooks.get(), &HookRunner::idle, m_hooks.get(), [this] { ++m_idle; });
    }

    QString path(const QString &name) const
    {
        return m_folder.filePath(u"a folder; touch harm/"_s) + name;
    }

    /// Makes a script that runs in that folder.
    /// @return its path
    QString script(const QString &name, const QByteArray &body) const
    {
        QFile file(path(name));
        EXPECT_TRUE(file.open(QIODevice::WriteOnly));
        file.write("#!/bin/sh\ncd \"${0%/*}\" || exit 9\n" + body + '\n');
        file.close();
        EXPECT_TRUE(file.setPermissions(QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner));
        return file.fileName();
    }

    /// A script that notes its process and waits until release() is called.
    QString blockingScript() const
    {
        EXPECT_EQ(::mkfifo(QFile::encodeName(path(u"gate"_s)).constData(), 0600), 0);
        return script(u"block"_s, "echo begun >> order\necho $$ > new; mv new pid\n"
                                  "read line < gate\necho ended >> order");
    }

    void release() const
    {
        int gate = -1;
        // There is nobody at the other end until the script has come that far.
        ASSERT_TRUE(waitUntil([&] {
            gate = ::open(QFile::encodeName(path(u"gate"_s)).constData(), O_WRONLY | O_NONBLOCK);
            return gate >= 0;
        }));
        EXPECT_EQ(::write(gate, "\n", 1), 1);
        ::close(gate);
    }

    /// The process of blockingScript(), once it is there.
    pid_t blocked() const
    {
        EXPECT_TRUE(waitUntil([this] { return QFile::exists(path(u"pid"_s)); }));
        return static_cast<pid_t>(contents(u"pid"_s).trimmed().toInt());
    }

    QByteArray contents(const QString &name) const
    {
        QFile file(path(name));
        return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray("missing");
    }

    void run(const QString &command, const HookRunner::Facts &facts = {}) const
    {
        m_hooks->run(command, facts);
    }

    bool hasEnded() const
    {
        return waitUntil([this] { return m_idle > 0; });
    }

    TurnedTime m_time;
    QTemporaryDir m_folder;
    std::unique_ptr<HookRunner> m_hooks;
    int m_idle = 0;
};

TEST_F(HookRunnerTest, whatHappenedReachesTheCommandLetterForLetter)
{
    const QString text = u"ñ€ \"q\" 'a'\n$(touch harm) `touch harm`; touch harm"_s;
    run(script(u"hook"_s, "printf %s \"$FIRST\" > first; printf %s \"$SECOND\" > second"),
        {{u"FIRST"_s, text}, {u"SECOND"_s, QString()}});
    ASSERT_TRUE(hasEnded());
    EXPECT_EQ(contents(u"first"_s), text.toUtf8());
    EXPECT_EQ(contents(u"second"_s), QByteArray());
    EXPECT_EQ(contents(u"harm"_s), "missing");
}

TEST_F(HookRunnerTest, theEnvironmentIsTheEnginesAndNothingOfAnEarlierCall)
{
    const QString hook = script(u"hook"_s, "echo \"${ONE-none} ${TWO-none} $PATH\" >> seen");
    run(hook, {{u"ONE"_s, u"1"_s}});
    run(hook, {{u"TWO"_s, u"2"_s}});
    ASSERT_TRUE(hasEnded());
    const QByteArray found = qgetenv("PATH");
    EXPECT_EQ(contents(u"seen"_s), "1 none " + found + "\nnone 2 " + found + '\n');
}

TEST_F(HookRunnerTest, aNulInAValueIsABlank)
{
    run(script(u"hook"_s, "printf %s \"$TEXT\" > text"), {{u"TEXT"_s, u"a\0b"_s}});
    ASSERT_TRUE(hasEnded());
    EXPECT_EQ(contents(u"text"_s), "a b");
}

TEST_F(HookRunnerTest, aCommandIsAPathAloneAndNoLineOfAShell)
{
    const NotedLog log;
    const QString hook = script(u"hook"_s, "echo $# >> count; cat >> input; echo noise");
    run(hook);
    run(hook + u" argument"_s);
    run(hook + u"; touch harm"_s);
    ASSERT_TRUE(hasEnded());
    EXPECT_EQ(contents(u"count"_s), "0\n");
    EXPECT_EQ(contents(u"input"_s), QByteArray()) << "it has nothing to read";
    EXPECT_EQ(log.count(u"can't be started"_s), 2);
    EXPECT_EQ(contents(u"harm"_s), "missing");
}

TEST_F(HookRunnerTest, commandsRunOneAfterTheOtherInTheirOrder)
{
    run(blockingScript());
    for (const char *const name : {"one", "two", "three"})
        run(script(QLatin1String(name), QByteArray("echo ") + name + " >> order"));
    release();
    ASSERT_TRUE(hasEnded());
    EXPECT_EQ(contents(u"order"_s), "begun\nended\none\ntwo\nthree\n");
    EXPECT_EQ(m_idle, 1);
    EXPECT_EQ(m_time.alarms(), 0);
}

TEST_F(HookRunnerTest, whateverBecomesOfACommandIsLoggedAndTheNextOneRuns)
{
    const NotedLog log;
    const QString wrong = script(u"wrong"_s, "exit 3");
    const QString crashing = script(u"crashing"_s, "kill -KILL $$");
    const QString plain = path(u"plain"_s);
    ASSERT_TRUE(QFile::copy(wrong, plain));
    ASSERT_TRUE(QFile::setPermissions(plain, QFile::ReadOwner));
    for (const QString &command : {wrong, crashing, path(u"missing"_s), plain})
        run(command);
    run(script(u"last"_s, "echo last > order"));
    ASSERT_TRUE(hasEnded());
    EXPECT_EQ(log.count(wrong + u" ended with 3"_s), 1);
    EXPECT_EQ(log.count(crashing + u" crashed"_s), 1);
    EXPECT_EQ(log.count(path(u"missing"_s) + u" can't be started"_s), 1);
    EXPECT_EQ(log.count(plain + u" can't be started"_s), 1);
    EXPECT_EQ(log.count(u"the command"_s), 4);
    EXPECT_EQ(contents(u"order"_s), "last\n");
}

TEST_F(HookRunnerTest, aCommandThatTakesTooLongIsKilledAndTheNextOneRuns)
{
    const NotedLog log;
    run(blockingScript());
    run(script(u"next"_s, "echo next >> order"));
    const pid_t process = blocked();
    m_time.pass(HookRunner::limitMs - 1);
    EXPECT_EQ(::kill(process, 0), 0);
    m_time.pass(1);
    ASSERT_TRUE(hasEnded());
    EXPECT_NE(::kill(process, 0), 0);
    EXPECT_EQ(log.count(u"block was killed after 30 s"_s), 1);
    EXPECT_EQ(log.count(u"the command"_s), 1);
    EXPECT_EQ(contents(u"order"_s), "begun\nnext\n");
}

TEST_F(HookRunnerTest, whatACommandStartedIsKilledWithIt)
{
    blockingScript();
    run(script(u"parent"_s, "\"${0%/*}/block\" &\nwait"));
    const pid_t child = blocked();
    m_time.pass(HookRunner::limitMs);
    ASSERT_TRUE(hasEnded());
    EXPECT_TRUE(waitUntil([&] { return ::kill(child, 0) != 0; }));
    EXPECT_EQ(contents(u"order"_s), "begun\n");
}

TEST_F(HookRunnerTest, theLimitBeginsAnewWithEachCommand)
{
    const NotedLog log;
    run(blockingScript());
    run(path(u"block"_s));
    blocked();
    m_time.pass(HookRunner::limitMs - 1);
    ASSERT_TRUE(QFile::remove(path(u"pid"_s)));
    release();
    blocked();
    m_time.pass(HookRunner::limitMs - 1);
    release();
    ASSERT_TRUE(hasEnded());
    EXPECT_EQ(log.count(u"the command"_s), 0);
    EXPECT_EQ(contents(u"order"_s), "begun\nended\nbegun\nended\n");
}

TEST_F(HookRunnerTest, moreThanMayWaitIsLeftOut)
{
    const NotedLog log;
    run(blockingScript());
    for (int waiting = 1; waiting < HookRunner::maxWaiting; ++waiting)
        run(path(u"missing"_s));
    run(script(u"last"_s, "echo last >> order"));
    EXPECT_EQ(log.count(u"left out"_s), 0);
    const QString over = script(u"over"_s, "echo over >> order");
    run(over);
    EXPECT_EQ(log.count(u"left out: "_s + over), 1);
    release();
    ASSERT_TRUE(hasEnded());
    EXPECT_EQ(contents(u"order"_s), "begun\nended\nlast\n");
    EXPECT_EQ(log.count(u"can't be started"_s), HookRunner::maxWaiting - 1);
}

TEST_F(HookRunnerTest, anEmptyCommandRunsNothing)
{
    const NotedLog log;
    run(QString(), {{u"TEXT"_s, u"a"_s}});
    EXPECT_EQ(m_time.alarms(), 0);
    m_time.settle();
    EXPECT_EQ(m_idle, 0);
    EXPECT_EQ(log.count(u"command"_s), 0);
}

TEST_F(HookRunnerTest, aCommandThatStillRunsEndsWithTheRunner)
{
    run(blockingScript());
    const pid_t process = blocked();
    m_hooks.reset();
    EXPECT_TRUE(waitUntil([&] { return ::kill(process, 0) != 0; }));
    EXPECT_EQ(contents(u"order"_s), "begun\n");
}

} // namespace

} // namespace norvane
