#include "TovekSMService/modem/device/SimUnlock.h"

#include "TovekSMService/modem/codec/AnswerParsers.h"
#include "TovekSMService/modem/device/DeviceQueries.h"
#include "TovekSMService/modem/device/PinText.h"
#include "contract/ErrorCodes.h"

#include <memory>
#include <utility>

namespace norvane {

using namespace Qt::StringLiterals;

namespace {

/// Numbers of +CME ERROR (3GPP TS 27.007, 9.2) on which this step branches.
enum Cme {
    NotSupported = 4,
    SimNotInserted = 10,
    SimPinRequired = 11,
    SimPukRequired = 12,
    SimFailure = 13,
    SimBusy = 14,
    SimWrong = 15,
    IncorrectPassword = 16,
    SimPin2Required = 17,
    SimPuk2Required = 18,
    FirstPersonalisation = 40,
    LastPersonalisation = 48,
};

SimState stateOfError(const AtResult &result)
{
    if (result.kind == AtResult::Kind::NotSupported)
        return SimState::Unknown;
    const int number = failureNumber(result);
    switch (number) {
    case NotSupported:
        return SimState::Unknown;
    case SimNotInserted:
        return SimState::NotInserted;
    case SimPinRequired:
        return SimState::Pin;
    case SimPukRequired:
        return SimState::Puk;
    case SimWrong:
        return SimState::Failed;
    case SimPin2Required:
        return SimState::Pin2;
    case SimPuk2Required:
        return SimState::Puk2;
    case 5:
    case 6:
    case 7:
        return SimState::DeviceLocked;
    default:
        return number >= FirstPersonalisation && number <= LastPersonalisation
                   ? SimState::DeviceLocked
                   : SimState::Busy;
    }
}

} // namespace

SimState simState(const AtAnswer &answer)
{
    if (answer.end != AtAnswer::End::Final)
        return SimState::Busy;
    if (!answer.isOk())
        return stateOfError(answer.result);

    static const std::pair<QByteArrayView, SimState> states[] = {
        {"READY", SimState::Ready},
        {"SIM PIN", SimState::Pin},
        {"SIM PUK", SimState::Puk},
        {"SIM PIN2", SimState::Pin2},
        {"SIM PUK2", SimState::Puk2},
        {"NOT INSERTED", SimState::NotInserted},
        {"SIM REMOVED", SimState::NotInserted},
        {"NOT READY", SimState::Busy},
        {"SIM BUSY", SimState::Busy},
        {"", SimState::Busy}};
    const QByteArray told = AnswerParsers::pinState(answer.lines);
    for (const auto &[name, state] : states)
        if (told == name)
            return state;
    return told.startsWith("PH-") ? SimState::DeviceLocked : SimState::Unexpected;
}

SimUnlock::SimUnlock(AtDialogue &dialogue, PinGate &gate, const ModemTimings &timings,
                     std::function<void()> pinResolved, TimeSource &time)
    : m_dialogue(dialogue), m_gate(gate), m_timings(timings), m_pinResolved(std::move(pinResolved)),
      m_poll(time), m_deadline(time)
{
    QObject::connect(&m_poll, &Timer::timeout, &m_poll, [this] { look(); });
}

void SimUnlock::start(const QString &pin, DeviceDetails *details, Finished finished,
                      SimPresence presence)
{
    m_presence = presence;
    m_pin = pin.trimmed();
    m_iccid.clear();
    m_details = details;
    m_finished = std::move(finished);
    m_attempted = false;
    m_deadline.setRemainingTime(m_timings.simReadyMs);
    look();
}

void SimUnlock::stop()
{
    m_poll.stop();
    m_finished = nullptr;
    m_awaitsPinOutcome = false;
}

void SimUnlock::look()
{
    m_dialogue.ask({"AT+CPIN?"_ba, m_timings.commandMs, {}}, [this](const AtAnswer &answer) {
        if (m_attempted && failureNumber(answer.result) == IncorrectPassword)
            refuse(ErrorCode::incorrectPassword, u"the SIM refuses the PIN"_s);
        else
            onState(simState(answer));
    });
}

void SimUnlock::onState(SimState state)
{
    switch (state) {
    case SimState::Ready:
        if (m_attempted)
            noteAccepted();
        finish({});
        return;
    case SimState::Unknown:
        finish({});
        return;
    case SimState::Pin:
        onPinAsked();
        return;
    case SimState::Puk:
        refuse(ErrorCode::simPukRequired, u"the SIM asks for its PUK"_s);
        return;
    case SimState::Pin2:
        fail({ErrorCode::simPin2Required, u"the SIM asks for its PIN2"_s, true});
        return;
    case SimState::Puk2:
        fail({ErrorCode::simPuk2Required, u"the SIM asks for its PUK2"_s, true});
        return;
    case SimState::DeviceLocked:
        fail({ErrorCode::phoneSecurity, u"the device is locked by a code of its own"_s, true});
        return;
    case SimState::NotInserted:
        onNotInserted();
        return;
    case SimState::Failed:
        fail({ErrorCode::simCommunication, u"the device rejects the SIM"_s, false});
        return;
    case SimState::Unexpected:
        fail({ErrorCode::unexpectedAnswer, u"unknown state of the SIM"_s, false});
        return;
    case SimState::Busy:
        retryLater(ErrorCode::simCommunication, u"the SIM isn't ready"_s);
        return;
    }
}

void SimUnlock::onNotInserted()
{
    const QString text = u"no SIM is inserted"_s;
    if (m_presence == SimPresence::JustPowered)
        retryLater(ErrorCode::simNotInserted, text);
    else
        fail({ErrorCode::simNotInserted, text, false});
}

void SimUnlock::retryLater(int code, const QString &text)
{
    if (m_deadline.hasExpired())
        fail({code, text, false});
    else
        m_poll.start(m_timings.simPollMs);
}

void SimUnlock::onPinAsked()
{
    if (m_attempted && !m_deadline.hasExpired()) {
        m_poll.start(m_timings.simPollMs); // the device may be slow to say that the PIN was right
    } else if (m_attempted) {
        refuse(ErrorCode::incorrectPassword, u"the SIM doesn't take the PIN"_s);
    } else if (m_pin.isEmpty()) {
        fail({ErrorCode::simPinRequired, u"the SIM asks for a PIN and none is set"_s, true});
    } else if (!isPin(m_pin)) {
        fail({ErrorCode::incorrectPassword, u"the PIN isn't 4 to 8 digits"_s, true});
    } else {
        identify();
    }
}

/// Which SIM it is must be certain: under another name a refused PIN would be tried again.
void SimUnlock::identify()
{
    m_numberUncertain = false;
    QList<AtDialogue::Question> questions = DeviceQueries::iccid(&m_iccid, m_timings);
    for (AtDialogue::Question &question : questions) {
        question.optional = false;
        question.take = [this, take = question.take](const AtAnswer &answer) {
            const int number = failureNumber(answer.result);
            if (answer.end == AtAnswer::End::TimedOut || number == SimBusy || number == SimFailure)
                m_numberUncertain = true;
            return take(answer);
        };
    }
    QList<AtDialogue::Question> imei = DeviceQueries::imei(m_details, m_timings);
    for (AtDialogue::Question &question : imei)
        question.optional = false;
    m_dialogue.askAll(questions + imei, [this](const ModemResult &) { onIdentified(); });
}

void SimUnlock::onIdentified()
{
    const bool uncertain = m_iccid.isEmpty() && (m_numberUncertain || m_details->imei.isEmpty());
    if (uncertain)
        retryLater(ErrorCode::simCommunication,
                   u"neither the SIM nor the device tells its number"_s);
    else
        askTries();
}

void SimUnlock::askTries()
{
    const auto tries = std::make_shared<std::optional<int>>();
    const auto take = [tries](const AtAnswer &answer) {
        *tries = AnswerParsers::pinTries(answer.lines);
        return ModemResult();
    };
    const int limit = m_timings.commandMs;
    m_dialogue.askAll(
        {{{"AT+CPINR=\"SIM PIN\""_ba, limit, {}}, take, {}, true},
         {{"AT^CPIN?"_ba, limit, {}}, take, [tries] { return !tries->has_value(); }, true}},
        [this, tries](const ModemResult &) { decide(*tries); });
}

void SimUnlock::decide(std::optional<int> triesLeft)
{
    switch (m_gate.mayTry(sim(), m_pin, triesLeft)) {
    case PinGate::Decision::Try:
        tryPin();
        return;
    case PinGate::Decision::AlreadyTried:
        fail({ErrorCode::incorrectPassword,
              u"this PIN was tried on this SIM before and not accepted"_s, true});
        return;
    case PinGate::Decision::TooFewTries:
        fail({ErrorCode::simPinRequired, u"the SIM has too few tries left to try a PIN on it"_s,
              true});
        return;
    case PinGate::Decision::NotRecorded:
        fail({ErrorCode::simPinRequired,
              u"the attempt can't be put on record, so the PIN isn't tried"_s, false});
        return;
    }
}

void SimUnlock::tryPin()
{
    m_attempted = true;
    m_awaitsPinOutcome = true;
    const QByteArray command = "AT+CPIN=\"" + m_pin.toLatin1() + '"';
    m_dialogue.ask({command, m_timings.slowCommandMs, {}},
                   [this](const AtAnswer &answer) { onPinAnswer(answer); });
}

void SimUnlock::onPinAnswer(const AtAnswer &answer)
{
    m_deadline.setRemainingTime(m_timings.simReadyMs);
    if (answer.end == AtAnswer::End::Final && !answer.isOk()) {
        const int number = failureNumber(answer.result);
        if (number == IncorrectPassword) {
            refuse(ErrorCode::incorrectPassword, u"the SIM refuses the PIN"_s);
            return;
        }
        if (number == SimPukRequired) {
            refuse(ErrorCode::simPukRequired, u"the SIM refuses the PIN and asks for its PUK"_s);
            return;
        }
    }
    // An OK alone proves nothing: it may be the late answer to something else. The state that the
    // SIM is in now tells what became of the PIN.
    look();
}

void SimUnlock::noteAccepted()
{
    m_attempted = false;
    m_awaitsPinOutcome = false;
    m_gate.accepted(sim(), m_pin);
    m_pinResolved();
}

void SimUnlock::refuse(int code, const QString &text)
{
    if (m_attempted)
        m_gate.refused(sim(), m_pin);
    fail({code, text, true});
}

void SimUnlock::finish(const ModemResult &unlocked)
{
    m_pin.clear();
    m_awaitsPinOutcome = false;
    if (const Finished finished = std::exchange(m_finished, nullptr))
        finished(unlocked);
}

void SimUnlock::fail(const ModemFailure &failure)
{
    finish(failed(failure));
}

SimIdentity SimUnlock::sim() const
{
    return {m_iccid, m_details->imei};
}

} // namespace norvane
