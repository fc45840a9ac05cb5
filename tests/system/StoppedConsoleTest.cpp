#include "contract/BusTypes.h"
#include "support/WaitUntil.h"
#include "system/WholePath.h"

#include <QDBusArgument>
#include <QDBusConnection>
#include <QDBusMessage>

#include <csignal>

namespace norvane {

using namespace Qt::StringLiterals;

namespace {

/// A console in a process of its own that stands still and never goes on.
class StoppedConsole : public WholePath
{
protected:
    void SetUp() override
    {
        plugIn();
        const auto engine = makeProxy(); // it is up before any console
    }
    ~StoppedConsole() override
    {
        m_process.kill();
        m_process.waitForFinished(hangMs);
    }

    /// Calls the engine, by a program that listens to nothing.
    static QVariant call(const char *operation, const QVariantList &arguments = {})
    {
        QDBusMessage message = QDBusMessage::createMethodCall(
            QLatin1String(Bus::serviceName), QLatin1String(Bus::objectPath),
            QLatin1String(Bus::interfaceName), QLatin1String(operation));
        message.setArguments(arguments);
        return QDBusConnection::sessionBus().call(message).arguments().value(0);
    }
    static int listeners()
    {
        return qdbus_cast<QVariantMap>(call("GetState")).value(u"listeners"_s, -1).toInt();
    }
    void startConsole()
    {
        m_process.setProcessChannelMode(QProcess::ForwardedErrorChannel);
        m_process.start(QStringLiteral(NORVANE_BIN_DIR "/NorvaneSMS"), QStringList());
        ASSERT_TRUE(m_process.waitForStarted(hangMs));
        ASSERT_TRUE(eventually([] { return listeners() == 1; }));
    }
    void signalConsole(int number) const
    {
        ASSERT_EQ(::kill(static_cast<pid_t>(m_process.processId()), number), 0);
    }
    static void failMessage(const QString &phone)
    {
        call("AddSMS", {phone, u"x"_s, u"2020-01-01T00:00:00"_s});
        call("StartEngine");
        ASSERT_TRUE(eventually([] { return call("GetQueueSize").toInt() == 0; }));
    }
    QStringList failedPhones() const
    {
        QStringList phones;
        const auto *const rows = control<QTableView>("grdSentDetails")->model();
        for (int row = 0; row < rows->rowCount(); ++row)
            phones << rows->index(row, 1).data().toString();
        return phones;
    }

    QProcess m_process;
};

TEST_F(StoppedConsole, aFailureThatItNeverHandledIsToldByTheNextConsole)
{
    startConsole();
    signalConsole(SIGSTOP);
    failMessage(u"call me"_s);
    signalConsole(SIGKILL);
    ASSERT_TRUE(m_process.waitForFinished(hangMs));
    ASSERT_TRUE(eventually([] { return listeners() == 0; }));

    openConsole();
    ASSERT_TRUE(eventually([this] { return !failedPhones().isEmpty(); }));
    EXPECT_EQ(failedPhones(), QStringList{u"call me"_s});
    EXPECT_TRUE(control<TerminalView>("txtTerm")->text().contains(u"-18"_s));

    // It has handled it: the one after that begins with an empty list.
    closeConsole();
    openConsole();
    QCoreApplication::processEvents(); // the engine's report came before the answers to the load
    EXPECT_EQ(failedPhones(), QStringList());
}

} // namespace

} // namespace norvane
