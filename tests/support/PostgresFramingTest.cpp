#include "support/PostgresFraming.h"

#include <gtest/gtest.h>

#include <QtEndian>

namespace norvane {

using namespace Qt::StringLiterals;

namespace {

using Request = PostgresMessage::Request;
using Side = PostgresFraming::Side;

QByteArray numberBytes(quint32 number)
{
    const quint32 bigEndian = qToBigEndian(number);
    return {reinterpret_cast<const char *>(&bigEndian), sizeof bigEndian};
}

QByteArray requestBytes(quint32 code, const QByteArray &rest = {})
{
    return numberBytes(static_cast<quint32>(8 + rest.size())) + numberBytes(code) + rest;
}

QByteArray messageBytes(char type, const QByteArray &rest)
{
    return type + numberBytes(static_cast<quint32>(4 + rest.size())) + rest;
}

constexpr quint32 startUp = 196608;
constexpr quint32 cancel = 80877102;
constexpr quint32 encryptByTls = 80877103;
constexpr quint32 encryptByGss = 80877104;

} // namespace

TEST(PostgresFraming, messagesAreWholeHoweverTheBytesCome)
{
    const QList<QByteArray> parts{requestBytes(encryptByTls),
                                  requestBytes(startUp, "user\0one\0\0"_ba),
                                  messageBytes('Q', "SELECT 1\0"_ba), messageBytes('X', {})};
    const QByteArray bytes = parts.join();
    for (qsizetype size = 1; size <= bytes.size(); ++size) {
        PostgresFraming framing(Side::Client);
        QList<QByteArray> read;
        for (qsizetype start = 0; start < bytes.size(); start += size)
            for (const PostgresMessage &message : framing.read(bytes.mid(start, size)))
                read += message.bytes;
        EXPECT_EQ(read, parts) << size;
    }
}

TEST(PostgresFraming, aClientBeginsWithRequests)
{
    PostgresFraming framing(Side::Client);
    const QList<PostgresMessage> messages =
        framing.read(requestBytes(encryptByGss) + requestBytes(encryptByTls) +
                     requestBytes(startUp, "\0"_ba) + messageBytes('p', "secret\0"_ba));
    ASSERT_EQ(messages.size(), 4);
    EXPECT_EQ(messages[0].request(), Request::Encrypt);
    EXPECT_EQ(messages[1].request(), Request::Encrypt);
    EXPECT_EQ(messages[2].request(), Request::StartUp);
    EXPECT_EQ(messages[3].request(), Request::None);
    EXPECT_EQ(messages[3].type, 'p');
    EXPECT_EQ(PostgresFraming(Side::Client).read(requestBytes(cancel, "12345678"_ba))[0].request(),
              Request::Cancel);
}

TEST(PostgresFraming, aServerHasMessagesOnly)
{
    const QList<PostgresMessage> messages =
        PostgresFraming(Side::Server)
            .read(messageBytes('C', "COMMIT\0"_ba) + messageBytes('Z', "I"_ba) + "Z"_ba);
    ASSERT_EQ(messages.size(), 2);
    EXPECT_FALSE(messages[0].isReady());
    EXPECT_TRUE(messages[1].isReady());
}

TEST(PostgresFraming, aServerAnswersQueriesAndSynchronisations)
{
    for (const char type : {'Q', 'S', 'F'})
        EXPECT_TRUE((PostgresMessage{type, {}}.isAnswered())) << type;
    for (const char type : {'P', 'B', 'D', 'E', 'X', 'H'})
        EXPECT_FALSE((PostgresMessage{type, {}}.isAnswered())) << type;
}

} // namespace norvane
