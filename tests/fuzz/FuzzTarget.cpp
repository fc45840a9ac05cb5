#include "fuzz/FuzzTarget.h"

#include <QCoreApplication>
#include <QTemporaryDir>

#include <cstdio>
#include <cstdlib>

namespace norvane {

namespace {

void swallow(QtMsgType, const QMessageLogContext &, const QString &) {}

} // namespace

QString fuzzFolder()
{
    static const QTemporaryDir folder;
    return folder.path();
}

int LLVMFuzzerInitialize(int *argc, char ***argv)
{
    qputenv("XDG_CONFIG_HOME", QFile::encodeName(fuzzFolder()));
    qputenv("XDG_DATA_HOME", QFile::encodeName(fuzzFolder()));
    qInstallMessageHandler(swallow);
    static const QCoreApplication application(*argc, *argv);
    return 0;
}

void expectThat(bool holds, const char *expectation)
{
    if (holds)
        return;
    std::fprintf(stderr, "not so: %s\n", expectation);
    std::abort();
}

quint8 FuzzInput::takeByte()
{
    return atEnd() ? quint8{0} : static_cast<quint8>(m_bytes.at(m_position++));
}

int FuzzInput::takeNumber(int limit)
{
    const int high = limit > 256 ? takeByte() : 0;
    return (high * 256 + takeByte()) % limit;
}

QByteArray FuzzInput::takeBytes(qsizetype max)
{
    const qsizetype length = qMin<qsizetype>(takeNumber(65536), max);
    const QByteArray bytes = m_bytes.mid(m_position, length);
    m_position += bytes.size();
    return bytes;
}

QString FuzzInput::takeText(qsizetype max)
{
    const int form = takeByte();
    const int repetitions = form < 0xC0 ? 1 : (form & 0x3F) + 1;
    const QByteArray bytes = takeBytes(2 * max);
    QString text;
    switch (form % 3) {
    case 0:
        text = QString::fromLatin1(bytes);
        break;
    case 1:
        text = QString::fromUtf8(bytes);
        break;
    default:
        for (qsizetype i = 0; i + 1 < bytes.size(); i += 2)
            text += QChar(static_cast<uchar>(bytes.at(i + 1)), static_cast<uchar>(bytes.at(i)));
    }
    return text.repeated(repetitions).left(max);
}

QByteArray FuzzInput::takeRest()
{
    const QByteArray rest = m_bytes.mid(m_position);
    m_position = m_bytes.size();
    return rest;
}

} // namespace norvane
