#pragma once

#include "NorvaneHistory/DetailsPane.h"
#include "NorvaneHistory/HistorySource.h"
#include "NorvaneHistory/ListOutput.h"
#include "NorvaneHistory/SingleFlight.h"

#include <QCheckBox>
#include <QWidget>

#include <array>

namespace norvane {

class ChosenPhone;
class FilterBar;
class HistoryModel;
class ListPane;
class MessageActions;
class MessageTableModel;

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
    OutputList outputList(OutputForm form) const;
    /// Tells how its fetching went.
    const MessageTableModel &model() const;

protected:
    void changeEvent(QEvent *event) override;

private:
    struct MomentAndStep
    {
        QString at; ///< as the store has it
        DetailsPane::Step step;
    };

    QWidget *makeStates();
    void drawStates();
    void choose(int row);
    void showChosen(const HistoryRow &row);
    void fetchSteps();
    void fetchAnswers();
    void refreshVisibleRows();
    void refreshChosen();
    void showSteps();

    HistorySource &m_source;
    const FilterBar &m_filter;
    HistoryModel *m_model;
    ListPane *m_pane = nullptr;
    ChosenPhone *m_phone = nullptr;
    std::array<QCheckBox *, 6> m_states{};
    HistoryRow m_chosen; ///< its id is 0 while none is chosen
    SingleFlight m_stepsFlight;
    SingleFlight m_answersFlight;
    QList<MomentAndStep> m_steps;
    QList<MomentAndStep> m_answers; ///< what came from that phone since
};

} // namespace norvane
