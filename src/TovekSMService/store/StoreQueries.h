#pragma once

namespace norvane {

/// What the dispatcher asks again and again, however many messages wait. None of these may read the
/// whole queue.
namespace StoreQueries {

#define NORVANE_MESSAGE                                                                            \
    "SELECT id, delivery_date, due, phone, text, attempts, parts_sent, reference, original_date "  \
    "FROM message "

// What is in doubt is reported, and never sent by itself, whatever else happens.
inline constexpr char first[] = NORVANE_MESSAGE "WHERE state <> 1 ORDER BY due, id LIMIT ?";
inline constexpr char firstDue[] = "SELECT due FROM message ORDER BY due, id LIMIT 1";
// The index holds the messages in progress alone; the second condition tells that it will do.
inline constexpr char interrupted[] =
    NORVANE_MESSAGE "WHERE state = 1 AND state <> 0 ORDER BY due, id";
inline constexpr char releaseBetweenParts[] =
    "UPDATE message SET state = 0 WHERE state = 2 AND state <> 0";
inline constexpr char holdPartlySent[] =
    "UPDATE message SET state = 2 WHERE state = 0 AND parts_sent > 0";

#undef NORVANE_MESSAGE

inline constexpr char beginPart[] =
    "UPDATE message SET state = 1, reference = ?, part_hash = ? WHERE id = ?";
inline constexpr char endPart[] = "UPDATE message SET state = 2, parts_sent = ? WHERE id = ?";
// A message of which parts were accepted stays in progress while it waits for the others.
#define NORVANE_WAITING "state = CASE WHEN parts_sent > 0 THEN 2 ELSE 0 END"
inline constexpr char cancelPart[] = "UPDATE message SET " NORVANE_WAITING " WHERE id = ?";
inline constexpr char postpone[] =
    "UPDATE message SET " NORVANE_WAITING ", attempts = ?, delivery_date = ?, due = ? WHERE id = ?";
#undef NORVANE_WAITING
inline constexpr char keepOutcome[] =
    "INSERT INTO outcome (message_id, delivery_date, phone, text, code, network_reference, at, "
    "reported, queued_at) SELECT id, original_date, phone, text, ?, ?, ?, ?, queued_at FROM "
    "message "
    "WHERE id = ?";
inline constexpr char removeMessage[] = "DELETE FROM message WHERE id = ?";
inline constexpr char unreportedFailures[] =
    "SELECT id, phone, text, code FROM outcome WHERE reported = 0 ORDER BY id";
#define NORVANE_OLD "(SELECT id FROM outcome WHERE reported = 1 AND at < ? ORDER BY at, id LIMIT ?)"
// The search index is rid of them later.
inline constexpr char noteForgotten[] = "INSERT INTO outcome_forgotten (id, phone, text) "
                                        "SELECT id, phone, text FROM outcome "
                                        "WHERE id IN " NORVANE_OLD;
inline constexpr char pruneOutcomes[] = "DELETE FROM outcome WHERE id IN " NORVANE_OLD;
#undef NORVANE_OLD

} // namespace StoreQueries

} // namespace norvane
