#include "NorvaneHistory/HistoryModel.h"

#include "NorvaneHistory/HistoryTexts.h"
#include "NorvaneHistory/StateSymbol.h"
#include "foundation/TextId.h"

#include <QGuiApplication>
#include <QPalette>

namespace norvane {

HistoryModel::HistoryModel(HistorySource &source, QObject *parent)
    : PagedTableModel(
          {TextId::MomentColumn, TextId::PhoneColumn, TextId::MessageColumn, TextId::StateColumn},
          parent),
      m_source(source)
{}

void HistoryModel::refreshRows(int first, int last)
{
    m_rows.start([this, first, last] { fetchRows(first, last); });
}

void HistoryModel::fetchRows(int first, int last)
{
    QList<qint64> ids;
    for (int at = std::max(first, 0); at <= last && at < rowCount(); ++at) {
        if (const HistoryRow *const shown = row(at))
            ids.append(shown->id);
    }
    if (ids.isEmpty()) {
        m_rows.finish();
        return;
    }
    m_source.fetchRows(this, ids, [this](const SourceResult<QList<HistoryRow>> &rows) {
        m_rows.finish();
        if (!rows || !isOfFilter())
            return;
        // One that has left the queue, or has become what isn't asked for, stands elsewhere now.
        QList<HistoryRow> unmoved;
        for (const HistoryRow &fresh : *rows) {
            const auto at = rowOf(fresh.id);
            const HistoryRow *const shown = at ? row(*at) : nullptr;
            if (!shown)
                continue;
            if (!filter().states.testFlag(fresh.state) ||
                (!filter().to.isEmpty() && fresh.at >= filter().to))
                remove(fresh.id);
            else if (shown->at != fresh.at)
                relocate(fresh);
            else
                unmoved.append(fresh);
        }
        update(unmoved);
    });
}

QVariant HistoryModel::dataOf(const HistoryRow &row, int column, int role) const
{
    switch (role) {
    case Qt::DisplayRole:
    case Qt::AccessibleTextRole:
        return column == State ? HistoryTexts::stateName(row.state)
                               : commonText(column, row.at, row.phone, row.text);
    case Qt::DecorationRole:
        return column == State ? StateSymbol::icon(row.state, QGuiApplication::palette())
                               : QVariant();
    default:
        return {};
    }
}

void HistoryModel::fetchPage(const PageRequest &request, const Answer &answer)
{
    m_source.fetchHistory(this, filter(), request, answer);
}

} // namespace norvane
