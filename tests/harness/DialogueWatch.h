#pragma once

#include <QByteArray>
#include <QList>

namespace norvane {

enum class From { Engine, Device };

/// The stages of handing a part to the device.
enum class Stage {
    Outside, ///< nothing of a submission
    Command, ///< AT+CMGS=n and its carriage return
    Prompt,  ///< what the device says up to "> "
    Payload, ///< the part and Ctrl-Z
    Answer,  ///< what the device says up to its final result
};

/// Where a byte stands in the talk.
struct Place
{
    Stage stage = Stage::Outside;
    int offset = 0;             ///< in its stage
    int submission = 0;         ///< counted from 0 since the last begin()
    bool isLast = false;        ///< of its stage
    bool endsReference = false; ///< ends the line "+CMGS: n"
    char byte = 0;
    QByteArray payload; ///< whole, without Ctrl-Z, at the last byte of the payload
    From from = From::Engine;
};

/// Follows the talk of an engine with a device, and tells where each byte stands in it.
class DialogueWatch
{
public:
    /// Counts submissions from 0 again.
    void begin() { m_submission = -1; }

    /// @param bytes  as they were read at once; a command is known by its beginning in one reading
    QList<Place> read(From from, const QByteArray &bytes);

    /// The line was cut, or the engine has ended: what comes is the beginning of something else.
    void forget() { enter(Stage::Outside); }

private:
    Place placeOf(From from, char byte);
    Place placeOfAnswer(char byte);
    void enter(Stage stage);

    Stage m_stage = Stage::Outside;
    int m_offset = 0;
    int m_submission = -1;
    QByteArray m_payload;
    QByteArray m_line;
};

} // namespace norvane
