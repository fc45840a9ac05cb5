#pragma once

#include "TovekSMService/modem/at/ModemTypes.h"
#include "TovekSMService/modem/codec/SubmitPdu.h"
#include "TovekSMService/modem/device/Arrival.h"
#include "TovekSMService/modem/device/DeviceParameter.h"

#include <QList>
#include <QObject>

namespace norvane {

/// A GSM device: from opening it to sending messages and reading what came. Everything is
/// asynchronous; each request is answered by one signal, told with each. Failures never close the
/// object: it can be opened again, any time.
class Modem : public QObject
{
    Q_OBJECT

public:
    enum class State {
        Closed,
        Opening,
        Initialising,
        Ready,
        Busy, ///< sending, asking for details, testing, or finding back after a time-out
    };

    enum class OpenMode {
        Plain,
        ResetFunctionality, ///< restarts the device's radio part first, where that can be had
    };

    /// What send() takes at a time.
    enum class Unit {
        Part,    ///< of a message, as it is encoded
        Message, ///< as a whole: the device's owner encodes it and cuts it
    };

    using Followers = norvane::Followers;
    using QObject::QObject;

    virtual State state() const = 0;
    virtual const DeviceDetails &details() const = 0;
    virtual Unit unit() const = 0;

    /// Brings the device to readiness: `ready` or `failed`. An open modem is closed first. A device
    /// in flight mode is switched on, and its network waited for.
    /// @param imei of the device that is looked for elsewhere when nothing stands at its place;
    ///             empty for no search
    virtual void open(const DeviceParameter &parameter, const QString &pin,
                      OpenMode mode = OpenMode::Plain, const QString &imei = {}) = 0;

    /// Leaves the device alone. A part in progress is answered with `partFailed`, a test with
    /// `tested`; `failed` doesn't come.
    virtual void close() = 0;

    /// A PIN has left, and its outcome is still to come, within a minute: closed now, the modem
    /// could never try that PIN on that SIM again. After it comes `pinResolved`, or `failed`.
    virtual bool awaitsPinOutcome() const = 0;

    /// Sends one part: `partAccepted` or `partFailed`, and after the latter `failed` if the device
    /// has been lost. The network may have the part from the moment of this call on, so whatever
    /// must be on record is on record before it.
    /// @param part      one that stands for its whole message where unit() is that
    /// @param followers with some, the link to the network is kept up behind the part
    virtual void send(const SubmitPart &part, Followers followers = Followers::None) = 0;
    /// Whether it makes a difference to send() that a part has followers. It makes none while the
    /// link is kept already.
    virtual bool asksForFollowers() const = 0;

    /// Asks for network, signal, battery, clock and service centre: `detailsChanged`. Does nothing
    /// unless the modem is ready.
    virtual void refreshDetails() = 0;

    /// Whether something from the network is to be read, deleted or acknowledged.
    virtual bool hasMail() const = 0;
    /// Does so: `mailRead`, with what was read. Does nothing unless the modem is ready.
    virtual void fetchMail() = 0;
    /// These are stored: the device needn't keep them any longer.
    virtual void dismissMail(const QList<Arrival> &arrivals) = 0;
    /// What was read could not be stored.
    virtual void deferMail(const QList<Arrival> &arrivals) = 0;

    /// Asks the device whether it answers and whether its SIM is unlocked, and for its details:
    /// `tested`.
    virtual void test() = 0;

Q_SIGNALS:
    void ready(const DeviceDetails &details);
    void detailsChanged(const DeviceDetails &details);
    /// @param reference the message reference that the device gave, -1 if it gave none
    /// @param report    whether the network will report what becomes of the part
    void partAccepted(int reference, ReportRequest report);
    void partFailed(const SendFailure &failure);
    /// The device can't be used; the modem is closed.
    void failed(const ModemFailure &failure);
    /// @param code   1, or what stands in the way
    /// @param reason of a failure: technical, English, without the PIN
    void tested(bool ok, int code, const DeviceDetails &details, const QString &reason);
    /// A line that the device sent by itself.
    void unsolicited(const QByteArray &line);
    /// hasMail() has become true.
    void mailDue();
    /// The modem is ready again.
    void mailRead(const QList<Arrival> &arrivals);
    /// The SIM has taken its PIN.
    void pinResolved();
    /// The device was told to restart its radio part.
    void functionalityReset();

protected:
    /// Answers a part that isn't sent, behind the call.
    void refusePart(const SendFailure &failure);
    /// Answers a test of a modem that isn't ready, behind the call.
    void refuseTest();
};

} // namespace norvane
