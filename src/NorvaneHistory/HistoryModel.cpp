#include "NorvaneHistory/HistoryModel.h"

#include "NorvaneHistory/HistoryTexts.h"
#include "NorvaneHistory/StateSymbol.h"
#include "foundation/Globals.h"
#include "foundation/TextId.h"

#include <QGuiApplication>
#include <QPalette>

namespace norvane {

using namespace Qt::StringLiterals;

namespace {

QString textOf(const HistoryRow &row, int column)
{
    switch (column) {
    case HistoryModel::Moment:
        return HistoryTexts::moment(row.at);
    case HistoryModel::Phone:
        return HistoryTexts::oneLine(row.phone);
    case HistoryModel::Message:
        return HistoryTexts::oneLine(row.text);
    case HistoryModel::State:
        return HistoryTexts::stateName(row.state);
    default:
        return {};
    }
}

} // namespace

HistoryModel::HistoryModel(HistorySource &source, QObject *parent)
    : PagedTableModel(parent), m_source(source)
{}

void HistoryModel::setFilter(const HistoryFilter &filter)
{
    if (filter == m_filter)
        return;
    m_filter = filter;
    reload();
}

void HistoryModel::refreshRows(int first, int last)
{
    QList<qint64> ids;
    for (int at = std::max(first, 0); at <= last && at < rowCount(); ++at) {
        if (const HistoryRow *const shown = row(at))
            ids.append(shown->id);
    }
    if (ids.isEmpty())
        return;
    m_source.fetchRows(this, ids, [this](const SourceResult<QList<HistoryRow>> &rows) {
        if (!rows)
            return;
        // One that has left the queue, or has become what isn't asked for, stands elsewhere now.
        QList<HistoryRow> unmoved;
        for (const HistoryRow &fresh : *rows) {
            const auto at = rowOf(fresh.id);
            const HistoryRow *const shown = at ? row(*at) : nullptr;
            if (!shown)
                continue;
            if (shown->at == fresh.at && m_filter.states.testFlag(fresh.state))
                unmoved.append(fresh);
            else
                remove(fresh.id);
        }
        update(unmoved);
    });
}

int HistoryModel::columnCount(const QModelIndex &parent) const
{
    return parent.isValid() ? 0 : static_cast<int>(columns);
}

QVariant HistoryModel::data(const QModelIndex &index, int role) const
{
    if (!index.isValid())
        return {};
    const HistoryRow *const shown = row(index.row());
    if (!shown)
        return role == Qt::DisplayRole && index.column() == Moment ? u"…"_s : QVariant();
    switch (role) {
    case Qt::DisplayRole:
    case Qt::AccessibleTextRole:
        return textOf(*shown, index.column());
    case Qt::DecorationRole:
        return index.column() == State ? StateSymbol::icon(shown->state, QGuiApplication::palette())
                                       : QVariant();
    default:
        return {};
    }
}

QVariant HistoryModel::headerData(int section, Qt::Orientation orientation, int role) const
{
    static constexpr std::array<qint32, columns> captions = {
        TextId::MomentColumn, TextId::PhoneColumn, TextId::MessageColumn, TextId::StateColumn};
    if (orientation != Qt::Horizontal || role != Qt::DisplayRole || section < 0 ||
        section >= columns)
        return {};
    return GS(captions.at(static_cast<std::size_t>(section)));
}

void HistoryModel::fetchPage(const PageRequest &request, const Answer &answer)
{
    m_source.fetchHistory(this, m_filter, request, answer);
}

void HistoryModel::loaded(const SourceResult<Page<HistoryRow>> &page)
{
    if (page)
        Q_EMIT reloaded();
    else
        Q_EMIT reloadFailed(page.error());
}

} // namespace norvane
