#pragma once

#include <QString>

#include <optional>

namespace norvane {

/// Which SIM it is, by what can be had while it is locked. One of the two is told at least.
struct SimIdentity
{
    QString iccid; ///< of the SIM; empty where it isn't told
    QString imei;  ///< of the device that the SIM is in; empty where it isn't told

    /// The name by which the SIM is known.
    const QString &name() const { return iccid.isEmpty() ? imei : iccid; }
    bool operator==(const SimIdentity &) const = default;
};

/// Guards the SIM against wrong PINs: three refused ones lock it. The modem asks here before a PIN
/// may leave, and tells here what became of it.
class PinGate
{
public:
    enum class Decision {
        Try,
        AlreadyTried, ///< this PIN was tried on this SIM before and wasn't accepted
        TooFewTries,  ///< a mistake would come too close to locking the SIM
        NotRecorded,  ///< the attempt couldn't be put on record, so it must not be made
    };

    virtual ~PinGate() = default;

    /// Whether the PIN may be tried on the SIM. An attempt that isn't known to be right is on
    /// record, durably, before this gives `Try`.
    /// @param triesLeft what the device says, if it does
    virtual Decision mayTry(const SimIdentity &sim, const QString &pin,
                            std::optional<int> triesLeft) = 0;
    virtual void accepted(const SimIdentity &sim, const QString &pin) = 0;
    virtual void refused(const SimIdentity &sim, const QString &pin) = 0;
};

} // namespace norvane
