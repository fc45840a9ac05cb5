#pragma once

#include "common/NumberedFailure.h"

#include <optional>

namespace norvane {

/// The NumberedFailure that `call` raises, nothing when it raises none.
template <typename Call>
std::optional<NumberedFailure> raisedFailure(Call &&call)
{
    try {
        call();
    } catch (const NumberedFailure &failure) {
        return failure;
    }
    return std::nullopt;
}

/// The number of the NumberedFailure that `call` raises, 0 when it raises none.
template <typename Call>
qint32 raisedNumber(Call &&call)
{
    const auto failure = raisedFailure(call);
    return failure ? failure->number() : 0;
}

} // namespace norvane
