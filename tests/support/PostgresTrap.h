#pragma once

#include <QByteArray>

namespace norvane {

/// What a proxy does when a client has come to a certain message.
struct PostgresTrap
{
    enum class Moment {
        BeforeMessage, ///< the server doesn't get it
        AfterMessage,  ///< the server has carried it out, and the client doesn't get the answer
        AfterAnswer,   ///< the client has got the answer
    };
    enum class Act {
        Cut,  ///< the connection
        Hold, ///< everything, as PostgresProxy::hold()
        /// What this client says from there on, even behind its end, until the trap is cleared.
        /// Other connections go on.
        HoldClient
    };

    /// Which one: clients' messages are counted from setTrap(), over all connections. A query of
    /// its own is one message. A statement with parameters is five, from Parse to Sync, and its
    /// answer comes to the last of them.
    int message = 1;
    /// Where this isn't empty, only messages with these bytes are counted.
    QByteArray containing = {};
    Moment moment = Moment::BeforeMessage;
    Act act = Act::Cut;
};

} // namespace norvane
