#pragma once

#include "NorvaneSheetReader/PartStream.h"

#include <QBuffer>
#include <QByteArray>
#include <QSet>
#include <QString>

#include <memory>

class QuaZip;

namespace norvane {

/// The parts of a workbook that is an archive. The archive is opened and indexed once.
class PackageParts
{
public:
    /// Of one part. A kilobyte can tell of a gigabyte of blanks; no more comes out of a part than
    /// the archive declares.
    static constexpr quint64 maxPartBytes = 256 << 20;

    /// @throws NumberedFailure BadFile for an archive that can't be read, that names a part twice
    ///                         (two programs could read different ones), or that has too many
    explicit PackageParts(const QByteArray &bytes);
    PackageParts(const PackageParts &) = delete;
    PackageParts &operator=(const PackageParts &) = delete;
    ~PackageParts();

    /// A part, to be read before the next one is opened; nullptr if it isn't there, or is empty.
    /// @throws NumberedFailure BadFile for a part that is encrypted, too large, or can't be
    ///                         unpacked
    std::unique_ptr<PartStream> open(const QString &name) const;
    /// All bytes of a part; none if it isn't there.
    /// @throws NumberedFailure as `open`, and as PartStream
    QByteArray bytes(const QString &name) const;
    bool contains(const QString &name) const { return m_names.contains(name); }

private:
    void readIndex();

    QBuffer m_archive;
    std::unique_ptr<QuaZip> m_zip;
    QSet<QString> m_names;
};

} // namespace norvane
