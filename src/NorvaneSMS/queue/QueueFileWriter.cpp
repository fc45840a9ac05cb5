#include "NorvaneSMS/queue/QueueFileWriter.h"

#include "NorvaneSMS/queue/QueueDropFile.h"
#include "common/FailureNumbers.h"
#include "foundation/FileSystem.h"
#include "foundation/Globals.h"
#include "foundation/MessageBoxes.h"
#include "foundation/Normalisation.h"

#include <cerrno>
#include <exception>
#include <limits>
#include <memory>

namespace norvane {

using namespace Qt::StringLiterals;

namespace {

constexpr int maxCollisions = 3;
constexpr double maxPause = 250; // milliseconds

/// A new drop file, created by this writer.
class NewDropFile
{
public:
    NewDropFile(const QString &folder, const QueueAccess &access, const QString &source)
        : m_folder(folder), m_access(access), m_source(source)
    {
        int collisions = 0;
        for (;;) {
            while (m_fileSystem.FileExists(m_candidate))
                nextCandidate();
            const int error = m_access.files->createNew(m_candidate, m_stream);
            if (error == 0)
                return;
            if (error != EEXIST || collisions == maxCollisions)
                raise(error);
            ++collisions;
            raiseNumber(); // not the candidate, which may be free again after the pause
            pause();
        }
    }

    /// Writes one record, in one write.
    void write(const QString &phone, const QDateTime &deliveryDate, const QString &message)
    {
        check(m_stream->write(
            QueueDropFile::encode({phone, deliveryDate, NormalizeSMSText(false, message)})));
    }

    void close() { check(m_stream->close()); }

private:
    void raiseNumber()
    {
        if (m_number == std::numeric_limits<qint16>::max())
            Failure::raise(Failure::Overflow, m_source);
        ++m_number;
    }

    void nextCandidate()
    {
        raiseNumber();
        m_candidate = m_fileSystem.BuildPath(m_folder, QueueDropFile::fileName(m_number));
    }

    void pause() const
    {
        m_access.waiting->seedFromClock();
        m_access.waiting->sleep(static_cast<int>(m_access.waiting->random() * maxPause + 1));
    }

    [[noreturn]] void raise(int error) const
    {
        // A file that is to be made can't be missing, so its folder is.
        if (error == ENOENT)
            Failure::raise(Failure::PathNotFound, m_source);
        Failure::raiseErrno(error, m_source);
    }

    void check(int error) const
    {
        if (error != 0)
            Failure::raiseErrno(error, m_source);
    }

    const QString m_folder;
    const QueueAccess &m_access;
    const QString m_source;
    const FileSystem m_fileSystem;
    qint16 m_number = 0;
    QString m_candidate = m_fileSystem.BuildPath(m_folder, QueueDropFile::fileName(m_number));
    std::unique_ptr<ByteStream> m_stream;
};

/// Does the work of a writer and shows what goes wrong.
template <typename Work>
void shown(Work &&work)
{
    try {
        work();
    } catch (...) {
        messageBoxes().show(Failure::fromException(std::current_exception()).shown(),
                            MessageBoxes::Icon::Information, MessageBoxes::Buttons::Ok, boxTitle());
    }
}

} // namespace

void WriteSMSFile(const QString &phone, const QDateTime &deliveryDate, const QString &message,
                  const QString &queueFolder, const QueueAccess &access)
{
    shown([&] {
        NewDropFile file(queueFolder, access, u"WriteSMSFile"_s);
        file.write(phone, deliveryDate, message);
        file.close();
    });
}

void WriteSMSFileBulk(const SMSList &list, const QDateTime &deliveryDate,
                      const QString &queueFolder, const QueueAccess &access)
{
    shown([&] {
        NewDropFile file(queueFolder, access, u"WriteSMSFileBulk"_s);
        for (qint16 index = 0; index < list.Count(); ++index)
            file.write(list.Phone(index), deliveryDate, list.Message(index));
        file.close();
    });
}

} // namespace norvane
