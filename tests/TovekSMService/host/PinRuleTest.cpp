#include "TovekSMService/host/PinRule.h"

#include <gtest/gtest.h>

namespace norvane {

namespace {

TEST(PinRule, triesAnUnknownPinOnceAndAnAcceptedOneAlways)
{
    using Decision = PinGate::Decision;
    const struct
    {
        PinHistory history;
        std::optional<int> triesLeft;
        Decision expected;
    } rows[] = {
        {PinHistory::NeverTried, std::nullopt, Decision::Try},
        {PinHistory::NeverTried, 3, Decision::Try},
        {PinHistory::NeverTried, 2, Decision::Try},
        {PinHistory::NeverTried, 1, Decision::TooFewTries},
        {PinHistory::NeverTried, 0, Decision::TooFewTries},
        {PinHistory::Tried, 3, Decision::AlreadyTried},
        {PinHistory::Tried, std::nullopt, Decision::AlreadyTried},
        {PinHistory::Refused, 3, Decision::AlreadyTried},
        {PinHistory::Accepted, 3, Decision::Try},
        {PinHistory::Accepted, 1, Decision::Try},
        {PinHistory::Accepted, std::nullopt, Decision::Try},
    };
    for (const auto &row : rows)
        EXPECT_EQ(decidePinAttempt(row.history, row.triesLeft), row.expected)
            << static_cast<int>(row.history) << ' ' << row.triesLeft.value_or(-1);
}

} // namespace

} // namespace norvane
