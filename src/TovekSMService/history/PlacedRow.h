#pragma once

#include "contract/History.h"

namespace norvane {

class StoreRow;

/// A row of the history, and where it lies.
struct PlacedRow
{
    qint64 place = 0; ///< its id in its table
    HistoryRow row;

    /// Of a row with the columns of NORVANE_OUTCOME or NORVANE_WAITING.
    static PlacedRow of(const StoreRow &row);
};

} // namespace norvane
