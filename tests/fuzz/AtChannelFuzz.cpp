#include "TovekSMService/modem/at/AtChannel.h"

#include "fuzz/FuzzTarget.h"

#include <QCoreApplication>

namespace norvane {

// The talk with a device that says anything at any time, on a line that breaks at any time.

namespace {

/// A line whose other end is the input.
class FuzzedLine : public SerialLine
{
public:
    Result<void, LineFailure> open(const QString &, int) override { return {}; }
    void close() override { isUp = false; }
    bool isOpen() const override { return isUp; }
    bool write(const QByteArray &bytes) override
    {
        if (!writable)
            return false;
        written += bytes;
        return true;
    }

    bool isUp = true;
    bool writable = true;
    QByteArray written;
};

ModemTimings noTime()
{
    ModemTimings timings;
    timings.commandMs = timings.slowCommandMs = timings.probeMs = 0;
    timings.quietMs = timings.drainMs = timings.promptMs = timings.sendMs = 0;
    return timings;
}

class Talk
{
public:
    Talk() : m_channel(&m_line, noTime())
    {
        QObject::connect(&m_channel, &AtChannel::broken, &m_channel,
                         [this](const LineFailure &) { m_line.isUp = true; });
    }

    void step(FuzzInput &input)
    {
        switch (input.takeNumber(12)) {
        case 0:
            run({input.takeByte() % 2 == 0 ? QByteArray("AT+CSQ") : QByteArray("AT+CPIN?"), 0});
            break;
        case 1:
        case 2:
            submit();
            break;
        case 3:
            synchronise(input.takeNumber(4));
            break;
        case 4:
            m_channel.abandon(LineError::Unplugged);
            expectThat(m_channel.isIdle(), "nothing is in progress after it was abandoned");
            break;
        case 5:
            Q_EMIT m_line.broken({LineError::Unplugged, {}});
            break;
        case 6:
            m_line.writable = !m_line.writable;
            break;
        case 7:
            QCoreApplication::processEvents(); // all time limits pass
            break;
        case 8:
            say("\r\n> ");
            break;
        default:
            say(input.takeBytes(8192));
        }
    }

    void end()
    {
        m_channel.abandon(LineError::Other);
        expectThat(m_open == 0, "every command is answered once");
    }

private:
    static constexpr char payload[] = "0001000781214365F7000005E8329BFD06";
    static constexpr char endOfPayload = 0x1A;

    void say(const QByteArray &bytes)
    {
        Q_EMIT m_line.received(bytes);
        expectThat(m_line.written.count(endOfPayload) <= m_submissions,
                   "a payload leaves once at most");
        if (m_channel.isIdle())
            expectThat(m_open == 0, "an idle channel owes no answer");
    }

    AtChannel::Answered answered()
    {
        ++m_open;
        return [this, told = false](const AtAnswer &answer) mutable {
            expectThat(!std::exchange(told, true), "a command is answered once at most");
            --m_open;
            expectThat(answer.lines.size() <= AtChannel::maxLines, "an answer has most lines");
            const bool left = m_line.written.contains(endOfPayload);
            expectThat(answer.payloadLeft || !left, "a payload that left is told of");
        };
    }

    void run(const AtCommand &command)
    {
        if (!m_channel.isIdle())
            return;
        m_line.written.clear();
        m_submissions = 0;
        m_channel.run(command, answered());
    }

    void submit()
    {
        if (!m_channel.isIdle())
            return;
        m_line.written.clear();
        m_submissions = 1;
        m_channel.submit({"AT+CMGS=16", 0}, payload, 0, answered());
    }

    void synchronise(int tries)
    {
        if (!m_channel.isIdle())
            return;
        m_line.written.clear();
        m_submissions = 0;
        ++m_open;
        m_channel.synchronise(tries, [this](SyncOutcome) { --m_open; });
    }

    FuzzedLine m_line;
    AtChannel m_channel;
    int m_open = 0;
    int m_submissions = 0;
};

} // namespace

int LLVMFuzzerTestOneInput(const quint8 *data, std::size_t size)
{
    FuzzInput input(data, size);
    Talk talk;
    while (!input.atEnd())
        talk.step(input);
    talk.end();
    return 0;
}

} // namespace norvane
