#pragma once

#include "NorvaneHistory/HistorySource.h"
#include "NorvaneHistory/ListOutput.h"

#include <QWidget>

class QCheckBox;

namespace norvane {

class ChosenPhone;
class FilterBar;
class InboxModel;
class ListPane;
class MessageActions;
class MessageTableModel;

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
    OutputList outputList(OutputForm form) const;
    /// Tells how its fetching went.
    const MessageTableModel &model() const;

private:
    void choose(int row);

    HistorySource &m_source;
    const FilterBar &m_filter;
    InboxModel *m_model;
    QCheckBox *m_unreadOnly;
    ListPane *m_pane;
    ChosenPhone *m_phone;
    qint64 m_chosen = 0; ///< the id of the chosen message, 0 for none
};

} // namespace norvane
