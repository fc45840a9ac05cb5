#pragma once

#include "NorvaneSMS/platform/FileStreams.h"

#include <QStringList>

#include <functional>
#include <utility>

namespace norvane {

using namespace Qt::StringLiterals;

/// The platform's files, each step of which can be made to fail: a script gives the error, or 0 to
/// let the step go on. What is asked for is noted.
class ScriptedStreams : public FileStreams
{
public:
    int openToRead(const QString &path, std::unique_ptr<ByteStream> &stream) override
    {
        calls.append(u"open "_s + path);
        if (const int error = onOpen ? onOpen(path) : 0)
            return error;
        return wrapped(fileStreams().openToRead(path, stream), stream);
    }
    int createNew(const QString &path, std::unique_ptr<ByteStream> &stream) override
    {
        calls.append(u"create "_s + path);
        if (const int error = onCreate ? onCreate(path) : 0)
            return error;
        return wrapped(fileStreams().createNew(path, stream), stream);
    }
    int removeForced(const QString &path) override
    {
        calls.append(u"remove "_s + path);
        if (const int error = onRemove ? onRemove(path) : 0)
            return error;
        return fileStreams().removeForced(path);
    }

    QStringList calls;
    std::function<int(const QString &path)> onOpen;
    std::function<int(const QString &path)> onCreate;
    std::function<int(const QString &path)> onRemove;
    std::function<int(qsizetype &max)> onRead; ///< may make a reading smaller
    std::function<int(const QByteArray &bytes)> onWrite;
    std::function<int()> onClose;
    int openStreams = 0;

private:
    class Stream : public ByteStream
    {
    public:
        Stream(ScriptedStreams &script, std::unique_ptr<ByteStream> stream)
            : m_script(script), m_stream(std::move(stream))
        {
            ++m_script.openStreams;
        }
        ~Stream() override
        {
            --m_script.openStreams;
            m_script.calls.append(u"release"_s);
        }

        int read(qsizetype max, QByteArray &bytes) override
        {
            const int error = m_script.onRead ? m_script.onRead(max) : 0;
            return error != 0 ? error : m_stream->read(max, bytes);
        }
        int write(const QByteArray &bytes) override
        {
            m_script.calls.append(u"write %1"_s.arg(bytes.size()));
            const int error = m_script.onWrite ? m_script.onWrite(bytes) : 0;
            return error != 0 ? error : m_stream->write(bytes);
        }
        int close() override
        {
            m_script.calls.append(u"close"_s);
            const int error = m_script.onClose ? m_script.onClose() : 0;
            return error != 0 ? error : m_stream->close();
        }

    private:
        ScriptedStreams &m_script;
        std::unique_ptr<ByteStream> m_stream;
    };

    int wrapped(int error, std::unique_ptr<ByteStream> &stream)
    {
        if (error == 0)
            stream = std::make_unique<Stream>(*this, std::move(stream));
        return error;
    }
};

} // namespace norvane
