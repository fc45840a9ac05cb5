#pragma once

#include "TovekSMService/modem/at/AtTrace.h"
#include "TovekSMService/modem/at/ModemTimings.h"
#include "TovekSMService/modem/at/SerialLine.h"
#include "TovekSMService/modem/codec/AtReader.h"
#include "TovekSMService/time/Timer.h"

#include <QObject>

#include <functional>

namespace norvane {

/// A command as it goes to the device.
struct AtCommand
{
    /// Without carriage return.
    QByteArray text;
    int limitMs = 5000;
    /// Names other than the command's own that its answer may carry, without colon.
    QList<QByteArray> prefixes = {};
};

/// What became of a command.
struct AtAnswer
{
    enum class End { Final, TimedOut, LineBroken };

    End end = End::Final;
    AtResult result;
    QList<QByteArray> lines;
    /// For a submission: the payload has left.
    bool payloadLeft = false;
    /// For `LineBroken`.
    LineFailure lineFailure;

    bool isOk() const { return end == End::Final && result.kind == AtResult::Kind::Ok; }
};

/// What became of an attempt to find the device in command mode.
enum class SyncOutcome {
    Answered,
    Refused, ///< it answers, but never with OK
    Garbage, ///< it says something, but nothing that is an answer
    Silent,  ///< nothing came
    LineBroken,
};

/// The talk with a device over a line: one command at a time, with a time limit, its answer handed
/// to a function. That function may start the next command.
class AtChannel : public QObject
{
    Q_OBJECT

public:
    using Answered = std::function<void(const AtAnswer &)>;
    using Synchronised = std::function<void(SyncOutcome)>;

    /// Lines of an answer beyond this number are dropped.
    static constexpr int maxLines = 256;

    /// @param time  must outlive this object
    AtChannel(SerialLine *line, const ModemTimings &timings,
              TimeSource &time = TimeSource::system(), QObject *parent = nullptr);

    bool isIdle() const { return m_step == Step::Idle; }

    void run(const AtCommand &command, Answered answered);

    /// A command that asks for a payload. The payload and its end mark leave when the prompt has
    /// come within the time limit of the command, and not otherwise.
    /// @param answerMs for the final result after the payload
    void submit(const AtCommand &command, const QByteArray &payload, int answerMs,
                Answered answered);

    /// Brings a device of unknown state into command mode: gives up a prompt that may be open (with
    /// ESC, never with the mark that sends), waits until the device is still, tries "AT", and waits
    /// for stillness again, so that no late answer is taken for the next command's. A device that
    /// refuses the bare "AT" is asked once more with "ATE0" (ITU-T V.250, 6.2.4), as some know no
    /// command line without a command.
    void synchronise(int tries, Synchronised synchronised);

    /// Ends the command in progress as if the line had broken, without the signal, and forgets
    /// what was read.
    void abandon(LineError reason);

Q_SIGNALS:
    /// A line that the device sent by itself.
    void unsolicited(const QByteArray &line);
    /// Comes after the command in progress has been answered with `LineBroken`.
    void broken(const LineFailure &failure);

private:
    enum class Step {
        Idle,
        AwaitingFinal,
        AwaitingPrompt,
        Draining,
        Probing,
        Settling,
    };

    void begin(const AtCommand &command, Step step);
    void onReceived(const QByteArray &bytes);
    void onBroken(const LineFailure &failure);
    void endCommand(const LineFailure &failure);
    void onLimit();
    void onQuiet();
    void take(const AtToken &token);
    void takeFinal(const AtResult &result);
    void sendPayload();
    void write(const QByteArray &bytes);
    void enter(Step step);
    void finish(AtAnswer::End end);

    void giveUpPrompt();
    void leavePrompt();
    void startTry();
    void probe(const QByteArray &command);
    void onProbed(const AtResult &result);
    void complete();
    void endSync(SyncOutcome outcome);
    bool isSynchronising() const;

    SerialLine *m_line;
    const ModemTimings m_timings;
    AtReader m_reader;
    AtTrace m_trace;
    Timer m_limit;
    Timer m_quiet;

    Step m_step = Step::Idle;
    /// Counts the steps, so that news of a failed write can be told from a later step's.
    quint64 m_stepNumber = 0;
    Answered m_answered;
    AtAnswer m_answer;
    QByteArray m_payload;
    int m_payloadAnswerMs = 0;

    Synchronised m_synchronised;
    int m_triesLeft = 0;
    int m_promptsLeft = 0;
    /// Final results that are still to come, of commands that were not waited for to the end.
    int m_owed = 0;
    bool m_hasOutput = false;
    bool m_refused = false;
    bool m_echoProbed = false; ///< in the present try
};

} // namespace norvane
