#pragma once

#include "NorvaneHistory/PagedTableModel.h"

namespace norvane {

/// What was received, the latest first.
class InboxModel : public PagedTableModel<ReceivedMessage, InboxFilter>
{
    Q_OBJECT

public:
    /// @param source  must outlive this object
    explicit InboxModel(HistorySource &source, QObject *parent = nullptr);

    /// Marks a row as read, here and in the engine.
    void markRead(int row);

protected:
    void fetchPage(const PageRequest &request, const Answer &answer) override;
    QVariant dataOf(const ReceivedMessage &row, int column, int role) const override;
    /// What was read since the unread ones were asked for stays until they are asked for again.
    void complete(QList<ReceivedMessage> &top, bool isWhole) const override;

private:
    HistorySource &m_source;
};

} // namespace norvane
