#pragma once

#include "NorvaneHistory/HistorySource.h"
#include "NorvaneHistory/ListOutput.h"

#include <QWidget>

class QCheckBox;

namespace norvane {

class DetailsPane;
class FilterBar;
class InboxModel;
class MessageActions;
class SteadyTableView;

/// What was received.
class InboxTab : public QWidget
{
    Q_OBJECT

public:
    /// @param source, filter, actions  must outlive this object
    InboxTab(HistorySource &source, const FilterBar &filter, MessageActions &actions,
             QWidget *parent = nullptr);

    void applyFilter();
    void refresh();
    void reload();
    OutputList outputList() const;
    SteadyTableView &list() { return *m_list; }

Q_SIGNALS:
    /// The list was fetched from its beginning.
    void loaded(int rows);
    void failed(const SourceFailure &failure);

private:
    void choose(int row);
    void fetchOptedOut();

    HistorySource &m_source;
    const FilterBar &m_filter;
    MessageActions &m_actions;
    InboxModel *m_model;
    QCheckBox *m_unreadOnly;
    SteadyTableView *m_list;
    DetailsPane *m_details;
    ReceivedMessage m_chosen; ///< its id is 0 while none is chosen
};

} // namespace norvane
