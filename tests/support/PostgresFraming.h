#pragma once

#include <QByteArray>
#include <QList>

namespace norvane {

/// A message of PostgreSQL's protocol as it is on the wire.
struct PostgresMessage
{
    /// What a client may say before it says who it is, and that.
    enum class Request { None, StartUp, Cancel, Encrypt };

    char type = 0; ///< 0 for a request
    QByteArray bytes;

    Request request() const;
    /// True when the server ends its answer to this message by being ready for the next query.
    bool isAnswered() const { return type == 'Q' || type == 'S' || type == 'F'; }
    /// True for the end of an answer.
    bool isReady() const { return type == 'Z'; }
};

/// Cuts what one side of a connection says into messages, version 3 of the protocol.
class PostgresFraming
{
public:
    enum class Side { Client, Server };

    /// A client begins with requests, which have no type.
    explicit PostgresFraming(Side side) : m_isStarting(side == Side::Client) {}

    /// @param bytes  that follow those of the last call
    /// @return the messages that are complete with them
    QList<PostgresMessage> read(const QByteArray &bytes);

private:
    bool m_isStarting;
    QByteArray m_rest;
};

} // namespace norvane
