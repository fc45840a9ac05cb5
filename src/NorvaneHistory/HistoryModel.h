#pragma once

#include "NorvaneHistory/PagedTableModel.h"
#include "NorvaneHistory/SingleFlight.h"

namespace norvane {

/// What became of every message, the latest first.
class HistoryModel : public PagedTableModel<HistoryRow, HistoryFilter>
{
    Q_OBJECT

public:
    enum Column { State = commonColumns };

    /// @param source  must outlive this object
    explicit HistoryModel(HistorySource &source, QObject *parent = nullptr);

    /// Fetches the present state of rows that are shown, once the answer to an earlier call is
    /// there.
    void refreshRows(int first, int last);

protected:
    void fetchPage(const PageRequest &request, const Answer &answer) override;
    QVariant dataOf(const HistoryRow &row, int column, int role) const override;

private:
    void fetchRows(int first, int last);

    HistorySource &m_source;
    SingleFlight m_rows;
};

} // namespace norvane
