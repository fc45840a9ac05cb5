#pragma once

#include "TovekSMService/store/StoreFailure.h"

#include <gtest/gtest.h>

namespace norvane {

/// The value of an operation that is expected to succeed; an empty one where it fails.
template <typename Value>
Value given(const StoreResult<Value> &result)
{
    if (result)
        return *result;
    ADD_FAILURE() << result.error().text().toStdString();
    return {};
}

/// Expects an operation to succeed.
template <typename Value>
void done(const StoreResult<Value> &result)
{
    EXPECT_TRUE(result) << result.error().text().toStdString();
}

} // namespace norvane
