#pragma once

#include "NorvaneSheetReader/PartStream.h"

#include <QXmlStreamReader>

#include <memory>

namespace norvane {

/// The XML of a part, read while it is unpacked: neither the part nor its text is ever held whole.
class PartXml : public QXmlStreamReader
{
public:
    explicit PartXml(std::unique_ptr<PartStream> part);

    /// Reads what is left.
    /// @throws NumberedFailure BadFile for a part that is damaged or not well-formed
    void finish();

private:
    std::unique_ptr<PartStream> m_part;
};

} // namespace norvane
