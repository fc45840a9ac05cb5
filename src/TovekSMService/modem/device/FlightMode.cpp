#include "TovekSMService/modem/device/FlightMode.h"

#include "TovekSMService/log/Categories.h"
#include "TovekSMService/modem/codec/AnswerParsers.h"

#include <utility>

namespace norvane {

using namespace Qt::StringLiterals;

namespace {

constexpr int minimumFunctionality = 0;
constexpr int radioOff = 4;

} // namespace

FlightMode::FlightMode(AtDialogue &dialogue, const ModemTimings &timings, TimeSource &time)
    : m_dialogue(dialogue), m_timings(timings), m_poll(time), m_deadline(time)
{
    QObject::connect(&m_poll, &Timer::timeout, &m_poll, [this] { look(); });
}

void FlightMode::leave(Done done)
{
    m_wasLeft = false;
    m_done = std::move(done);
    m_dialogue.ask({"AT+CFUN?"_ba, m_timings.commandMs, {}}, [this](const AtAnswer &answer) {
        const int level = answer.isOk() ? AnswerParsers::functionality(answer.lines) : -1;
        if (level == minimumFunctionality || level == radioOff)
            switchOn();
        else
            finish();
    });
}

void FlightMode::switchOn()
{
    m_dialogue.ask({"AT+CFUN=1"_ba, m_timings.slowCommandMs, {}}, [this](const AtAnswer &answer) {
        // A device without an answer may have begun to start all the same.
        m_wasLeft = answer.isOk() || answer.end == AtAnswer::End::TimedOut;
        if (m_wasLeft)
            qCInfo(logDevice) << "the device was in flight mode and has been switched on";
        else
            qCWarning(logDevice) << "the device refuses to leave its flight mode:"
                                 << answer.result.text;
        finish();
    });
}

void FlightMode::awaitNetwork(Done done)
{
    m_done = std::move(done);
    m_deadline.setRemainingTime(m_timings.networkReadyMs);
    if (m_wasLeft)
        look();
    else
        finish();
}

void FlightMode::look()
{
    ask("AT+CREG?"_ba, "+CREG"_ba,
        [this] { ask("AT+CEREG?"_ba, "+CEREG"_ba, [this] { retryLater(); }); });
}

void FlightMode::ask(const QByteArray &command, const QByteArray &tag, const Done &otherwise)
{
    m_dialogue.ask(
        {command, m_timings.commandMs, {}}, [this, tag, otherwise](const AtAnswer &answer) {
            if (answer.isOk() &&
                AnswerParsers::isRegistered(AnswerParsers::registration(answer.lines, tag)))
                finish();
            else
                otherwise();
        });
}

/// A network that doesn't come is no failure here: what becomes of the messages is told with them.
void FlightMode::retryLater()
{
    if (m_deadline.hasExpired())
        finish();
    else
        m_poll.start(m_timings.networkPollMs);
}

void FlightMode::stop()
{
    m_poll.stop();
    m_done = nullptr;
}

void FlightMode::finish()
{
    if (const Done done = std::exchange(m_done, nullptr))
        done();
}

} // namespace norvane
