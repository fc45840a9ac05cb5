#pragma once

#include "TovekSMService/store/SentParts.h"

#include <QString>

#include <optional>

namespace norvane {

/// What became of a message of which a part was leaving.
struct Settlement
{
    enum class Fate {
        Sent,      ///< the device has taken its last part
        PartTaken, ///< the device has taken a part, and others follow
        Failed,
        Postponed, ///< to the next attempt
        MadeWay,   ///< for others; the device refuses it, for its own sake or the message's
        Returned,  ///< the part did not leave
    };

    qint64 message = 0;
    Fate fate = Fate::Returned;
    qint64 epoch = 0; ///< in which the part began to leave; 0 for the present one
    QString phone;
    QString text;
    qint32 code = 0;                     ///< of a failure, or of an attempt that failed
    std::optional<int> networkReference; ///< of the last part of one that was sent
    QString at;                          ///< "yyyy-MM-ddTHH:mm:ss"
    /// With a part that was taken; of one that was sent, before its last part; of one that is sent
    /// later, so far.
    int partsSent = 0;
    int attempts = 0;
    QString nextAttempt;
    std::optional<SentPart> part; ///< that was taken, if the network will report about it
};

} // namespace norvane
