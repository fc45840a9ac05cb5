#pragma once

namespace norvane {

// What the statements about outcomes have in common.

/// The state of an outcome, as MessageState.
#define NORVANE_STATE                                                                              \
    "CASE WHEN code = -39 THEN 32 WHEN code <> 1 THEN 16 WHEN delivery = 2 THEN 4 "                \
    "WHEN delivery = 3 THEN 8 ELSE 2 END"
/// The columns of a row of the history.
#define NORVANE_OUTCOME                                                                            \
    "outcome.id, message_id, at, delivery_date, phone, text, " NORVANE_STATE ", code, "            \
    "delivered_at"
/// What a text is looked for in.
#define NORVANE_COMPARED "outcome.id, phone, text"
/// From, to, to, states.
#define NORVANE_OUTCOME_FILTER "at >= ? AND (? = '' OR at < ?) AND (" NORVANE_STATE ") & ? <> 0"

} // namespace norvane
