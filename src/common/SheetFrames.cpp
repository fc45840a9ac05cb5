#include "common/SheetFrames.h"

#include <QDataStream>
#include <QIODevice>
#include <QtEndian>

namespace norvane {

namespace SheetFrames {
namespace {

constexpr auto version = QDataStream::Qt_6_4;

enum class Kind : quint8 { Answer, Failure };

Reply takeFailure(QDataStream &stream)
{
    qint32 number = 0;
    QString source;
    QString description;
    stream >> number >> source >> description;
    return failed(NumberedFailure(number, source, description));
}

Reply takeAnswer(QDataStream &stream)
{
    Answer answer;
    quint32 count = 0;
    stream >> answer.names >> answer.rows >> count;
    for (; count > 0 && stream.status() == QDataStream::Ok; --count) {
        bool given = false;
        QString value;
        stream >> given >> value;
        answer.values.append(given ? std::optional(value) : std::nullopt);
    }
    return answer;
}

} // namespace

QByteArray framed(const QByteArray &body)
{
    QByteArray frame(sizeof(quint32), Qt::Uninitialized);
    qToBigEndian(static_cast<quint32>(body.size()), frame.data());
    return frame + body;
}

quint32 bodyLength(QByteArrayView fourBytes)
{
    return qFromBigEndian<quint32>(fourBytes.data());
}

QByteArray encode(const Question &question)
{
    QByteArray body;
    QDataStream stream(&body, QIODevice::WriteOnly);
    stream.setVersion(version);
    stream << static_cast<quint8>(question.operation) << question.name << question.field
           << question.first;
    return body;
}

QByteArray encode(const Reply &reply)
{
    QByteArray body;
    QDataStream stream(&body, QIODevice::WriteOnly);
    stream.setVersion(version);
    if (!reply) {
        const NumberedFailure &failure = reply.error();
        stream << static_cast<quint8>(Kind::Failure) << failure.number() << failure.source()
               << failure.description();
        return body;
    }
    stream << static_cast<quint8>(Kind::Answer) << reply->names << reply->rows
           << static_cast<quint32>(reply->values.size());
    for (const std::optional<QString> &value : reply->values)
        stream << value.has_value() << value.value_or(QString());
    return body;
}

std::optional<Question> decodeQuestion(const QByteArray &body)
{
    QDataStream stream(body);
    stream.setVersion(version);
    quint8 operation = 0;
    Question question;
    stream >> operation >> question.name >> question.field >> question.first;
    if (stream.status() != QDataStream::Ok || operation > static_cast<quint8>(Operation::Values))
        return std::nullopt;
    question.operation = static_cast<Operation>(operation);
    return question;
}

std::optional<Reply> decodeReply(const QByteArray &body)
{
    QDataStream stream(body);
    stream.setVersion(version);
    quint8 kind = 0;
    stream >> kind;
    Reply reply =
        kind == static_cast<quint8>(Kind::Failure) ? takeFailure(stream) : takeAnswer(stream);
    if (stream.status() != QDataStream::Ok)
        return std::nullopt;
    return reply;
}

} // namespace SheetFrames

} // namespace norvane
