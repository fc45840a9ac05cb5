#pragma once

#include <QByteArray>
#include <QDateTime>

#include <chrono>
#include <functional>

namespace norvane {

using namespace Qt::StringLiterals;

namespace simulator {

enum class Formats { Both, PduOnly, TextOnly };

/// How the simulated modem is, and how it behaves.
struct ModemSettings
{
    QByteArray manufacturer = "Norvane"_ba;
    QByteArray model = "GSM simulator"_ba;
    QByteArray revision = "1.0"_ba;
    QByteArray imei = "490154203237518"_ba;
    QByteArray imsi = "001010123456789"_ba;
    QByteArray iccid = "8988211000000000005"_ba;
    QByteArray pin; ///< empty: the SIM asks for none
    QByteArray puk = "12345678"_ba;
    int signal = 20;    ///< 0 to 31, 99 for unknown
    int registered = 1; ///< registration as +CREG tells it, 0 to 5
    Formats formats = Formats::Both;
    int functionality = 1;                      ///< +CFUN when it is switched on: 0, 1 or 4
    std::chrono::milliseconds registerAfter{0}; ///< from the radio's start to the registration
    bool refusesBareAttention = false;          ///< answers "AT" with ERROR, "ATE0" with OK

    std::chrono::milliseconds latency{0}; ///< from the end of a submission to its answer
    int failEvery = 0;                    ///< each submission of this number fails; 0: none
    int failCode = 38;                    ///< with this +CMS ERROR
    int dropAfter = 0;                    ///< unplugged after so many messages; 0: never
    bool loseLastAnswer = false;          ///< unplugged before the last answer leaves
    bool silent = false;
    bool noise = false;
    bool unsolicited = false;
    unsigned seed = 1;

    std::function<QDateTime()> clock = [] { return QDateTime::currentDateTime(); };
};

} // namespace simulator

} // namespace norvane
