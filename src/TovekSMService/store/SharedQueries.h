#pragma once

namespace norvane {

/// What is asked of a queue that several engines share. Each of these goes by an index, however
/// many messages wait.
namespace SharedQueries {

/// Shows that the engine's epoch goes on, and keeps it from being ended until the commit.
inline constexpr char fence[] =
    "UPDATE engine SET seen = clock_timestamp() WHERE id = ? AND epoch = ? RETURNING 1";

/// Waits for whoever is taking over what the engine holds.
inline constexpr char awaitTakeover[] = "SELECT 1 FROM engine WHERE id = ? FOR NO KEY UPDATE";

#define NORVANE_FIRST                                                                              \
    "SELECT id, delivery_date, due, phone, text, attempts, parts_sent, reference, original_date "  \
    "FROM message WHERE state <> 1 AND (engine IS NULL OR engine = ?) "                            \
    "AND (refused_by IS NULL OR refused_by <> ? OR refused_until <= ?) "
// A message waits for the engine that served its recipient last, if that lives and sends.
#define NORVANE_OF_SENDER                                                                          \
    "AND NOT EXISTS (SELECT 1 FROM recipient JOIN engine other ON other.id = recipient.engine "    \
    "WHERE recipient.phone = message.phone AND other.id <> ? AND other.state = 'running' AND "     \
    "other.seen > clock_timestamp() - make_interval(secs => ?) AND message.due > ?) "
#define NORVANE_ORDER "ORDER BY due, id LIMIT ?"
#define NORVANE_TO_BEGIN " FOR UPDATE OF message SKIP LOCKED"

inline constexpr char first[] = NORVANE_FIRST NORVANE_ORDER;
inline constexpr char firstToBegin[] = NORVANE_FIRST NORVANE_ORDER NORVANE_TO_BEGIN;
inline constexpr char firstOfSender[] = NORVANE_FIRST NORVANE_OF_SENDER NORVANE_ORDER;
inline constexpr char firstOfSenderToBegin[] =
    NORVANE_FIRST NORVANE_OF_SENDER NORVANE_ORDER NORVANE_TO_BEGIN;

#undef NORVANE_TO_BEGIN
#undef NORVANE_ORDER
#undef NORVANE_OF_SENDER
#undef NORVANE_FIRST

inline constexpr char firstDue[] =
    "SELECT due FROM message WHERE state <> 1 ORDER BY due, id LIMIT 1";

inline constexpr char insert[] =
    "INSERT INTO message (delivery_date, original_date, due, phone, text, queued_at) "
    "SELECT date, date, due, phone, text, ?::text FROM unnest(?::text[], ?::text[], ?::text[], "
    "?::text[]) "
    "WITH ORDINALITY AS new(date, due, phone, text, number) ORDER BY number RETURNING id";

/// A row that gets another phone or text begins anew, and is anybody's.
inline constexpr char change[] =
    "UPDATE message SET phone = new.phone, text = new.text, "
    "parts_sent = CASE WHEN NOT new.differs THEN parts_sent ELSE 0 END, "
    "reference = CASE WHEN NOT new.differs THEN reference END, "
    "attempts = CASE WHEN NOT new.differs THEN attempts ELSE 0 END, "
    "engine = CASE WHEN NOT new.differs THEN engine END, "
    "refused_by = CASE WHEN NOT new.differs THEN refused_by END "
    "FROM (SELECT given.id, given.phone, given.text, "
    "given.phone <> present.phone OR given.text <> present.text AS differs "
    "FROM (SELECT ?::bigint AS id, ?::text AS phone, ?::text AS text) given "
    "JOIN message present USING (id)) new WHERE message.id = new.id AND state = 0 "
    "RETURNING 1";

/// Removes the next messages that wait behind an id, so many at most. Gives the last of those that
/// it looked at, nothing behind the end, and how many it removed.
inline constexpr char removeSome[] =
    "WITH next AS (SELECT id FROM message WHERE state = 0 AND id > ? ORDER BY id LIMIT ?), "
    "gone AS (DELETE FROM message USING next WHERE message.id = next.id AND state = 0 "
    "RETURNING 1) SELECT (SELECT max(id) FROM next), (SELECT count(*) FROM gone)";

inline constexpr char begin[] =
    "UPDATE message SET state = 1, engine = ?, epoch = ?, "
    "reference = nullif(part.reference, '')::int, part_hash = part.hash::bytea "
    "FROM unnest(?::bigint[], ?::text[], ?::text[]) AS part(id, reference, hash) "
    "WHERE message.id = part.id";

// Those that the engine holds in an epoch, of which a part is leaving.
#define NORVANE_LEAVING "engine = ? AND epoch = ? AND state = 1"
// A message of which parts were accepted stays in progress, and with its engine.
#define NORVANE_WAITING                                                                            \
    "state = CASE WHEN parts_sent > 0 THEN 2 ELSE 0 END, "                                         \
    "engine = CASE WHEN parts_sent > 0 THEN engine END"

inline constexpr char endPart[] =
    "UPDATE message SET state = 2, parts_sent = ? WHERE id = ? AND " NORVANE_LEAVING;
inline constexpr char cancel[] =
    "UPDATE message SET " NORVANE_WAITING " WHERE id = ANY (?::bigint[]) AND " NORVANE_LEAVING;
inline constexpr char releaseLeaving[] =
    "UPDATE message SET " NORVANE_WAITING
    " WHERE engine = ? AND state = 1 AND epoch = ANY (?::bigint[]) AND epoch < ?";
inline constexpr char postpone[] =
    "UPDATE message SET " NORVANE_WAITING ", attempts = ?, delivery_date = ?, due = ? "
    "WHERE id = ? AND " NORVANE_LEAVING;
inline constexpr char makeWay[] =
    "UPDATE message SET " NORVANE_WAITING ", refused_by = ?, refused_until = ? "
    "WHERE id = ? AND " NORVANE_LEAVING;
inline constexpr char interrupted[] =
    "SELECT id, delivery_date, due, phone, text, attempts, parts_sent, reference, original_date "
    "FROM message WHERE engine = ? AND epoch <= ? AND state = 1 ORDER BY due, id";

#undef NORVANE_WAITING

#define NORVANE_COUNT_GONE "queued = queued - (SELECT count(*) FROM gone)"

/// Gives the outcome's id, and whether the message was in the queue; of one that was finished
/// before, by a commit whose answer was lost, the outcome that it has. A message that waits may be
/// finished by any engine, one that is leaving by the engine that holds it, in that epoch or a
/// later one.
inline constexpr char finish[] =
    "WITH gone AS (DELETE FROM message WHERE id = ? AND ((state = 1 AND engine = ? AND "
    "epoch <= ?) OR (state <> 1 AND (engine IS NULL OR engine = ?))) "
    "RETURNING id, original_date, phone, text, epoch, queued_at), "
    "kept AS (INSERT INTO outcome (message_id, delivery_date, phone, text, code, "
    "network_reference, at, reported, engine, epoch, reporter, queued_at) "
    "SELECT id, original_date, phone, text, ?::int, ?::int, ?::text, ?::smallint, ?::int, "
    "coalesce(epoch, ?::bigint), ?::int, queued_at FROM gone RETURNING id), "
    "counted AS (UPDATE engine SET " NORVANE_COUNT_GONE " WHERE id = ?) "
    "SELECT id, 1 FROM kept UNION ALL "
    "SELECT id, 0 FROM outcome WHERE message_id = ? AND engine = ? AND reporter = engine LIMIT 1";

// Of those that the engine doesn't hold any more, those that were reported as in doubt for its
// sake, in the epoch in which they began to leave, are sent all the same.
#define NORVANE_FINISH_SENT                                                                        \
    "WITH sent AS (SELECT * FROM unnest(?::bigint[], ?::text[], ?::text[]) "                       \
    "AS sent(id, reference, at)), "                                                                \
    "gone AS (DELETE FROM message USING sent WHERE message.id = sent.id AND " NORVANE_LEAVING      \
    " RETURNING message.id, original_date, phone, text, queued_at, sent.reference, sent.at), "     \
    "late AS (UPDATE outcome SET code = 1, reported = 1, at = sent.at, "                           \
    "network_reference = nullif(sent.reference, '')::int FROM sent "                               \
    "WHERE message_id = sent.id AND code = -39 AND engine = ? AND epoch = ?), "                    \
    "served AS (SELECT DISTINCT phone, ?::int AS engine FROM gone), "                              \
    "kept AS (INSERT INTO outcome (message_id, delivery_date, phone, text, code, "                 \
    "network_reference, at, reported, engine, epoch, reporter, queued_at) "                        \
    "SELECT id, original_date, phone, text, 1, nullif(reference, '')::int, at, 1, me, epoch, me, " \
    "queued_at "                                                                                   \
    "FROM gone, (SELECT ?::int AS me, ?::bigint AS epoch) this ORDER BY id) "
#define NORVANE_COUNT_SENT                                                                         \
    "UPDATE engine SET " NORVANE_COUNT_GONE ", sent_day = CURRENT_DATE, "                          \
    "sent = CASE WHEN sent_day = CURRENT_DATE THEN sent ELSE 0 END + (SELECT count(*) FROM gone) " \
    "WHERE id = ?"

inline constexpr char finishSent[] = NORVANE_FINISH_SENT NORVANE_COUNT_SENT;
inline constexpr char finishServed[] = NORVANE_FINISH_SENT
    ", remembered AS (INSERT INTO recipient (phone, engine, at) "
    "SELECT phone, engine, clock_timestamp() FROM served ON CONFLICT (phone) DO UPDATE "
    "SET engine = excluded.engine, at = excluded.at) " NORVANE_COUNT_SENT;

#undef NORVANE_COUNT_SENT
#undef NORVANE_FINISH_SENT
#undef NORVANE_COUNT_GONE
#undef NORVANE_LEAVING

} // namespace SharedQueries

} // namespace norvane
