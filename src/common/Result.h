#pragma once

#include <tl/expected.hpp>

#include <type_traits>
#include <utility>

namespace norvane {

/// What an operation returns: its value, or the failure that prevented it. Each layer has one type
/// of failure. A function that returns a result is declared `[[nodiscard]]`.
template <typename Value, typename Failure>
using Result = tl::expected<Value, Failure>;

/// A failure on its way into a `Result`: `return failed(StoreFailure(...));`
template <typename Failure>
tl::unexpected<std::decay_t<Failure>> failed(Failure &&failure)
{
    return tl::unexpected<std::decay_t<Failure>>(std::forward<Failure>(failure));
}

} // namespace norvane
