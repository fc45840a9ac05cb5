#pragma once

#include "gsm-simulator/MessageMemory.h"

#include <QByteArray>
#include <QDateTime>

#include <chrono>
#include <functional>
#include <vector>

namespace norvane {

using namespace Qt::StringLiterals;

namespace simulator {

enum class Formats { Both, PduOnly, TextOnly };

enum class ReportOrder { AsSent, Reversed };

/// What the network does where a message asks for a status report.
struct ReportSettings
{
    int count = 1;                      ///< how often each report comes
    std::chrono::milliseconds delay{0}; ///< from the message to its report, and to the next one
    int status = 0;                     ///< TP-ST
    int firstStatus = -1;               ///< of a report that comes before; below 0: none
    ReportOrder order = ReportOrder::AsSent;
    int refusal = -1; ///< refuses such messages with this +CMS ERROR; below 0: accepts them
};

/// What a device can do with the reports and messages that it receives.
struct ReceptionSettings
{
    bool routesReports = true; ///< +CNMI: <ds> may be 1
    bool storesReports = true; ///< +CNMI: <ds> may be 2
    QByteArray reportMemory = "SR"_ba;
    std::vector<MemorySettings> memories{{"SM"_ba}, {"ME"_ba}, {"SR"_ba}};
    std::chrono::milliseconds acknowledgementTimeout{5000}; ///< +CSMS=1: for +CNMA
    std::chrono::milliseconds redeliverAfter{10'000};       ///< what was not accepted
};

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
    int firstReference = 0;               ///< what the first +CMGS answers, 0 to 255
    ReportSettings reports;
    ReceptionSettings reception;
    bool silent = false;
    bool noise = false;
    bool unsolicited = false;
    unsigned seed = 1;

    std::function<QDateTime()> clock = [] { return QDateTime::currentDateTime(); };
};

} // namespace simulator

} // namespace norvane
