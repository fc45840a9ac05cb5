#include "harness/World.h"

#include "contract/BusTypes.h"

#include <QCoreApplication>
#include <QCryptographicHash>
#include <QDBusError>
#include <QDateTime>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>

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

int partsOf(MailShape shape)
{
    switch (shape) {
    case MailShape::TwoParts:
        return 2;
    case MailShape::ThreeParts:
    case MailShape::ThreeUnicodeParts:
        return 3;
    default:
        return 1;
    }
}

/// A text of so many parts, none of which is like another.
QString mailTextOf(MailShape shape, int number)
{
    constexpr int shortLength = 30;
    const bool isUnicode = shape == MailShape::Unicode || shape == MailShape::ThreeUnicodeParts;
    const int partLength = isUnicode ? 67 : 153;
    const int parts = partsOf(shape);
    const qsizetype length = parts == 1 ? shortLength : parts * partLength - shortLength;
    QString text;
    for (int word = 0; text.size() < length; ++word)
        text += (isUnicode ? u"слово %1.%2, "_s : u"palabra %1.%2, "_s).arg(number).arg(word);
    return text.left(length - 1) + u'!';
}

} // namespace

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
    if (!plugInAnother(simulatorOptions)) {
        stuck(u"the device"_s);
        return false;
    }
    return startEngine(sandbox.path(u"modem"_s) + u", 115200"_s);
}

bool World::plugInSocket(const QStringList &simulatorOptions)
{
    m_device = std::make_unique<RunningSimulator>(simulatorOptions, RunningSimulator::Port::Socket);
    return m_device->isReady();
}

bool World::startEngine(const QString &deviceParameter)
{
    if (!sandbox.storeDevice(deviceParameter)) {
        stuck(u"the device's settings"_s);
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

QList<int> World::someOrder(int parts)
{
    QList<int> order;
    for (int part = 1; part <= parts; ++part)
        order.append(part);
    if (parts > 1)
        order.append(random(1, parts));
    std::shuffle(order.begin(), order.end(), m_random);
    return order;
}

QByteArray World::askDevice(const QByteArray &command) const
{
    return ControlClient(m_device->controlPath()).ask(command);
}

void World::deliver(MailShape shape, std::chrono::milliseconds delay)
{
    constexpr int firstSender = 700'000'000;
    constexpr int references = 256;
    const int number = m_options.lane * phonesOfLane + m_mailMade++;
    const Mail mail{u"+34"_s + QString::number(firstSender + number), mailTextOf(shape, number)};
    QJsonObject request{{u"from"_s, mail.phone},
                        {u"text"_s, mail.text},
                        {u"reference"_s, number % references},
                        {u"delay"_s, static_cast<qint64>(delay.count())}};
    if (const int parts = partsOf(shape); parts > 1) {
        QJsonArray order;
        for (const int part : someOrder(parts))
            order.append(part);
        request.insert(u"order"_s, order);
    }
    const QByteArray answer =
        askDevice("deliver " + QJsonDocument(request).toJson(QJsonDocument::Compact));
    if (answer.startsWith("ok"))
        m_account.mailGiven.append(mail);
    else
        stuck(u"a message to the network: "_s + QString::fromUtf8(answer));
}

bool World::isSilent() const
{
    if (StoreReader(sandbox.storeFile()).due(engineMoment(0)) != 0)
        return false;
    for (const char *const memory : {"SM", "ME", "SR"}) {
        const QByteArray places = askDevice(QByteArray("memory ") + memory);
        if (!places.startsWith("ok 0 ") && !places.startsWith("error"))
            return false;
    }
    return askDevice("count reports") == "ok 0" && askDevice("count messages") == "ok 0";
}

QString World::remains() const
{
    QStringList words{u"%1 due"_s.arg(StoreReader(sandbox.storeFile()).due(engineMoment(0)))};
    for (const char *const question :
         {"memory SM", "memory ME", "memory SR", "count reports", "count messages"})
        words << QLatin1String(question) + u": "_s + QString::fromUtf8(askDevice(question));
    return words.join(u", "_s);
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

Tally World::close(int cycles, Reports reports)
{
    m_account.reports = reports;
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
