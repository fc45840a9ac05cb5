#pragma once

#include "NorvaneHistory/PagedTableModel.h"

namespace norvane {

/// What was received, the latest first.
class InboxModel : public PagedTableModel<ReceivedMessage>
{
    Q_OBJECT

public:
    enum Column { Moment, Phone, Message, columns };

    /// @param source  must outlive this object
    explicit InboxModel(HistorySource &source, QObject *parent = nullptr);

    const InboxFilter &filter() const { return m_filter; }
    /// Shows what this lets through, which is fetched unless it is shown already.
    void setFilter(const InboxFilter &filter);

    /// Marks a row as read, here and in the engine.
    void markRead(int row);

    int columnCount(const QModelIndex &parent = {}) const override;
    QVariant data(const QModelIndex &index, int role) const override;
    QVariant headerData(int section, Qt::Orientation orientation, int role) const override;

Q_SIGNALS:
    /// The list was fetched from its beginning.
    void reloaded();
    /// It couldn't be; the rows are those of before.
    void reloadFailed(const SourceFailure &failure);

protected:
    void fetchPage(const PageRequest &request, const Answer &answer) override;
    /// What was read since the unread ones were asked for stays until they are asked for again.
    void complete(QList<ReceivedMessage> &top, bool isWhole) const override;
    void loaded(const SourceResult<Page<ReceivedMessage>> &page) override;

private:
    HistorySource &m_source;
    InboxFilter m_filter;
};

} // namespace norvane
