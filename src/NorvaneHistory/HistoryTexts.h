#pragma once

#include "contract/History.h"

#include <QString>

#include <array>

namespace norvane {

/// The window's words for what the engine gives.
namespace HistoryTexts {

/// Every state, in the order in which a message passes through them.
inline constexpr std::array states = {MessageState::Waiting,   MessageState::Sent,
                                      MessageState::Delivered, MessageState::Refused,
                                      MessageState::Failed,    MessageState::InDoubt};

/// One word; that of a failure for a state that isn't known.
QString stateName(MessageState state);

/// "31/12/2026 23:59:59" for the store's form; what isn't in that form as it is.
QString moment(const QString &stored);
/// "31/12/2026"
QString day(const QString &stored);

/// What happened, with the number of the part where there are several.
QString stepName(const HistoryEvent &event);
/// Why, or under which reference; may be empty.
QString stepDetail(const HistoryEvent &event);

/// "ERR_NO_RESPOND (-39)"
QString errorText(qint32 code);
/// The network's words for the status of a message that it gave up, with its number (3GPP
/// TS 23.040, 9.2.3.15); the number alone for one without a word, and "unknown" for -1.
QString networkStatus(qint32 status);
QString reason(const FailureReason &reason);
/// "up to 5 min", "more than 24 h"
QString delay(const QList<DeliveryDelay> &delays, qsizetype at);

/// `text` as one line of a list: what would break the line is a blank, and nothing is longer than
/// a list can show.
QString oneLine(const QString &text);
/// A phone, or a sender's name, as a part of a sentence, whose order it doesn't turn.
QString phone(const QString &text);

} // namespace HistoryTexts

} // namespace norvane
