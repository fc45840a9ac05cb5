#include "TovekSMService/modem/device/SelectedModem.h"

#include <QSignalSpy>

#include <gtest/gtest.h>

namespace norvane {

using namespace Qt::StringLiterals;

namespace {

/// A modem that notes what is asked of it.
class NotedModem : public Modem
{
public:
    explicit NotedModem(Unit unit) : m_unit(unit) {}

    State state() const override { return m_state; }
    const DeviceDetails &details() const override { return m_details; }
    Unit unit() const override { return m_unit; }
    void open(const DeviceParameter &, const QString &pin, OpenMode, const QString &) override
    {
        m_state = State::Ready;
        calls.append(u"open "_s + pin);
    }
    void close() override
    {
        m_state = State::Closed;
        calls.append(u"close"_s);
    }
    bool awaitsPinOutcome() const override { return false; }
    void send(const SubmitPart &, Followers) override { calls.append(u"send"_s); }
    bool asksForFollowers() const override { return false; }
    void refreshDetails() override { calls.append(u"refresh"_s); }
    bool hasMail() const override { return m_unit == Unit::Message; }
    void fetchMail() override { calls.append(u"fetch"_s); }
    void dismissMail(const QList<Arrival> &) override { calls.append(u"dismiss"_s); }
    void deferMail(const QList<Arrival> &) override { calls.append(u"defer"_s); }
    void test() override { calls.append(u"test"_s); }

    QStringList calls;

private:
    const Unit m_unit;
    State m_state = State::Closed;
    DeviceDetails m_details;
};

class SelectedModemTest : public testing::Test
{
protected:
    SelectedModemTest()
    {
        auto port = std::make_unique<NotedModem>(Modem::Unit::Part);
        auto managed = std::make_unique<NotedModem>(Modem::Unit::Message);
        m_port = port.get();
        m_managed = managed.get();
        m_modem = std::make_unique<SelectedModem>(std::move(port), std::move(managed));
    }

    NotedModem *m_port = nullptr;
    NotedModem *m_managed = nullptr;
    std::unique_ptr<SelectedModem> m_modem;
};

TEST_F(SelectedModemTest, theParameterSaysWhichOneIsUsed)
{
    m_modem->open(PortParameter{u"/dev/x"_s, 9600}, u"1"_s);
    EXPECT_EQ(m_modem->unit(), Modem::Unit::Part);
    EXPECT_EQ(m_port->calls, QStringList{u"open 1"_s});
    EXPECT_EQ(m_managed->calls, QStringList());

    m_modem->open(ManagerParameter{}, u"2"_s);
    EXPECT_EQ(m_modem->unit(), Modem::Unit::Message);
    EXPECT_EQ(m_port->calls, (QStringList{u"open 1"_s, u"close"_s})) << "the other one lets go";
    EXPECT_EQ(m_managed->calls, QStringList{u"open 2"_s});
}

TEST_F(SelectedModemTest, everythingIsAskedOfTheOneThatIsUsed)
{
    m_modem->open(ManagerParameter{}, {});
    m_managed->calls.clear();
    m_port->calls.clear();
    m_modem->send({});
    m_modem->refreshDetails();
    m_modem->fetchMail();
    m_modem->dismissMail({});
    m_modem->deferMail({});
    m_modem->test();
    m_modem->close();
    EXPECT_EQ(m_managed->calls, (QStringList{u"send"_s, u"refresh"_s, u"fetch"_s, u"dismiss"_s,
                                             u"defer"_s, u"test"_s, u"close"_s}));
    EXPECT_TRUE(m_modem->hasMail());
    EXPECT_EQ(m_modem->state(), Modem::State::Closed);
    EXPECT_EQ(m_port->calls, QStringList());
}

TEST_F(SelectedModemTest, whatEitherOfThemSaysIsHeard)
{
    const QSignalSpy ready(m_modem.get(), &Modem::ready);
    const QSignalSpy taken(m_modem.get(), &Modem::partAccepted);
    const QSignalSpy lost(m_modem.get(), &Modem::failed);
    const QSignalSpy mail(m_modem.get(), &Modem::mailRead);
    for (NotedModem *const modem : {m_port, m_managed}) {
        Q_EMIT modem->ready({});
        Q_EMIT modem->partAccepted(1, ReportRequest::Asked);
        Q_EMIT modem->failed({});
        Q_EMIT modem->mailRead({});
    }
    for (const QSignalSpy *const spy : {&ready, &taken, &lost, &mail})
        EXPECT_EQ(spy->count(), 2);
}

} // namespace

} // namespace norvane
