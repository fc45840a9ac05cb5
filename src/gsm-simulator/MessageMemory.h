#pragma once

#include <QByteArray>

#include <map>
#include <optional>
#include <vector>

namespace norvane {

namespace simulator {

/// A memory for messages: its name as +CPMS has it, and its places.
struct MemorySettings
{
    QByteArray name;
    int places = 20;
};

struct StoredMessage
{
    QByteArray tpdu;
    bool isRead = false;
};

/// Messages at numbered places, from 1.
class MessageMemory
{
public:
    explicit MessageMemory(const MemorySettings &settings) : m_settings(settings) {}

    const QByteArray &name() const { return m_settings.name; }
    int places() const { return m_settings.places; }
    int used() const { return static_cast<int>(m_messages.size()); }

    /// Stores a message as unread.
    /// @return its place, the first free one, or nothing if there is none
    std::optional<int> store(const QByteArray &tpdu);

    /// What stands at a place, or null.
    StoredMessage *at(int place);

    void remove(int place) { m_messages.erase(place); }
    void removeRead();
    void clear() { m_messages.clear(); }

    std::map<int, StoredMessage> &messages() { return m_messages; }

private:
    MemorySettings m_settings;
    std::map<int, StoredMessage> m_messages;
};

/// All memories of a device.
class MessageMemories
{
public:
    explicit MessageMemories(const std::vector<MemorySettings> &settings);

    /// The memory of that name, or null.
    MessageMemory *find(const QByteArray &name);

private:
    std::vector<MessageMemory> m_memories;
};

} // namespace simulator

} // namespace norvane
