#pragma once

#include <QLatin1String>

namespace norvane {

/// Where operators are sent for help.
namespace SupportAddresses {

inline constexpr QLatin1String web("https://soporte.norvane.example");
inline constexpr QLatin1String spanishMail("soporte@norvane.example");
inline constexpr QLatin1String portugueseMail("suporte@norvane.example");

} // namespace SupportAddresses

} // namespace norvane
