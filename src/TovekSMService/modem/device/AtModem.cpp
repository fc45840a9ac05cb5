#include "TovekSMService/modem/device/AtModem.h"

#include "TovekSMService/modem/device/DeviceQueries.h"
#include "TovekSMService/modem/device/DeviceSetUp.h"
#include "contract/ErrorCodes.h"

#include <utility>

namespace norvane {

using namespace Qt::StringLiterals;

AtModem::AtModem(std::unique_ptr<SerialLine> line, PinGate &gate, const ModemTimings &timings,
                 QObject *parent, PortSearch::Ports ports, TimeSource &time)
    : Modem(parent), m_line(std::move(line)), m_timings(timings),
      m_channel(m_line.get(), timings, time),
      m_dialogue(m_channel, timings, [this](const ModemFailure &failure) { fail(failure); }),
      m_flightMode(m_dialogue, timings, time),
      m_unlock(
          m_dialogue, gate, timings,
          [this] {
              // Whoever hears it may close the modem, which must not happen to a step on the
              // stack.
              QMetaObject::invokeMethod(this, &Modem::pinResolved, Qt::QueuedConnection);
          },
          time),
      m_submission(m_channel, m_dialogue, timings, time),
      m_mailbox(
          m_dialogue, timings, [this] { Q_EMIT mailDue(); }, time),
      m_search(*m_line, m_channel, timings, std::move(ports), time), m_initialisationLimit(time)
{
    connect(&m_initialisationLimit, &Timer::timeout, this, &AtModem::onLate);
    connect(&m_channel, &AtChannel::unsolicited, this, [this](const QByteArray &said) {
        const bool hadMail = hasMail();
        m_mailbox.takeLine(said);
        if (!hadMail && hasMail())
            Q_EMIT mailDue();
        Q_EMIT unsolicited(said);
    });
    connect(&m_channel, &AtChannel::broken, this, &AtModem::onBroken);
}

AtModem::~AtModem()
{
    // Whoever listens may be on the way out too.
    blockSignals(true);
    shutDown();
}

void AtModem::open(const DeviceParameter &parameter, const QString &pin, OpenMode mode,
                   const QString &imei)
{
    close();
    m_state = State::Opening;
    m_mode = mode;
    m_pin = pin;
    m_imei = imei;
    m_parameter = std::get<PortParameter>(parameter);
    m_searched = false;
    m_submission.reset();
    m_details = {};
    m_initialisationLimit.start(m_timings.initialisationMs);
    QMetaObject::invokeMethod(
        this,
        [this, opening = ++m_opening] {
            if (m_state == State::Opening && m_opening == opening)
                openLine();
        },
        Qt::QueuedConnection);
}

void AtModem::openLine()
{
    const QString &device = m_parameter.device;
    const Result<void, LineFailure> opened = m_line->open(device, m_parameter.baud);
    if (opened)
        startDialogue();
    else if (opened.error().error == LineError::NoSuchDevice && !m_imei.isEmpty())
        searchOrFail({failureRule(LineError::NoSuchDevice).code, device, false});
    else
        failToOpen(opened.error(), device);
}

void AtModem::failToOpen(const LineFailure &failure, const QString &device)
{
    const bool hasDetail = !failure.detail.isEmpty() && failure.detail != device;
    QString text = hasDetail ? u"%1: %2"_s.arg(device, failure.detail) : device;
    if (failure.error == LineError::HeldByAnother && failure.detail.startsWith("ModemManager"_L1))
        text += u"; \"ModemManager\" as the parameter would use the device through it"_s;
    fail({failureRule(failure.error).code, text, false});
}

/// The device may have come back under another name, and the old one be nobody's or another port's.
/// @param failure  what is told if it hasn't, or isn't known
void AtModem::searchOrFail(const ModemFailure &failure)
{
    if (m_imei.isEmpty() || std::exchange(m_searched, true)) {
        fail(failure);
        return;
    }
    m_state = State::Opening;
    m_line->close();
    m_search.start(m_imei, m_parameter.baud, [this, failure](const QString &port) {
        if (port.isEmpty())
            fail(failure);
        else
            startDialogue();
    });
}

void AtModem::startDialogue()
{
    m_state = State::Initialising;
    m_initialisationLimit.start(m_timings.initialisationMs);
    m_channel.synchronise(m_timings.probeTries, [this](SyncOutcome outcome) { onFound(outcome); });
}

void AtModem::onLate()
{
    // The talk with a SIM about its PIN has limits of its own and is not cut off.
    if (m_unlock.awaitsPinOutcome())
        m_initialisationLimit.start(m_timings.slowCommandMs);
    else
        fail({ErrorCode::phoneInit, u"the device isn't ready within its time"_s, false});
}

void AtModem::onFound(SyncOutcome outcome)
{
    if (outcome == SyncOutcome::LineBroken)
        return;
    if (outcome != SyncOutcome::Answered)
        searchOrFail(failureOf(outcome));
    else if (std::exchange(m_mode, OpenMode::Plain) == OpenMode::ResetFunctionality)
        resetFunctionality();
    else
        setUp();
}

void AtModem::resetFunctionality()
{
    Q_EMIT functionalityReset();
    m_dialogue.ask({"AT+CFUN=1,1"_ba, m_timings.slowCommandMs, {}}, [this](const AtAnswer &) {
        // The device starts anew, or the line breaks.
        m_channel.synchronise(m_timings.probeTries,
                              [this](SyncOutcome outcome) { onFound(outcome); });
    });
}

void AtModem::setUp()
{
    m_dialogue.askAll(DeviceSetUp::dialogue(m_timings),
                      [this](const ModemResult &) { m_flightMode.leave([this] { unlock(); }); });
}

void AtModem::unlock()
{
    m_unlock.start(
        std::exchange(m_pin, QString()), &m_details,
        [this](const ModemResult &unlocked) {
            if (unlocked)
                setUpMessages();
            else
                fail(unlocked.error());
        },
        m_flightMode.wasLeft() ? SimPresence::JustPowered : SimPresence::Told);
}

void AtModem::setUpMessages()
{
    m_dialogue.askAll(DeviceSetUp::messages(m_timings), [this](const ModemResult &setUp) {
        if (setUp)
            m_mailbox.setUp([this] { m_flightMode.awaitNetwork([this] { readDetails(); }); });
        else
            fail(setUp.error());
    });
}

void AtModem::readDetails()
{
    m_dialogue.askAll(DeviceQueries::identity(&m_details, m_timings) +
                          DeviceQueries::condition(&m_details, m_timings),
                      [this](const ModemResult &) {
                          if (m_details.simId.isEmpty())
                              m_details.simId = m_details.imei;
                          becomeReady();
                      });
}

void AtModem::becomeReady()
{
    m_initialisationLimit.stop();
    m_state = State::Ready;
    Q_EMIT ready(m_details);
}

void AtModem::send(const SubmitPart &part, Followers followers)
{
    if (m_state != State::Ready) {
        refusePart(PartSubmission::failureOf(SendProblem::NotSent, u"the modem isn't ready"_s));
        return;
    }
    m_state = State::Busy;
    m_followers = followers;
    const bool mayAsk = m_mailbox.takesReports() && !m_refusals.contains(m_details.simId);
    submit(part.asksForReport && !mayAsk ? withoutStatusReport(part) : part);
}

void AtModem::submit(const SubmitPart &part)
{
    m_part = part;
    m_submission.start(part, m_followers,
                       [this](const PartSubmission::Outcome &outcome) { onSubmitted(outcome); });
}

/// An error means that the part was not taken. Where it may be the request that was refused, the
/// part goes again without it, and the SIM is asked no more.
bool AtModem::sendWithoutReport(const PartSubmission::Outcome &outcome)
{
    if (outcome.accepted || !m_part.asksForReport || !ReportRefusals::mayBeRefusal(outcome.failure))
        return false;
    m_refusals.add(m_details.simId);
    submit(withoutStatusReport(m_part));
    return true;
}

void AtModem::onSubmitted(const PartSubmission::Outcome &outcome)
{
    using Device = PartSubmission::Outcome::Device;
    if (outcome.device == Device::Lost) {
        recoverThen([this, outcome] { reportPart(outcome); });
        return;
    }
    if (outcome.device == Device::Ready && sendWithoutReport(outcome))
        return;
    if (outcome.device == Device::Ready)
        m_state = State::Ready;
    reportPart(outcome);
}

/// Finds the device in command mode again before the outcome is told, so that whoever hears of it
/// can send at once.
void AtModem::recoverThen(const std::function<void()> &tell)
{
    m_channel.synchronise(m_timings.probeTries, [this, tell](SyncOutcome outcome) {
        if (outcome == SyncOutcome::Answered)
            m_state = State::Ready;
        const quint64 opening = m_opening;
        tell();
        // Whoever heard it may have closed the modem or opened it anew.
        if (outcome != SyncOutcome::Answered && outcome != SyncOutcome::LineBroken &&
            m_state == State::Busy && m_opening == opening)
            fail(failureOf(outcome));
    });
}

void AtModem::reportPart(const PartSubmission::Outcome &outcome)
{
    if (outcome.accepted)
        Q_EMIT partAccepted(outcome.reference,
                            m_part.asksForReport ? ReportRequest::Asked : ReportRequest::None);
    else
        Q_EMIT partFailed(outcome.failure);
}

void AtModem::refreshDetails()
{
    if (m_state != State::Ready)
        return;
    m_state = State::Busy;
    m_dialogue.askAll(DeviceQueries::condition(&m_details, m_timings), [this](const ModemResult &) {
        m_state = State::Ready;
        Q_EMIT detailsChanged(m_details);
    });
}

void AtModem::fetchMail()
{
    if (m_state != State::Ready)
        return;
    m_state = State::Busy;
    m_mailbox.work([this](const QList<Arrival> &arrivals) {
        m_state = State::Ready;
        Q_EMIT mailRead(arrivals);
    });
}

void AtModem::test()
{
    if (m_state != State::Ready) {
        refuseTest();
        return;
    }
    m_state = State::Busy;
    m_testing = true;
    m_dialogue.ask({"AT"_ba, m_timings.probeMs, {}}, [this](const AtAnswer &answer) {
        if (answer.isOk())
            testSim();
        else
            testAfterFindingBack();
    });
}

/// The device is there, but not where the talk had left it.
void AtModem::testAfterFindingBack()
{
    m_channel.synchronise(m_timings.probeTries, [this](SyncOutcome outcome) {
        if (outcome == SyncOutcome::Answered)
            testSim();
        else if (outcome != SyncOutcome::LineBroken)
            fail(failureOf(outcome));
    });
}

void AtModem::testSim()
{
    // No PIN is tried here: a SIM that asks for one now has been changed or taken out.
    m_unlock.start(QString(), &m_details,
                   [this](const ModemResult &unlocked) { onTested(unlocked); });
}

void AtModem::onTested(const ModemResult &unlocked)
{
    m_dialogue.askAll(
        DeviceQueries::condition(&m_details, m_timings), [this, unlocked](const ModemResult &) {
            m_state = State::Ready;
            m_testing = false;
            if (unlocked)
                Q_EMIT tested(true, ErrorCode::ok, m_details, {});
            else
                Q_EMIT tested(false, unlocked.error().code, m_details, unlocked.error().text);
        });
}

void AtModem::onBroken(const LineFailure &failure)
{
    if (m_state == State::Closed || m_state == State::Opening)
        return;
    fail({failureRule(failure.error).code,
          failure.detail.isEmpty() ? u"the line broke"_s : failure.detail, false});
}

void AtModem::close()
{
    shutDown();
}

/// Closes everything and answers a part or a test in progress.
void AtModem::shutDown()
{
    const bool testing = std::exchange(m_testing, false);
    m_state = State::Closed;
    m_initialisationLimit.stop();
    m_flightMode.stop();
    m_unlock.stop();
    m_mailbox.reset();
    m_search.stop();
    m_line->close();
    m_channel.abandon(LineError::NotOpen);
    m_pin.clear();
    m_submission.stop();
    if (testing)
        Q_EMIT tested(false, failureRule(LineError::NotOpen).code, m_details,
                      u"the device was closed"_s);
}

void AtModem::fail(const ModemFailure &failure)
{
    const quint64 opening = m_opening;
    const bool testing = std::exchange(m_testing, false);
    shutDown();
    if (testing)
        Q_EMIT tested(false, failure.code, m_details, failure.text);
    // Whoever opened the modem anew on the news above is past this failure.
    if (m_opening == opening)
        Q_EMIT failed(failure);
}

} // namespace norvane
