#pragma once

#include <QByteArray>
#include <QString>
#include <QXmlStreamReader>

/// The parts of a workbook that is an archive.
class PackageParts
{
public:
    PackageParts() = default;
    PackageParts(const PackageParts &) = delete;
    PackageParts &operator=(const PackageParts &) = delete;
    virtual ~PackageParts() = default;

    /// The bytes of a part; none if it isn't there.
    virtual QByteArray part(const QString &name) const = 0;
};

/// A zip archive in memory, which must outlive this object.
class ZipParts : public PackageParts
{
public:
    explicit ZipParts(const QByteArray &bytes) : m_bytes(bytes) {}

    /// @throws NumberedFailure BadFile for an archive that can't be read
    QByteArray part(const QString &name) const override;

private:
    const QByteArray &m_bytes;
};

/// @throws NumberedFailure BadFile if what `xml` has read isn't well-formed
void checkXml(const QXmlStreamReader &xml);
