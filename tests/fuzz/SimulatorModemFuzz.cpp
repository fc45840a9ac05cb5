#include "gsm-simulator/AtInterpreter.h"

#include "fuzz/FuzzTarget.h"

namespace norvane {

// Any bytes to the simulated modem, in any pieces and under any of its settings: it goes on
// answering.

namespace {

simulator::ModemSettings settingsOf(FuzzInput &input)
{
    const int flags = input.takeByte();
    simulator::ModemSettings settings;
    settings.pin = (flags & 1) != 0 ? QByteArray("1234") : QByteArray();
    settings.noise = (flags & 2) != 0;
    settings.unsolicited = (flags & 4) != 0;
    settings.latency = std::chrono::milliseconds((flags & 8) != 0 ? 100 : 0);
    settings.failEvery = (flags & 16) != 0 ? 2 : 0;
    settings.formats = static_cast<simulator::Formats>((flags >> 5) % 3);
    settings.clock = [] { return QDateTime(QDate(2026, 3, 9), QTime(9, 0), Qt::UTC); };
    return settings;
}

class Talk
{
public:
    explicit Talk(const simulator::ModemSettings &settings) : m_modem(settings) {}

    void say(const QByteArray &bytes)
    {
        check(m_modem.take(bytes), bytes.size());
        if (!m_modem.isPaused())
            expectThat(m_modem.unsolicitedLine().size() < 100, "an unsolicited line is short");
    }

    void resume() { check(m_modem.resume(), 16384); }

    void end()
    {
        while (m_modem.isPaused())
            resume();
        // The line that was begun may be one that opens a prompt.
        say("\r\x1B\r");
        say("ATZ\r");
        expectThat(m_modem.take("AT\r").output.endsWith("\r\nOK\r\n"), "the modem still answers");
    }

private:
    void check(const simulator::Step &step, qsizetype bytes)
    {
        // The longest answer, to +CLAC, is under a kilobyte, for a command of six characters; a
        // line that came before may end now.
        expectThat(step.output.size() <= (bytes + 2048) * 256, "answers have a length");
        for (const simulator::AcceptedMessage &message : step.accepted) {
            expectThat(message.reference == m_nextReference, "references are counted");
            m_nextReference = (m_nextReference + 1) % 256;
            expectThat(message.part.text.size() <= 160, "a part has 160 characters at most");
        }
        expectThat(step.pause.count() == 0 || m_modem.isPaused(), "a pause is a pause");
    }

    simulator::AtInterpreter m_modem;
    int m_nextReference = 0;
};

} // namespace

int LLVMFuzzerTestOneInput(const quint8 *data, std::size_t size)
{
    FuzzInput input(data, size);
    Talk talk(settingsOf(input));
    const int pieceSize = 1 + input.takeNumber(64);
    const QByteArray bytes = input.takeRest();
    for (qsizetype i = 0; i < bytes.size(); i += pieceSize) {
        const QByteArray piece = bytes.mid(i, pieceSize);
        talk.say(piece);
        if (piece.contains('#'))
            talk.resume();
    }
    talk.end();
    return 0;
}

} // namespace norvane
