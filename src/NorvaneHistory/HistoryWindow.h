#pragma once

#include "NorvaneHistory/HistorySource.h"
#include "NorvaneHistory/OutputActions.h"

#include <QTimer>
#include <QWidget>

class QLabel;
class QPushButton;
class QTabWidget;

namespace norvane {

class FilterBar;
class InboxTab;
class MessageActions;
class MessagesTab;
class SummaryTab;

/// The window "Norvane SMS - Historial".
class HistoryWindow : public QWidget
{
    Q_OBJECT

public:
    /// @param source  must outlive this object
    HistoryWindow(HistorySource &source, const OutputChoices &choices, QWidget *parent = nullptr);

private:
    QWidget *makeBottom();
    void makeShortcuts();
    void applyFilter();
    void clearStatus();
    void connected();
    void returned();
    void reloadFailed(const SourceFailure &failure);
    void failed(const SourceFailure &failure);
    void refresh();
    OutputList outputList(OutputForm form) const;
    bool hasList() const;

    HistorySource &m_source;
    FilterBar *m_filter;
    MessageActions *m_actions;
    OutputActions *m_output;
    QTabWidget *m_tabs;
    MessagesTab *m_messages;
    InboxTab *m_inbox;
    SummaryTab *m_summary;
    QLabel *m_status;
    QPushButton *m_retry;
    QPushButton *m_export = nullptr;
    QPushButton *m_print = nullptr;
    bool m_hasToReload = false; ///< rows are shown that the filter of now may not let through
    QTimer m_typing;            ///< runs while the operator types
};

} // namespace norvane
