#pragma once

#include <QString>

/// The names on the bus of the platform's modem manager, ModemManager from 1.20 on.
namespace norvane::Manager {

using namespace Qt::StringLiterals;

inline constexpr auto service = "org.freedesktop.ModemManager1"_L1;
inline constexpr auto path = "/org/freedesktop/ModemManager1"_L1;
inline constexpr auto modem = "org.freedesktop.ModemManager1.Modem"_L1;
inline constexpr auto modem3gpp = "org.freedesktop.ModemManager1.Modem.Modem3gpp"_L1;
inline constexpr auto messaging = "org.freedesktop.ModemManager1.Modem.Messaging"_L1;
inline constexpr auto sim = "org.freedesktop.ModemManager1.Sim"_L1;
inline constexpr auto sms = "org.freedesktop.ModemManager1.Sms"_L1;
inline constexpr auto errors = "org.freedesktop.ModemManager1.Error."_L1;
inline constexpr auto objectManager = "org.freedesktop.DBus.ObjectManager"_L1;
inline constexpr auto properties = "org.freedesktop.DBus.Properties"_L1;

} // namespace norvane::Manager
