#include "TovekSMService/modem/codec/IncomingPdu.h"
#include "gsm-simulator/AtInterpreter.h"
#include "gsm-simulator/DeliverRequest.h"
#include "gsm-simulator/ReceivedPdu.h"

#include "fuzz/FuzzTarget.h"

#include <algorithm>

namespace norvane {

// Any lines to the control of the simulated modem: each is answered in a line, the modem goes on,
// and what the network is told to deliver can be read.

namespace {

QDateTime now()
{
    return {QDate(2026, 3, 9), QTime(12, 0), Qt::OffsetFromUTC, 3600};
}

/// What the engine's reader makes of a message together.
QString textOf(const QByteArrayList &tpdus, const simulator::DeliverMessage &asked)
{
    QString text;
    int number = 0;
    for (const QByteArray &tpdu : tpdus) {
        const auto other = simulator::readReceived(tpdu);
        expectThat(std::holds_alternative<simulator::ReceivedPdu>(other),
                   "the simulated modem takes what the network sends");
        const auto part = parseDeliver("00" + tpdu.toHex());
        expectThat(part.has_value(), "what the network sends can be read");
        expectThat(part->sender == asked.sender.text, "the sender arrives");
        const std::optional<Concatenation> &place = part->concatenation;
        expectThat(place.has_value() == (tpdus.size() > 1 || asked.place), "a long message is one");
        if (place && !asked.place)
            expectThat(place->number == ++number && place->total == tpdus.size() &&
                           place->reference == asked.reference,
                       "the parts are counted from 1");
        text += part->text;
    }
    return text;
}

void checkDelivery(const QByteArray &json)
{
    const auto read = simulator::readDeliverRequest(json, now());
    const auto *request = std::get_if<simulator::DeliverRequest>(&read);
    if (request == nullptr)
        return;
    const simulator::DeliverMessage &message = request->message;
    const std::optional<QByteArrayList> tpdus = simulator::deliverTpdus(message);
    if (!tpdus)
        return;
    const QString text = textOf(*tpdus, message);
    const bool isPush =
        message.ports && (message.ports->destination == 2948 || message.ports->destination == 2949);
    if (isPush)
        return;
    const QString sent = message.coding == simulator::Coding::Octets
                             ? QString::fromLatin1(message.content.toHex().toUpper())
                             : message.text;
    expectThat(text == sent, "the text arrives");
}

simulator::ModemSettings settings()
{
    simulator::ModemSettings settings;
    settings.clock = now;
    return settings;
}

class Control
{
public:
    void run(const QByteArray &line)
    {
        const int before = waiting();
        const simulator::ControlCommands::Outcome outcome = m_modem.control(line);
        const QByteArray &answer = outcome.answer;
        expectThat(answer.size() < 200 && std::all_of(answer.begin(), answer.end(), isPrintable),
                   "an answer is one short line");
        const bool isGood = answer == "ok" || answer.startsWith("ok ");
        expectThat(isGood != answer.startsWith("error "), "an answer is good or bad");
        expectThat(outcome.isRefused != isGood, "a refusal is told so");
        expectThat(isGood || waiting() == before, "what is refused changes nothing");
        expectThat(outcome.unplugs == (isGood && line.trimmed() == "unplug"),
                   "the modem is taken away by that command alone");
        m_isUnplugged = m_isUnplugged || outcome.unplugs;
    }

    void end()
    {
        if (m_isUnplugged)
            return;
        expectThat(m_modem.take("ATV1Q0\r").output.endsWith("\r\nOK\r\n"),
                   "the modem still answers");
    }

private:
    static bool isPrintable(char c) { return c >= 0x20 && c <= 0x7E; }

    int waiting()
    {
        int sum = 0;
        for (const char *const lane : {"count messages", "count reports"})
            sum += m_modem.control(lane).answer.mid(3).toInt();
        return sum;
    }

    simulator::AtInterpreter m_modem{settings()};
    bool m_isUnplugged = false;
};

} // namespace

int LLVMFuzzerTestOneInput(const quint8 *data, std::size_t size)
{
    FuzzInput input(data, size);
    Control control;
    for (const QByteArray &line : input.takeRest().split('\n')) {
        control.run(line);
        if (line.startsWith("deliver "))
            checkDelivery(line.mid(8));
    }
    control.end();
    return 0;
}

} // namespace norvane
