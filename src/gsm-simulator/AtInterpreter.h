#pragma once

#include "gsm-simulator/AtAnswer.h"
#include "gsm-simulator/ControlCommands.h"
#include "gsm-simulator/LineNoise.h"
#include "gsm-simulator/ModemState.h"
#include "gsm-simulator/PduDecoder.h"
#include "gsm-simulator/StatusWatch.h"

#include <chrono>
#include <optional>
#include <vector>

namespace norvane {

namespace simulator {

struct AcceptedMessage
{
    SubmittedPart part;
    int reference = 0;     ///< the number that +CMGS answers, 0 to 255
    bool linkKept = false; ///< the link to the network was still up from the message before
};

/// What became of some bytes.
struct Step
{
    QByteArray output;                     ///< what the modem says
    std::vector<AcceptedMessage> accepted; ///< to be recorded before `output` leaves
    std::chrono::milliseconds pause{0};    ///< if above 0: call resume() when it has passed
    bool unplugged = false;                ///< nothing more will come of this modem
};

/// The modem without its line: bytes in, bytes out. Nothing here waits or reads a clock; a delay
/// is a value that the caller lets pass.
class AtInterpreter
{
public:
    explicit AtInterpreter(const ModemSettings &settings);

    /// Takes bytes in any fragmentation. What arrives during a pause is kept for resume(), up to
    /// the size of a modem's buffer; what overruns it is lost.
    Step take(const QByteArray &bytes);

    /// The pause has passed: gives the answer and goes on with what has arrived meanwhile.
    Step resume();

    /// Lets the network deliver what is due. To be called at nextWake(), when nothing arrives
    /// before.
    Step wake();

    /// When the network or the modem has something to do next, or nothing.
    std::optional<QDateTime> nextWake() const;

    /// Runs a command of the simulator's own. What it leads to comes with the next step; wake() is
    /// one.
    ControlCommands::Outcome control(const QByteArray &line);

    bool isPaused() const { return m_pending.has_value(); }

    /// The next line that nobody asked for, or nothing while a command or a message is being
    /// written, when such a line has to wait.
    QByteArray unsolicitedLine();

private:
    enum class Reading { Command, Pdu, Text, Acknowledgement };

    /// A submission whose answer is still to come.
    struct Pending
    {
        AtAnswer answer;
        std::optional<SubmittedPart> part;
        bool fromNetwork = true; ///< false: refused by the modem itself, without delay
        bool linkKept = false;
    };

    void process(Step &step);
    void takeCommandByte(char byte, Step &step);
    void takeEntryByte(char byte, Step &step);
    void runLine(Step &step);
    AtAnswer run(const AtCommand &command);
    void openPrompt(Step &step);
    void closeEntry(Step &step);
    void closeAcknowledgement(Step &step);
    Pending judgeEntry();
    void finishSubmission(Step &step);
    void write(const QByteArrayList &lines, Step &step);
    void write(const AtAnswer &answer, Step &step);
    QByteArray finalText(const AtAnswer &answer) const;
    void disturb(Step &step);
    void receive(Step &step);
    bool isBeingWritten() const { return m_reading != Reading::Command || !m_line.isEmpty(); }
    QByteArray nextUnsolicited();

    ModemState m_modem;
    StatusWatch m_statusWatch;
    LineNoise m_noise;
    Reading m_reading = Reading::Command;
    QByteArray m_input;
    qsizetype m_position = 0;
    QByteArray m_line;
    QByteArray m_entry;
    bool m_overlong = false;
    std::optional<Pending> m_pending;
    int m_reference = 0;
    int m_submissions = 0;
    int m_acceptedCount = 0;
    int m_answeredLines = 0;
    std::size_t m_nextUnsolicited = 0;
    bool m_unplugged = false;
};

} // namespace simulator

} // namespace norvane
