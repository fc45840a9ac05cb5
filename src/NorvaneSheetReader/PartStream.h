#pragma once

#include <QIODevice>

#include <quazip/quazipfile.h>

class QuaZip;

namespace norvane {

/// One part of an archive, unpacked while it is read, from front to back.
class PartStream : public QIODevice
{
public:
    /// @param zip  stands at the part
    /// @throws NumberedFailure BadFile for a part that can't be unpacked
    explicit PartStream(QuaZip &zip);

    /// @throws NumberedFailure BadFile, as for every archive that isn't whole
    [[noreturn]] static void failAsDamaged();

    /// Reads what is left. To be called when everything that is wanted has been read.
    /// @throws NumberedFailure BadFile if the part isn't what the archive has its length and
    ///                         checksum of
    void finish();

    bool isSequential() const override { return true; }

protected:
    qint64 readData(char *data, qint64 maxSize) override;
    qint64 writeData(const char *, qint64) override { return -1; }

private:
    QuaZipFile m_file;
    qint64 m_count = 0;
    bool m_isBroken = false;
};

} // namespace norvane
