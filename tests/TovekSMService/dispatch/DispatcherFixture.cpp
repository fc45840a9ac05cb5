#include "TovekSMService/dispatch/DispatcherFixture.h"

#include "TovekSMService/modem/codec/SubmitDecoder.h"
#include "TovekSMService/store/TestStore.h"

namespace norvane {

using namespace Qt::StringLiterals;

namespace {

QStringList g_log;

void note(QtMsgType, const QMessageLogContext &, const QString &line)
{
    g_log.append(line);
}

} // namespace

NotedLog::NotedLog()
{
    g_log.clear();
    qInstallMessageHandler(note);
}

NotedLog::~NotedLog()
{
    qInstallMessageHandler(nullptr);
}

qsizetype NotedLog::count(const QString &words) const
{
    return g_log.filter(words).size();
}

DispatcherFixture::DispatcherFixture(const ModemTimings &modemTimings) : ModemFixture(modemTimings)
{
    m_timings.storeRetryMs = 20;
    m_timings.maxSleepMs = 20;
    m_timings.keepTestedMs = 20;
    m_timings.lifeMs = 1'000'000'000; // the database's clock is not the test's
    // Like a device that needs the air to send: one message leaves at a time.
    m_timings.run.max = 1;
    m_retryTimes.minReopenMs = 20;
    m_retryTimes.maxReopenMs = 80;
    m_line->onCommand = [this](const QByteArray &command) -> std::optional<QByteArray> {
        if (!command.startsWith("AT+CMGS="))
            return std::nullopt;
        if (!m_submitAnswers.isEmpty())
            m_line->submitAnswer = m_submitAnswers.takeFirst();
        if (m_onSubmission)
            m_onSubmission();
        return std::nullopt;
    };
    m_store = openTestStore(file(), m_clock);
    makeDispatcher();
}

DispatcherFixture::~DispatcherFixture()
{
    // Its end reaches into the modem's and the store's.
    m_dispatcher.reset();
}

ModemTimings DispatcherFixture::patientTimings()
{
    ModemTimings timings = shortTimings();
    timings.commandMs = 2000;
    timings.slowCommandMs = 2000;
    timings.promptMs = 2000;
    timings.sendMs = 5000;
    return timings;
}

void DispatcherFixture::makeDispatcher()
{
    m_dispatcher.reset();
    m_modem->close();
    m_dispatcher = std::make_unique<Dispatcher>(
        *m_store, *m_modem, m_clock, RetryPolicy([this] { return m_random; }, m_retryTimes),
        m_timings, m_settings, [this](const EncodeRequest &request) {
            ++m_encodings;
            return encodeSubmit(request);
        });
    Dispatcher *const dispatcher = m_dispatcher.get();
    QObject::connect(dispatcher, &Dispatcher::statusChanged,
                     [this](int status) { m_events << u"status %1"_s.arg(status); });
    QObject::connect(dispatcher, &Dispatcher::deviceInfo, [this](const DeviceDetails &details) {
        m_events << u"info "_s + details.model;
    });
    QObject::connect(dispatcher, &Dispatcher::queueChanged, [this] { m_events << u"queue"_s; });
    QObject::connect(dispatcher, &Dispatcher::sent,
                     [this](const QString &phone, const QString &text, int others) {
                         m_events << u"sent %1 %2 %3"_s.arg(phone, text).arg(others);
                     });
    QObject::connect(dispatcher, &Dispatcher::sendingFailed,
                     [this](const QString &phone, const QString &text, int code) {
                         m_events << u"failed %1 %2 %3"_s.arg(phone, text).arg(code);
                     });
    QObject::connect(dispatcher, &Dispatcher::warning,
                     [this](int code, const QString &) { m_events << u"warning %1"_s.arg(code); });
    QObject::connect(dispatcher, &Dispatcher::reportRaised, [this](qint64 report) {
        m_reports << report;
        if (m_handlesReports)
            m_dispatcher->noteHandled(report);
    });
    QObject::connect(dispatcher, &Dispatcher::finished, [this] { m_events << u"finished"_s; });
    m_dispatcher->setHasListeners(true);
}

void DispatcherFixture::add(const QString &phone, const QString &text, const QString &date)
{
    done(m_store->queue().add({{phone, text}}, date));
    m_dispatcher->noticeQueueChange();
}

void DispatcherFixture::startReady()
{
    done(m_dispatcher->start());
    ASSERT_TRUE(until([this] { return !m_events.filter(u"info"_s).isEmpty(); }));
    takeTurns();
}

qsizetype DispatcherFixture::submissions() const
{
    return std::count_if(m_line->commands.cbegin(), m_line->commands.cend(),
                         [](const QByteArray &command) { return command.startsWith("AT+CMGS="); });
}

QStringList DispatcherFixture::eventsButQueue() const
{
    QStringList events = m_events;
    events.removeAll(u"queue"_s);
    return events;
}

QStringList DispatcherFixture::taken() const
{
    QStringList taken;
    for (const QByteArray &payload : m_line->payloads) {
        const std::optional<DecodedSubmit> part = decodeSubmit(payload);
        taken << (part ? part->phone + u' ' + part->text : u"unreadable"_s);
    }
    return taken;
}

QString DispatcherFixture::longText(int parts)
{
    QString text;
    for (int part = 1; part <= parts; ++part)
        text += QString(152, QChar(u'a' + part - 1));
    return text;
}

void DispatcherFixture::configure(const QString &parameter, qint32 protocol)
{
    done(m_store->settings().setDeviceSettings({0, QString(), 1, protocol, parameter}));
}

QVariant DispatcherFixture::onDisk(const QString &query) const
{
    return OtherConnection(file()).value(query);
}

} // namespace norvane
