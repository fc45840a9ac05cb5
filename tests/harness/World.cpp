#include "harness/World.h"

#include "contract/BusTypes.h"

#include <QCoreApplication>
#include <QCryptographicHash>
#include <QDBusError>
#include <QDateTime>

#include <algorithm>

namespace norvane {

using namespace Qt::StringLiterals;

namespace {

constexpr int hearLimit = 1'200'000; // ms
constexpr int phonesOfLane = 1'000'000;

/// A second connection to the sandbox's bus.
struct BriefConnection
{
    explicit BriefConnection(const QString &address)
        : bus(QDBusConnection::connectToBus(address, u"brief"_s))
    {}
    BriefConnection(const BriefConnection &) = delete;
    BriefConnection &operator=(const BriefConnection &) = delete;
    ~BriefConnection() { QDBusConnection::disconnectFromBus(u"brief"_s); }

    QDBusConnection bus;
};

Queued howQueued(const QDBusMessage &answer)
{
    if (answer.type() == QDBusMessage::ReplyMessage)
        return Queued::Answered;
    const QDBusError::ErrorType error = QDBusError(answer).type();
    const bool gone = error == QDBusError::NoReply || error == QDBusError::ServiceUnknown ||
                      error == QDBusError::Disconnected || error == QDBusError::Timeout ||
                      error == QDBusError::TimedOut;
    return gone ? Queued::Unanswered : Queued::Refused;
}

QString textOf(Shape shape, int number)
{
    const QString start = u"Aviso %1. "_s.arg(number, 7, 10, QChar(u'0'));
    switch (shape) {
    case Shape::Short:
        return start.trimmed();
    case Shape::OnePart:
        return start + u"Su pedido está listo: 10 € [taller 3]"_s;
    case Shape::TwoParts:
        return start + u"Le recordamos su cita de mañana. "_s.repeated(6);
    case Shape::ThreeParts:
        return start + u"Traiga los papeles del coche. "_s.repeated(13);
    case Shape::Unicode:
        return start + u"Пароль изменён. "_s.repeated(6);
    }
    return start;
}

} // namespace

QString engineMoment(int secondsFromNow)
{
    return QDateTime::currentDateTime().addSecs(secondsFromNow).toString(u"yyyy-MM-ddTHH:mm:ss"_s);
}

World::World(const RunOptions &options)
    : line(sandbox.path(u"modem"_s),
           [this](const QByteArray &payload) { checkCommitted(payload); }),
      m_options(options), m_random(options.seed + static_cast<quint32>(options.lane))
{}

void World::checkCommitted(const QByteArray &payload)
{
    const QByteArray hash = QCryptographicHash::hash(payload, QCryptographicHash::Sha256);
    if (!StoreReader(sandbox.storeFile()).isLeaving(hash).value_or(false))
        ++m_uncommitted;
}

bool World::begin(const QStringList &simulatorOptions)
{
    if (!plugInAnother(simulatorOptions) ||
        !sandbox.storeDevice(sandbox.path(u"modem"_s) + u", 115200"_s)) {
        stuck(u"the device or its settings"_s);
        return false;
    }
    sandbox.start();
    if (!sandbox.waitForBus() || sandbox.call("StartEngine").type() != QDBusMessage::ReplyMessage) {
        stuck(u"the engine's first start"_s);
        return false;
    }
    return true;
}

bool World::plugInAnother(const QStringList &simulatorOptions)
{
    line.cut();
    collectReceived();
    m_device = std::make_unique<RunningSimulator>(simulatorOptions);
    return m_device->isReady() && line.plugIn(m_device->link());
}

bool World::deviceHasGone()
{
    return m_device->process().state() == QProcess::NotRunning ||
           m_device->process().waitForFinished(0);
}

void World::collectReceived()
{
    if (!m_device)
        return;
    for (const QJsonObject &entry : m_device->messages())
        m_account.received.append({entry.value(u"number").toString(),
                                   entry.value(u"text").toString(), entry.value(u"part").toInt(1),
                                   entry.value(u"parts").toInt(1)});
    m_device.reset();
}

QueuedMessage World::makeMessage(Shape shape)
{
    constexpr int firstPhone = 600'000'000;
    const int number = m_options.lane * phonesOfLane + m_made++;
    return {QString::number(firstPhone + number), textOf(shape, number)};
}

void World::queue(const QList<Shape> &shapes)
{
    QList<QueuedMessage> messages;
    BusSMSList list;
    for (const Shape shape : shapes) {
        messages.append(makeMessage(shape));
        list.append({messages.constLast().phone, messages.constLast().text});
    }
    constexpr int aMinuteAgo = -60;
    const Queued how = howQueued(
        sandbox.call("AddSMSList", {QVariant::fromValue(list), engineMoment(aMinuteAgo)}));
    for (QueuedMessage &message : messages)
        message.how = how;
    m_account.queued += messages;
}

void World::stuck(const QString &what)
{
    m_problems.fault(&Tally::stuck, u"did not come: "_s + what);
}

int World::random(int least, int max)
{
    return std::uniform_int_distribution(least, max)(m_random);
}

void World::hearFailures(Account &account)
{
    Account now;
    StoreReader(sandbox.storeFile()).read(now);
    const auto failures =
        std::count_if(now.outcomes.cbegin(), now.outcomes.cend(),
                      [](const MessageOutcome &outcome) { return outcome.code != 1; });
    {
        // A console that hears of all of them and dies before it has handled any.
        const BriefConnection console(sandbox.busAddress());
        FailureListener dying(console.bus);
        sandbox.callFrom(console.bus, "AcknowledgeReports",
                         {QVariant::fromValue(QList<qlonglong>())});
        sandbox.callFrom(console.bus, "ReportState");
        if (!eventually([&] { return dying.heard.size() >= failures; }, hearLimit))
            stuck(u"a failure to a console that dies"_s);
    }
    FailureListener listener(sandbox.bus());
    sandbox.call("ReportState");
    eventually([&] { return listener.heard.size() >= failures; }, hearLimit);
    // What were told twice would have come before this answer.
    sandbox.queueSize();
    QCoreApplication::processEvents();
    account.told = listener.heard;
}

Tally World::close(int cycles)
{
    line.disarm();
    line.flow();
    const StoreReader store(sandbox.storeFile());
    if (!sandbox.isUp())
        sandbox.start();
    if (!sandbox.waitForBus())
        stuck(u"the engine's last start"_s);
    if (!eventually([&] { return store.due(engineMoment(0)) == 0; }, drainLimit))
        stuck(u"the end of the queue"_s);
    hearFailures(m_account);
    if (!sandbox.stop())
        stuck(u"the engine's own end"_s);
    line.cut();
    collectReceived();
    if (!store.read(m_account) || store.check() != "ok"_L1)
        stuck(u"a sound store: "_s + store.check());

    Tally tally = count(m_account);
    tally.faults += m_problems.faults;
    tally.stuck += m_problems.stuck;
    for (int i = 0; i < m_uncommitted; ++i)
        tally.fault(&Tally::uncommitted, u"a part left before the store knew"_s);
    tally.cycles = cycles;
    return tally;
}

} // namespace norvane
