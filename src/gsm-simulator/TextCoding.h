#pragma once

#include <QByteArray>
#include <QString>

#include <optional>

namespace norvane {

namespace simulator {

/// Whether +CSCS knows this name of a character set.
bool isCharacterSet(const QByteArray &name);

/// The names of all character sets, for +CSCS=?.
QByteArray characterSetList();

/// Text as the terminal sends it, or nothing where it isn't of that character set.
std::optional<QString> fromCharacterSet(const QByteArray &bytes, const QByteArray &characterSet);

/// Text as the terminal wants it; what its character set hasn't got is a question mark.
QByteArray inCharacterSet(const QString &text, const QByteArray &characterSet);

/// A telephone number within a command: in the terminal's character set, or plain, which clients
/// send in every character set. Nothing if it is no number.
std::optional<QString> numberFromCharacterSet(const QByteArray &bytes,
                                              const QByteArray &characterSet);

} // namespace simulator

} // namespace norvane
