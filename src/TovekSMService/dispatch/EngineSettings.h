#pragma once

#include "TovekSMService/dispatch/RetryPolicy.h"
#include "TovekSMService/modem/at/ModemTimings.h"

#include <QByteArray>
#include <QString>

#include <span>

namespace norvane {

class EngineName;

/// What an administrator sets in the engine's settings file.
struct EngineSettings
{
    // [Sending]
    int attempts = 4;       ///< of a message, until a temporary failure becomes final
    int firstDelay = 30;    ///< s, until the second attempt; it doubles with each one more
    int maxDelay = 3600;    ///< s
    int jitter = 25;        ///< percent of a delay that are added to it at random, at most
    int answerLimit = 180;  ///< s, from the payload to the device's answer
    int validityPeriod = 0; ///< min, asked of the network; 0 leaves it to the network

    // [Device]
    int breakerFailures = 3;  ///< in a row, until sending pauses
    int resetInterval = 3600; ///< s, between two resets of the device's functionality at least

    // [Limits]
    int maxLateness = 0;    ///< s after its delivery date a message is given up; 0 never
    int partsPerMinute = 0; ///< that may leave; 0 without limit
    int partsPerDay = 0;

    // [Outcomes]
    int keepDays = 90; ///< for which the outcome of a message is kept

    // [Reports]
    bool delivery = true; ///< the network is asked to report what becomes of each part

    // [OptOut]
    QString optOutWords = defaultOptOutWords(); ///< parted by commas
    QString optInWords = defaultOptInWords();
    QString countryPrefix = defaultCountryPrefix(); ///< digits; numbers are the same without it

    // [Hooks], paths of executables; empty for none
    QString onReceived; ///< runs with each message that is received
    QString onDelivery; ///< runs with each change of what the network says of a message

    // [Queue]
    QString queueDatabase; ///< that several engines share, as libpq takes it; empty for none
    QString queueName;     ///< of this engine among them; empty for the host's and the account's
    int sameSender = 0;    ///< s for which a message waits for its recipient's engine; 0 not at all
    QString queueRefusal;  ///< why queueDatabase is not to be used; empty if it is

    bool operator==(const EngineSettings &) const = default;

    static QString defaultOptOutWords();
    static QString defaultOptInWords();
    static QString defaultCountryPrefix();

    RetryTimes retryTimes() const;
    ModemTimings modemTimings() const;

    /// `TovekSMService@NAME.ini` in `$XDG_CONFIG_HOME/Norvane` for a named engine that has such a
    /// file, else `TovekSMService.ini` there.
    static QString file(const EngineName &name);
    /// The settings of that file. What is missing has its default, and so has what is no number or
    /// out of its bounds, which is logged.
    static EngineSettings load(const EngineName &name);
    /// The settings in the text of such a file.
    static EngineSettings parse(const QByteArray &bytes);
};

/// One number of the settings file, with its bounds. Its default is that of EngineSettings.
struct EngineNumber
{
    const char *section;
    const char *key;
    int EngineSettings::*value;
    int least;
    int max;
    bool zeroIsOff; ///< 0 is allowed beside the bounds
};

/// Every number of the settings file.
std::span<const EngineNumber> engineNumbers();

} // namespace norvane
