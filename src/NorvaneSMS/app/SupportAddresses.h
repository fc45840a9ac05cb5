#pragma once

#include <QLatin1String>

namespace norvane {

/// Where operators are sent for help.
namespace SupportAddresses {

inline constexpr QLatin1String Web("https://soporte.norvane.example");
inline constexpr QLatin1String SpanishMail("soporte@norvane.example");
inline constexpr QLatin1String PortugueseMail("suporte@norvane.example");

} // namespace SupportAddresses

} // namespace norvane
