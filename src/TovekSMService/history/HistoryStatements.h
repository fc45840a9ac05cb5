#pragma once

namespace norvane {

// What the statements about outcomes and received messages have in common.

/// The state of an outcome, as MessageState.
#define NORVANE_STATE                                                                              \
    "CASE WHEN code = -39 THEN 32 WHEN code <> 1 THEN 16 WHEN delivery = 2 THEN 4 "                \
    "WHEN delivery = 3 THEN 8 ELSE 2 END"
/// The columns of a row of the history, of what left the queue and of what waits. An outcome whose
/// message never had an id here is known by its own one, below zero.
#define NORVANE_OUTCOME                                                                            \
    "outcome.id, CASE WHEN message_id = 0 THEN -outcome.id ELSE message_id END, at, "              \
    "delivery_date, phone, text, " NORVANE_STATE ", code, delivered_at"
#define NORVANE_WAITING "id, id, queued_at, delivery_date, phone, text, 1, 0, ''"
/// What a text is looked for in, behind the name of the table.
#define NORVANE_COMPARED ".id, phone, text"
/// From, to, to, states.
#define NORVANE_OUTCOME_FILTER "at >= ? AND (? = '' OR at < ?) AND (" NORVANE_STATE ") & ? <> 0"
/// Of received messages: from, to, to, whether only those that are unread.
#define NORVANE_RECEIVED_FILTER "at >= ? AND (? = '' OR at < ?) AND (? = 0 OR read = 0)"

} // namespace norvane
