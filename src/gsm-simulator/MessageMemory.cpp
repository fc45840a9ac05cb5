#include "gsm-simulator/MessageMemory.h"

#include <algorithm>

namespace norvane {

namespace simulator {

std::optional<int> MessageMemory::store(const QByteArray &tpdu)
{
    int place = 1;
    for (const auto &[taken, message] : m_messages) {
        if (taken != place)
            break;
        ++place;
    }
    if (place > places())
        return std::nullopt;
    m_messages.insert({place, {tpdu, false}});
    return place;
}

StoredMessage *MessageMemory::at(int place)
{
    const auto found = m_messages.find(place);
    return found == m_messages.end() ? nullptr : &found->second;
}

void MessageMemory::removeRead()
{
    std::erase_if(m_messages, [](const auto &entry) { return entry.second.isRead; });
}

MessageMemories::MessageMemories(const std::vector<MemorySettings> &settings)
{
    for (const MemorySettings &each : settings)
        m_memories.emplace_back(each);
}

MessageMemory *MessageMemories::find(const QByteArray &name)
{
    const auto found =
        std::find_if(m_memories.begin(), m_memories.end(),
                     [&name](const MessageMemory &memory) { return memory.name() == name; });
    return found == m_memories.end() ? nullptr : &*found;
}

} // namespace simulator

} // namespace norvane
