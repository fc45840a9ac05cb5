#include "TovekSMService/modem/at/FakeModemLine.h"

namespace norvane {

Result<void, LineFailure> FakeModemLine::open(const QString &device, int baud)
{
    openedDevice = device;
    openedBaud = baud;
    ++openings;
    openedDevices.append(device);
    if (onOpen)
        onOpen();
    const std::optional<LineError> error =
        openErrors.contains(device) ? openErrors.value(device) : openError;
    if (error)
        return failed(LineFailure{*error, detail});
    m_open = true;
    ++m_opening;
    m_unplugged = false;
    m_input.clear();
    return {};
}

void FakeModemLine::close()
{
    m_open = false;
}

bool FakeModemLine::write(const QByteArray &bytes)
{
    if (!m_open || !writable)
        return false;
    for (const char byte : bytes) {
        if (breakAfterHeard == 0) {
            breakOff();
            return true;
        }
        if (breakAfterHeard > 0)
            --breakAfterHeard;
        hear(byte);
    }
    if (breakAfterHeard == 0)
        breakOff();
    return true;
}

void FakeModemLine::hear(char byte)
{
    if (silent || m_unplugged)
        return;
    if (echo)
        deliver(QByteArray(1, byte));
    if (byte == '\x1B') {
        ++escapes;
        m_input.clear();
        if (std::exchange(atPrompt, false))
            deliver("\r\nOK\r\n");
    } else if (atPrompt && byte == '\x1A') {
        atPrompt = false;
        payloads.append(std::exchange(m_input, QByteArray()));
        deliver(submitAnswer);
    } else if (!atPrompt && byte == '\r') {
        obey(std::exchange(m_input, QByteArray()));
    } else {
        m_input.append(byte);
    }
}

void FakeModemLine::obey(const QByteArray &command)
{
    if (command.isEmpty())
        return;
    commands.append(command);
    if (onCommand) {
        if (const std::optional<QByteArray> reply = onCommand(command)) {
            deliver(*reply);
            return;
        }
    }
    if (answers.contains(command)) {
        deliver(answers.value(command));
    } else if (command.startsWith("AT+CMGS=")) {
        atPrompt = !prompt.isEmpty();
        if (!promptHeldBack)
            deliver(prompt);
    } else {
        deliver("\r\nERROR\r\n");
    }
}

void FakeModemLine::say(const QByteArray &bytes)
{
    deliver(bytes);
}

void FakeModemLine::deliver(QByteArray bytes)
{
    if (m_unplugged)
        return;
    if (!betweenLines.isEmpty())
        bytes.replace("\r\n\r\n", "\r\n" + betweenLines + "\r\n\r\n");
    if (!betweenLines.isEmpty() && bytes.startsWith("\r\n"))
        bytes = betweenLines + bytes;
    if (interjectAfter >= 0) {
        const auto size = static_cast<int>(bytes.size());
        if (interjectAfter <= size)
            bytes.insert(interjectAfter, interjection);
        interjectAfter = interjectAfter <= size ? -1 : interjectAfter - size;
    }
    bool breaks = false;
    if (breakAfterSaid >= 0) {
        breaks = bytes.size() >= breakAfterSaid;
        bytes.truncate(breakAfterSaid);
        breakAfterSaid -= static_cast<int>(bytes.size());
    }
    const int step = pieceSize > 0 ? pieceSize : static_cast<int>(bytes.size());
    for (int at = 0; at < bytes.size(); at += step) {
        QMetaObject::invokeMethod(
            this,
            [this, piece = bytes.mid(at, step), opening = m_opening] {
                if (m_open && m_opening == opening)
                    Q_EMIT received(piece);
            },
            Qt::QueuedConnection);
    }
    if (breaks)
        breakOff();
}

void FakeModemLine::breakOff(LineError reason)
{
    breakAfterSaid = -1;
    breakAfterHeard = -1;
    m_unplugged = true;
    QMetaObject::invokeMethod(
        this,
        [this, reason, opening = m_opening] {
            if (!m_open || m_opening != opening)
                return;
            m_open = false;
            Q_EMIT broken({reason, detail});
        },
        Qt::QueuedConnection);
}

QByteArray FakeModemLine::info(const QByteArray &line)
{
    return "\r\n" + line + "\r\n\r\nOK\r\n";
}

QByteArray FakeModemLine::answer(const QByteArray &line)
{
    return "\r\n" + line + "\r\n";
}

void makeOrdinary(FakeModemLine &line)
{
    for (const char *command : {"AT", "ATE0", "ATV1", "AT+CMEE=1", "AT+CMGF=0", "AT+CSMS=0",
                                "AT+COPS=3,0", "AT+CNMI=2,1,0,2,0", "AT+CPMS=\"SM\"", "AT+CMGL=4"})
        line.answers.insert(command, FakeModemLine::answer("OK"));
    const std::pair<const char *, const char *> told[] = {
        {"AT+CPIN?", "+CPIN: READY"},
        {"AT+CPMS=?", "+CPMS: (\"SM\"),(\"SM\"),(\"SM\")"},
        {"AT+CNMI=?", "+CNMI: (0-2),(0-3),(0,2),(0-2),(0,1)"},
        {"AT+CGMI", "Norvane"},
        {"AT+CGMM", "Model 7"},
        {"AT+CGMR", "Revision 1.2"},
        {"AT+CGSN", "490154203237518"},
        {"AT^HWVER", "^HWVER:\"HW-3\""},
        {"AT+CCID", "+CCID: 8934071100275844103"},
        {"AT+COPS?", "+COPS: 0,0,\"Norvane Mobile\",2"},
        {"AT+CREG?", "+CREG: 0,1"},
        {"AT+CSQ", "+CSQ: 20,0"},
        {"AT+CBC", "+CBC: 0,80"},
        {"AT+CCLK?", "+CCLK: \"24/06/07,10:11:12+08\""},
        {"AT+CSCA?", "+CSCA: \"+34600000000\",145"},
    };
    for (const auto &[command, reply] : told)
        line.answers.insert(command, FakeModemLine::info(reply));
}

} // namespace norvane
