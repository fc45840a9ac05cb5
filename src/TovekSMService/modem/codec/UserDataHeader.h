#pragma once

#include "TovekSMService/modem/codec/ShiftTables.h"

#include <QByteArrayView>

#include <optional>

namespace norvane {

/// Which part of a long message this one is.
struct Concatenation
{
    quint16 reference = 0;
    /// Whether the reference has 16 bits: one of 8 bits is another one.
    bool wide = false;
    int total = 1;
    int number = 1; ///< from 1

    bool operator==(const Concatenation &) const = default;
};

/// In the first octet of a TPDU: its user data begin with a header (3GPP TS 23.040, 9.2.3.23).
inline constexpr int userDataHeaderIndicator = 0x40;

/// What the header of a message's user data says (3GPP TS 23.040, 9.2.3.24).
struct UserDataHeader
{
    std::optional<Concatenation> concatenation;
    /// The application port that the message is for, -1 for none.
    int port = -1;
    GsmLanguage locking = GsmLanguage::Default;
    GsmLanguage single = GsmLanguage::Default;

    /// Reads the information elements behind the header's length. Those that aren't known are
    /// skipped. Of one that comes twice the last counts, as does the later of two that exclude each
    /// other; a concatenation that makes no sense is as if it weren't there.
    /// @return nothing if an element goes beyond the end
    static std::optional<UserDataHeader> parse(QByteArrayView elements);
};

} // namespace norvane
