#pragma once

#include "TovekSMService/store/EngineSettingsStore.h"
#include "TovekSMService/store/MessageQueue.h"
#include "TovekSMService/store/OptOutList.h"
#include "TovekSMService/store/Outcomes.h"
#include "TovekSMService/store/PartCounter.h"
#include "TovekSMService/store/PinRecord.h"
#include "TovekSMService/store/ReceivedMessages.h"
#include "TovekSMService/store/SentParts.h"
#include "TovekSMService/store/StoreDatabase.h"

namespace norvane {

/// Everything that the engine keeps. Each operation of its parts is one transaction, unless it is
/// one of several that are carried out together.
class Store
{
public:
    /// It is not open yet.
    explicit Store(const QString &file) : m_database(file) {}

    /// Opens the database anew, and all parts with it, see StoreDatabase::open().
    [[nodiscard]] StoreResult<> open();
    void close();

    StoreDatabase &database() { return m_database; }
    const StoreDatabase &database() const { return m_database; }
    MessageQueue &queue() { return m_queue; }
    const MessageQueue &queue() const { return m_queue; }
    Outcomes &outcomes() { return m_outcomes; }
    const Outcomes &outcomes() const { return m_outcomes; }
    EngineSettingsStore &settings() { return m_settings; }
    const EngineSettingsStore &settings() const { return m_settings; }
    PartCounter &parts() { return m_parts; }
    PinRecord &pins() { return m_pins; }
    SentParts &sentParts() { return m_sentParts; }
    ReceivedMessages &received() { return m_received; }
    const ReceivedMessages &received() const { return m_received; }
    OptOutList &optOuts() { return m_optOuts; }

private:
    StoreDatabase m_database;
    Outcomes m_outcomes{m_database};
    MessageQueue m_queue{m_database, m_outcomes};
    EngineSettingsStore m_settings{m_database};
    PartCounter m_parts{m_database};
    PinRecord m_pins{m_database};
    SentParts m_sentParts{m_database};
    ReceivedMessages m_received{m_database};
    OptOutList m_optOuts{m_database};
};

} // namespace norvane
