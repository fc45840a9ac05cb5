#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <string_view>
#include <type_traits>

namespace norvane::model {

/// Where a message stands in the queue.
enum class Row : std::uint8_t { Gone, Waiting, Leaving, BetweenParts };

/// What is reported of a message.
enum class Code : std::uint8_t { None, Sent, InDoubt, Failed };

/// What became of a part that was claimed. A moot one can't change the database any more.
enum class Fate : std::uint8_t { Open, Sent, PartAccepted, Failed, InDoubt, Returned, Moot };

/// Where it is known that the last part of a message was accepted.
enum class Knowledge : std::uint8_t { Nowhere, InProcess, InFile };

/// An engine that is gone never comes back, nor does its file.
enum class Life : std::uint8_t { Running, Stopped, Killed, Gone };

/// What the process of an engine does.
enum class Activity : std::uint8_t {
    Idle,
    Claimed,    ///< knows that its claim was committed
    Submitting, ///< the device has the part
    Learned,    ///< knows what became of the part
};

/// What an engine still has to do behind a new connection before it claims anything.
enum class Recovery : std::uint8_t { Done, Release, ReportLeft };

enum class TransactionKind : std::uint8_t {
    None,
    Claim,
    ClaimWithLocks, ///< its statements ran, its commit is on its way
    Apply,
    Enroll,
    Release,
    ReportLeft,
    TakeOver,
    TakeOverBegun,
};

constexpr std::uint8_t engineCount = 2;
constexpr std::uint8_t nobody = engineCount;
constexpr std::uint8_t messageCount = 2;
constexpr std::uint8_t maxParts = 2;
constexpr std::array<std::uint8_t, messageCount> partsOf{1, 2};
constexpr std::uint8_t maxKeptFacts = 2;
constexpr std::uint8_t maxLate = 3; ///< each is a fault

/// What an engine knows of a part that it claimed.
struct Fact
{
    std::uint8_t message = 0;
    std::uint8_t part = 0;  ///< while it is open
    std::uint8_t epoch = 0; ///< that of the claim
    Fate fate = Fate::Open;
};

/// What a process sends to the database in one transaction.
struct Transaction
{
    TransactionKind kind = TransactionKind::None;
    // The epochs of the rows that are released, or reported as left.
    std::uint8_t firstEpoch = 0;
    std::uint8_t endEpoch = 0; ///< the one behind the last
    // Of a claim its message and epoch; of an enrollment the epoch that it may keep.
    Fact fact;
};

struct Message
{
    // Its row in the queue.
    Row row = Row::Waiting;
    std::uint8_t partsSent = 0;
    std::uint8_t holder = nobody;
    std::uint8_t epoch = 0;
    // Its outcome.
    Code code = Code::None;
    std::uint8_t outcomeEngine = nobody;
    std::uint8_t outcomeEpoch = 0;
    // The truth, which no engine can look up.
    std::array<std::uint8_t, maxParts> timesLeft{};
    std::uint8_t leftThrough = 0; ///< a bit for each device
    Knowledge knowledge = Knowledge::Nowhere;
};

struct Engine
{
    // What the database holds of it.
    std::uint8_t epoch = 0;
    bool isSilent = true; ///< for as long as a takeover waits
    // What is still on its way from connections that are lost.
    std::array<Transaction, maxLate> late{};
    // Its machine and its process.
    Life life = Life::Running;
    bool isConnected = false;
    std::uint8_t knownEpoch = 0; ///< that of the connection
    std::uint8_t firstEpoch = 0; ///< that of the first connection; 0: there was none
    Recovery recovery = Recovery::Done;
    Activity activity = Activity::Idle;
    Fact work;
    std::uint8_t handedOver = 0; ///< the facts of the file that the database is known to have
    // Its file.
    std::uint8_t keptCount = 0;
    std::array<Fact, maxKeptFacts> kept{};
};

struct State
{
    std::array<Engine, engineCount> engines{};
    std::array<Message, messageCount> messages{};
    std::uint8_t faults = 0;
};

// States are compared and hashed by their bytes.
static_assert(std::has_unique_object_representations_v<State>);

inline std::string_view bytesOf(const State &state)
{
    return {reinterpret_cast<const char *>(&state), sizeof(State)};
}

inline bool operator==(const State &one, const State &other)
{
    return bytesOf(one) == bytesOf(other);
}

struct StateHash
{
    std::size_t operator()(const State &state) const
    {
        return std::hash<std::string_view>{}(bytesOf(state));
    }
};

} // namespace norvane::model
