#pragma once

#include <QByteArray>
#include <QByteArrayView>
#include <QString>
#include <QStringView>

namespace norvane {

/// The two eight-bit code pages of the suite's workstations. Text becomes bytes, and bytes become
/// text, here and nowhere else.
namespace CodePages {

constexpr int ansi = 1252;
constexpr int oem = 850;

/// One byte for each UTF-16 unit of `text`; a unit that the ANSI code page doesn't hold becomes
/// "?".
QByteArray toAnsi(QStringView text);

/// One character for each byte. A byte that the code page leaves undefined becomes the control
/// character of the same number, so that every byte survives the way to text and back.
QString fromAnsi(QByteArrayView bytes);

/// Each ANSI byte's counterpart in the OEM code page, or the platform's best replacement.
QByteArray ansiToOem(QByteArrayView bytes);

} // namespace CodePages

} // namespace norvane
