#include "TovekSMService/history/PlacedRow.h"

#include "TovekSMService/store/StoreRow.h"

namespace norvane {

PlacedRow PlacedRow::of(const StoreRow &row)
{
    HistoryRow message{row.value(1).toLongLong(), row.value(2).toString(),
                       row.value(3).toString(),   row.value(4).toString(),
                       row.value(5).toString(),   static_cast<MessageState>(row.value(6).toUInt()),
                       row.value(7).toInt(),      {}};
    if (message.state == MessageState::Delivered)
        message.deliveredAt = row.value(8).toString();
    return {row.value(0).toLongLong(), message};
}

} // namespace norvane
