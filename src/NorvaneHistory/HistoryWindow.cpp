#include "NorvaneHistory/HistoryWindow.h"

#include "NorvaneHistory/FilterBar.h"
#include "NorvaneHistory/InboxTab.h"
#include "NorvaneHistory/MessageActions.h"
#include "NorvaneHistory/MessageTableModel.h"
#include "NorvaneHistory/MessagesTab.h"
#include "NorvaneHistory/SummaryTab.h"
#include "foundation/Globals.h"
#include "foundation/TextId.h"

#include <QLabel>
#include <QPushButton>
#include <QShortcut>
#include <QTabWidget>
#include <QVBoxLayout>

namespace norvane {

using namespace Qt::StringLiterals;

HistoryWindow::HistoryWindow(HistorySource &source, const OutputChoices &choices, QWidget *parent)
    : QWidget(parent), m_source(source), m_filter(new FilterBar(this)),
      m_actions(new MessageActions(source, this)), m_output(new OutputActions(choices, this)),
      m_tabs(new QTabWidget(this)), m_messages(new MessagesTab(source, *m_filter, *m_actions)),
      m_inbox(new InboxTab(source, *m_filter, *m_actions)), m_summary(new SummaryTab(source)),
      m_status(new QLabel(this)), m_retry(new QPushButton(GS(TextId::RetryButton), this))
{
    constexpr QSize size(920, 660);
    constexpr int typingPause = 40; // ms behind a key until the lists are searched
    setObjectName(u"HistoryWindow"_s);
    setWindowTitle(GS(TextId::HistoryTitle));
    m_tabs->setObjectName(u"tabs"_s);
    m_tabs->addTab(m_messages, GS(TextId::MessagesTab));
    m_tabs->addTab(m_inbox, GS(TextId::InboxTab));
    m_tabs->addTab(m_summary, GS(TextId::SummaryTab));

    auto *const layout = new QVBoxLayout(this);
    layout->addWidget(m_filter);
    layout->addWidget(m_tabs, 1);
    layout->addWidget(makeBottom());
    makeShortcuts();

    m_typing.setSingleShot(true);
    m_typing.setInterval(typingPause);
    connect(&m_typing, &QTimer::timeout, this, &HistoryWindow::applyFilter);
    connect(m_filter, &FilterBar::changed, &m_typing, qOverload<>(&QTimer::start));
    connect(&m_source, &HistorySource::connected, this, &HistoryWindow::connected);
    connect(&m_source, &HistorySource::failed, this, &HistoryWindow::failed);
    connect(&m_source, &HistorySource::returned, this, &HistoryWindow::returned);
    connect(&m_source, &HistorySource::changed, this, &HistoryWindow::refresh);
    connect(&m_messages->model(), &MessageTableModel::reloaded, this, &HistoryWindow::clearStatus);
    for (const MessageTableModel *const model : {&m_messages->model(), &m_inbox->model()}) {
        connect(model, &MessageTableModel::reloadFailed, this, &HistoryWindow::reloadFailed);
        connect(model, &MessageTableModel::fetchFailed, this, &HistoryWindow::failed);
        connect(model, &MessageTableModel::recovered, this, &HistoryWindow::clearStatus);
    }
    connect(&m_inbox->model(), &MessageTableModel::changeFailed, this,
            [this](const SourceFailure &failure) {
                this->failed({failure.kind, GS(TextId::NotMarkedRead, failure.text)});
            });
    connect(m_summary, &SummaryTab::fetched, this, &HistoryWindow::clearStatus);
    connect(m_summary, &SummaryTab::failed, this, &HistoryWindow::failed);
    connect(m_tabs, &QTabWidget::currentChanged, this, [this] {
        m_filter->setEnabled(hasList());
        m_export->setEnabled(hasList());
        m_print->setEnabled(hasList());
    });
    resize(size);
    m_filter->focusText();
}

QWidget *HistoryWindow::makeBottom()
{
    auto *const bottom = new QWidget(this);
    auto *const layout = new QHBoxLayout(bottom);
    layout->setContentsMargins(0, 0, 0, 0);
    m_status->setObjectName(u"lblStatus"_s);
    m_status->setTextFormat(Qt::PlainText);
    m_status->setWordWrap(true);
    m_retry->setObjectName(u"btnRetry"_s);
    m_retry->hide();
    m_export = new QPushButton(GS(TextId::ExportButton), bottom);
    m_export->setObjectName(u"btnExport"_s);
    m_print = new QPushButton(GS(TextId::PrintButton), bottom);
    m_print->setObjectName(u"btnPrint"_s);
    layout->addWidget(m_status, 1);
    layout->addWidget(m_retry);
    layout->addWidget(m_export);
    layout->addWidget(m_print);
    connect(m_retry, &QPushButton::clicked, &m_source, &HistorySource::connectToEngine);
    connect(m_export, &QPushButton::clicked, this,
            [this] { m_output->exportCsv(outputList(OutputForm::Stored)); });
    connect(m_print, &QPushButton::clicked, this,
            [this] { m_output->printList(outputList(OutputForm::Shown)); });
    return bottom;
}

void HistoryWindow::makeShortcuts()
{
    const auto add = [this](const QKeySequence &keys, const auto &action) {
        connect(new QShortcut(keys, this), &QShortcut::activated, this, action);
    };
    add(QKeySequence::Find, [this] { m_filter->focusText(); });
    add(QKeySequence::Refresh, [this] { m_source.connectToEngine(); });
    add(QKeySequence::Print, [this] { m_print->click(); });
    add(QKeySequence::Close, [this] { close(); });
}

void HistoryWindow::applyFilter()
{
    m_messages->applyFilter();
    m_inbox->applyFilter();
}

void HistoryWindow::clearStatus()
{
    m_status->clear();
    m_retry->hide();
}

void HistoryWindow::connected()
{
    clearStatus();
    m_hasToReload = false;
    applyFilter();
    m_messages->reload();
    m_inbox->reload();
    m_summary->reload();
}

/// Whoever reads on while the engine comes back stays where they are.
void HistoryWindow::returned()
{
    if (m_hasToReload) {
        connected();
        return;
    }
    clearStatus();
    refresh();
}

void HistoryWindow::reloadFailed(const SourceFailure &failure)
{
    m_hasToReload = true;
    failed(failure);
}

void HistoryWindow::failed(const SourceFailure &failure)
{
    if (failure.kind == SourceFailure::Kind::Superseded)
        return;
    m_status->setText(failure.text);
    m_retry->show();
}

void HistoryWindow::refresh()
{
    applyFilter(); // a range of days moves on at midnight
    m_messages->refresh();
    m_inbox->refresh();
    m_summary->refresh();
}

bool HistoryWindow::hasList() const
{
    return m_tabs->currentWidget() != m_summary;
}

OutputList HistoryWindow::outputList(OutputForm form) const
{
    return m_tabs->currentWidget() == m_inbox ? m_inbox->outputList(form)
                                              : m_messages->outputList(form);
}

} // namespace norvane
