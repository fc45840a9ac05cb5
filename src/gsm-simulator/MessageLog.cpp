#include "gsm-simulator/MessageLog.h"

#include <QFile>

#include <cerrno>
#include <cstring>

#include <fcntl.h>
#include <unistd.h>

namespace norvane {

using namespace Qt::StringLiterals;

namespace simulator {

namespace {

bool isHalfOfPair(QStringView text, qsizetype at)
{
    const QChar character = text.at(at);
    if (character.isHighSurrogate())
        return at + 1 == text.size() || !text.at(at + 1).isLowSurrogate();
    return character.isLowSurrogate() && (at == 0 || !text.at(at - 1).isHighSurrogate());
}

QByteArray quoted(const QString &text)
{
    QString escaped;
    escaped.reserve(text.size() + 2);
    escaped += u'"';
    for (qsizetype i = 0; i < text.size(); ++i) {
        const QChar character = text.at(i);
        if (character == u'"' || character == u'\\') {
            escaped += u'\\';
            escaped += character;
        } else if (character < u' ' || isHalfOfPair(text, i)) {
            escaped += u"\\u%1"_s.arg(ushort{character.unicode()}, 4, 16, QChar(u'0'));
        } else {
            escaped += character;
        }
    }
    escaped += u'"';
    return escaped.toUtf8();
}

QByteArray codingName(Coding coding)
{
    switch (coding) {
    case Coding::Octets:
        return "8bit"_ba;
    case Coding::Ucs2:
        return "ucs2"_ba;
    default:
        return "gsm7"_ba;
    }
}

QString systemError(const QString &path)
{
    return path + u": "_s + QString::fromLocal8Bit(std::strerror(errno));
}

} // namespace

QByteArray jsonLine(const AcceptedMessage &message, const QDateTime &time)
{
    const SubmittedPart &part = message.part;
    QByteArray line =
        "{\"number\":" + quoted(part.number) + ",\"text\":" + quoted(part.text) + ",\"pdu\":\"" +
        part.pdu + "\",\"time\":" + quoted(time.toString(Qt::ISODateWithMs)) + ",\"coding\":\"" +
        codingName(part.coding) + "\",\"reference\":" + QByteArray::number(message.reference);
    if (part.concatenation) {
        line += ",\"concatenation\":" + QByteArray::number(part.concatenation->reference) +
                ",\"part\":" + QByteArray::number(part.concatenation->part) +
                ",\"parts\":" + QByteArray::number(part.concatenation->parts);
    }
    if (message.linkKept)
        line += ",\"linkKept\":true";
    return line + "}\n";
}

MessageLog::~MessageLog()
{
    if (m_file >= 0)
        ::close(m_file);
}

QString MessageLog::open(const QString &path)
{
    m_path = path;
    constexpr int ownerOnly = 0600;
    m_file = ::open(QFile::encodeName(path).constData(), O_WRONLY | O_APPEND | O_CREAT | O_CLOEXEC,
                    ownerOnly);
    return m_file < 0 ? systemError(path) : QString();
}

QString MessageLog::append(const QByteArray &line)
{
    ssize_t written = 0;
    do {
        written = ::write(m_file, line.constData(), static_cast<std::size_t>(line.size()));
    } while (written < 0 && errno == EINTR);
    if (written < 0)
        return systemError(m_path);
    if (written != line.size())
        return m_path + u": a line is cut short"_s;
    return {};
}

} // namespace simulator

} // namespace norvane
