#pragma once

namespace norvane {

/// Time limits of the talk with a device, in milliseconds where nothing else is said.
struct ModemTimings
{
    /// The answer to an ordinary command.
    int commandMs = 5000;
    /// The answer to a command for which the device asks the network or the SIM.
    int slowCommandMs = 15000;
    /// The answer to the "AT" that finds out whether the device is there, and how often it's tried.
    int probeMs = 1000;
    int probeTries = 5;
    /// For how long a device must be still before it is taken to have nothing more to say, and how
    /// long to wait for that stillness at most.
    int quietMs = 150;
    int drainMs = 2000;
    /// From +CMGS to the prompt, and from the payload to the final result.
    int promptMs = 10000;
    int sendMs = 180000;
    /// Between two looks at a SIM that isn't ready, and for how long to look.
    int simPollMs = 500;
    int simReadyMs = 20000;
    /// Between two looks at the network behind a flight mode, and for how long to look.
    int networkPollMs = 1000;
    int networkReadyMs = 30000;
    /// After a pause of this length a link that was kept between messages counts as closed. Devices
    /// close it after 1 to 5 seconds.
    int linkPauseMs = 500;
    /// Reading a memory full of messages.
    int listMs = 60000;
    /// How long something that was announced waits for others, and until what could not be stored
    /// is looked at again.
    int mailDelayMs = 200;
    int mailAgainMs = 10000;
    /// Between two looks into the memories of a device that doesn't announce what comes.
    int mailPollMs = 60000;
    /// Between two looks whether the device still routes to us. It waits for an acknowledgement for
    /// about as long as the network does, 12 to 20 seconds (3GPP TS 24.011, TR2M).
    int routesCheckMs = 20000;
    /// For how long a modem manager may look for its devices.
    int managerMs = 20000;
    /// From opening to ready, all in all.
    int initialisationMs = 100000;
    /// The search for a device under another name: for one port, and all in all.
    int searchPortMs = 8000;
    int searchMs = 40000;
    /// How many questions for details may stay unanswered before the rest isn't asked.
    int unansweredDetails = 3;
};

} // namespace norvane
