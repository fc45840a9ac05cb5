#pragma once

#include "contract/Messages.h"

#include <QVariantList>

namespace norvane {

/// The end of a query for a page of what a MessageFilter lets through, the latest first, from a
/// table that has the columns id, at, phone and text. filteredPage() gives its values.
#define NORVANE_FILTERED_PAGE                                                                      \
    "WHERE at >= ? AND (? = '' OR at < ?) AND "                                                    \
    "(? = '' OR phone LIKE ? ESCAPE '\\' OR text LIKE ? ESCAPE '\\') "                             \
    "ORDER BY id DESC LIMIT ? OFFSET ?"

QVariantList filteredPage(const MessageFilter &filter, qint64 offset, qint64 limit);

} // namespace norvane
