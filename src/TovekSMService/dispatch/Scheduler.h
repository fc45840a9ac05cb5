#pragma once

#include "TovekSMService/dispatch/EngineSettings.h"
#include "TovekSMService/dispatch/PartEncoder.h"
#include "TovekSMService/dispatch/SendingRun.h"
#include "TovekSMService/modem/device/Modem.h"
#include "TovekSMService/store/MessageQueue.h"
#include "TovekSMService/store/StoreFailure.h"

#include <QList>
#include <QString>

#include <functional>
#include <optional>
#include <variant>

namespace norvane {

class Clock;
class Store;

/// Decides which messages may leave: those that are due and not too late, that can be encoded, and
/// whose parts the limits of the settings allow. Notes them as leaving.
class Scheduler
{
public:
    /// What the device takes at a time, at present.
    using Unit = std::function<Modem::Unit()>;

    /// @param store, clock  must outlive this object
    Scheduler(
        Store &store, const Clock &clock, const EngineSettings &settings,
        PartEncoder::Encode encode, Unit unit = [] { return Modem::Unit::Part; });

    bool isDue(const StoredMessage &message) const;
    /// Whether the message is to be given up by that moment, "yyyy-MM-ddTHH:mm:ss".
    bool isTooLate(const StoredMessage &message, const QString &at) const;
    /// Whether as many parts may leave now. More than are ever allowed may leave behind none.
    [[nodiscard]] StoreResult<bool> limitsAllow(int parts) const;
    /// The message in the device's form, or the code with which it fails.
    std::variant<LeavingMessage, qint32> encoded(const StoredMessage &message);

    /// What goes next, if it may.
    struct Next
    {
        std::optional<StoredMessage> first; ///< of the queue
        bool isDue = false;
        std::optional<qint32> failure; ///< of the first message, that can't be sent
        bool isLimited = false;        ///< the limits hold back the first message
        /// What leaves, noted as such: the first message, and behind it those that are due and of
        /// one part.
        QList<LeavingMessage> run;
    };

    /// Begins what goes next, all of the run or none of it.
    /// @param maxLength  of the run, in messages
    [[nodiscard]] StoreResult<Next> beginNext(int maxLength);
    /// What was counted with that one did not leave.
    [[nodiscard]] StoreResult<> uncount(const LeavingMessage &leaving);

    /// @param id  of the message of which the last part that left was not its last; 0 for none
    void setUnfinished(qint64 id) { m_unfinished = id; }

private:
    static bool isDue(const StoredMessage &message, const QString &at);
    bool isLimited() const;
    StoreResult<Next> chosen(const QList<StoredMessage> &messages);
    void addSingles(QList<LeavingMessage> &run, const QList<StoredMessage> &messages);
    StoreResult<> begin(QList<LeavingMessage> &run);
    StoreResult<> count(LeavingMessage &leaving);
    SubmitPart wholeOf(const StoredMessage &message, const QList<SubmitPart> &parts) const;
    StoreResult<> tieParts(LeavingMessage &leaving);

    Store &m_store;
    const Clock &m_clock;
    const EngineSettings m_settings;
    PartEncoder m_encoder;
    const Unit m_unit;
    qint64 m_unfinished = 0;
};

} // namespace norvane
