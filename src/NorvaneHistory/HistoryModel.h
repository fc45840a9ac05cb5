#pragma once

#include "NorvaneHistory/PagedTableModel.h"

namespace norvane {

/// What became of every message, the latest first.
class HistoryModel : public PagedTableModel<HistoryRow>
{
    Q_OBJECT

public:
    enum Column { Moment, Phone, Message, State, columns };

    /// @param source  must outlive this object
    explicit HistoryModel(HistorySource &source, QObject *parent = nullptr);

    const HistoryFilter &filter() const { return m_filter; }
    /// Shows what this lets through, which is fetched unless it is shown already.
    void setFilter(const HistoryFilter &filter);

    /// Fetches the present state of rows that are shown.
    void refreshRows(int first, int last);

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
    void loaded(const SourceResult<Page<HistoryRow>> &page) override;

private:
    HistorySource &m_source;
    HistoryFilter m_filter;
};

} // namespace norvane
