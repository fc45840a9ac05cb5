#pragma once

#include "NorvaneHistory/DetailsPane.h"
#include "NorvaneHistory/HistorySource.h"
#include "NorvaneHistory/ListOutput.h"

#include <QCheckBox>
#include <QWidget>

#include <array>

namespace norvane {

class FilterBar;
class HistoryModel;
class MessageActions;
class SteadyTableView;

/// What became of every message.
class MessagesTab : public QWidget
{
    Q_OBJECT

public:
    /// @param source, filter, actions  must outlive this object
    MessagesTab(HistorySource &source, const FilterBar &filter, MessageActions &actions,
                QWidget *parent = nullptr);

    /// Shows what the filter lets through now.
    void applyFilter();
    /// Looks for what has changed.
    void refresh();
    /// Fetches the list from its beginning.
    void reload();
    OutputList outputList() const;
    SteadyTableView &list() { return *m_list; }

Q_SIGNALS:
    /// The list was fetched from its beginning.
    void loaded(int rows);
    void failed(const SourceFailure &failure);

protected:
    void changeEvent(QEvent *event) override;

private:
    QWidget *makeStates();
    void drawStates();
    void choose(int row);
    void showChosen(const HistoryRow &row);
    void fetchSteps();
    void fetchAnswers();
    void fetchOptedOut();
    void refreshChosen();
    void showSteps();

    HistorySource &m_source;
    const FilterBar &m_filter;
    MessageActions &m_actions;
    HistoryModel *m_model;
    SteadyTableView *m_list = nullptr;
    DetailsPane *m_details = nullptr;
    std::array<QCheckBox *, 6> m_states{};
    HistoryRow m_chosen; ///< its id is 0 while none is chosen
    QList<DetailsPane::Step> m_steps;
    QList<DetailsPane::Step> m_answers; ///< what came from that phone since
};

} // namespace norvane
