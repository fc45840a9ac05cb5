#pragma once

#include "TovekSMService/modem/codec/AtReader.h"

#include <QByteArray>

namespace norvane {

/// Logs what goes over a line, under "engine.at" at debug level: "-> AT", "<- OK".
///
/// What a line means is lost when a device cuts it in two, so lines of the device are masked
/// strictly from a secret or a message on, until the device has answered for everything that it had
/// been sent by then. Bytes stay in their order: an echo comes before the answer.
class AtTrace
{
public:
    /// @param owed  final results that are to come, that of this command included
    void sent(const QByteArray &command, int owed);
    /// @param owed  as above, that of the command which asked for the payload included
    void sentPayload(int owed);
    void sentEscape();
    /// @param owed  final results that were to come before this one
    void received(const AtToken &token, int owed);
    /// What isn't a line.
    void note(const char *what);

private:
    void maskStrictlyFor(int finals);

    /// So many final results from now on, lines are masked strictly.
    int m_strictFinals = 0;
};

} // namespace norvane
