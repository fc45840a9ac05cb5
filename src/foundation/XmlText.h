#pragma once

#include <QByteArray>
#include <QString>

#include <optional>

namespace norvane {

/// The characters of an XML file by its byte order mark or else its declaration: UTF-8, UTF-16,
/// ISO-8859-1, windows-1252 or US-ASCII. Nothing for another encoding, or for bytes that are not
/// what they claim to be.
std::optional<QString> decodedXml(const QByteArray &bytes);

} // namespace norvane
