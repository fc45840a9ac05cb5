#include "NorvaneHistory/MessagesTab.h"

#include "NorvaneHistory/FilterBar.h"
#include "NorvaneHistory/HistoryModel.h"
#include "NorvaneHistory/HistoryTexts.h"
#include "NorvaneHistory/MessageActions.h"
#include "NorvaneHistory/StateSymbol.h"
#include "NorvaneHistory/SteadyTableView.h"
#include "foundation/Globals.h"
#include "foundation/TextId.h"

#include <QEvent>
#include <QHBoxLayout>
#include <QHeaderView>
#include <QSplitter>

#include <algorithm>

namespace norvane {

using namespace Qt::StringLiterals;

namespace {

/// By which a phone is known in its several forms, with and without its country.
QString lastDigits(const QString &phone)
{
    constexpr qsizetype significant = 9;
    QString digits = phone;
    digits.removeIf([](QChar unit) { return unit < u'0' || unit > u'9'; });
    return digits.size() >= significant ? digits.right(significant) : phone;
}

QStringList fieldsOf(const HistoryRow &row)
{
    return {row.at,
            row.deliveryDate,
            row.phone,
            HistoryTexts::stateName(row.state),
            QString::number(row.code),
            row.text,
            row.deliveredAt};
}

void setWidths(QHeaderView &header, const QFontMetrics &metrics)
{
    constexpr int margin = 24; // pixels around a text
    header.resizeSection(HistoryModel::Moment,
                         metrics.horizontalAdvance(u"00/00/0000 00:00:00"_s) + margin);
    header.resizeSection(HistoryModel::Phone,
                         metrics.horizontalAdvance(u"+34 600 000 000 0"_s) + margin);
    int state = 0;
    for (const MessageState each : HistoryTexts::states)
        state = std::max(state, metrics.horizontalAdvance(HistoryTexts::stateName(each)));
    header.resizeSection(HistoryModel::State, state + 2 * margin);
    header.setSectionResizeMode(HistoryModel::Message, QHeaderView::Stretch);
}

} // namespace

MessagesTab::MessagesTab(HistorySource &source, const FilterBar &filter, MessageActions &actions,
                         QWidget *parent)
    : QWidget(parent), m_source(source), m_filter(filter), m_actions(actions),
      m_model(new HistoryModel(source, this))
{
    constexpr int listShare = 3;
    // The Tab key goes from one to the next as they are made.
    QWidget *const states = makeStates();
    m_list = new SteadyTableView(GS(TextId::MessagesTab).remove(u'&'), this);
    m_details = new DetailsPane(DetailsPane::Kind::Sent, this);
    m_list->setObjectName(u"grdMessages"_s);
    m_list->setModel(m_model);
    setWidths(*m_list->horizontalHeader(), m_list->fontMetrics());

    auto *const splitter = new QSplitter(Qt::Vertical, this);
    splitter->setChildrenCollapsible(false);
    splitter->addWidget(m_list);
    splitter->addWidget(m_details);
    splitter->setStretchFactor(0, listShare);
    splitter->setStretchFactor(1, 1);
    auto *const layout = new QVBoxLayout(this);
    layout->addWidget(states);
    layout->addWidget(splitter, 1);

    connect(m_list, &SteadyTableView::rowChosen, this, &MessagesTab::choose);
    connect(m_list, &SteadyTableView::scrolled, this,
            [this] { m_model->refreshRows(m_list->firstVisibleRow(), m_list->lastVisibleRow()); });
    connect(m_model, &HistoryModel::dataChanged, this, &MessagesTab::refreshChosen);
    connect(m_model, &HistoryModel::modelReset, this, [this] { choose(-1); });
    connect(m_model, &HistoryModel::reloadFailed, this, &MessagesTab::failed);
    connect(m_model, &HistoryModel::reloaded, this, [this] { Q_EMIT loaded(m_model->rowCount()); });
    connect(m_details, &DetailsPane::sendAgainRequested, this,
            [this] { m_actions.sendAgain(m_chosen); });
    connect(m_details, &DetailsPane::answerRequested, this,
            [this] { m_actions.answer(m_chosen.phone); });
    connect(m_details, &DetailsPane::optOutRequested, this,
            [this](bool isOptedOut) { m_actions.setOptedOut(m_chosen.phone, isOptedOut); });
    connect(&m_actions, &MessageActions::optOutsChanged, this, &MessagesTab::fetchOptedOut);
}

QWidget *MessagesTab::makeStates()
{
    auto *const group = new QWidget(this);
    auto *const layout = new QHBoxLayout(group);
    layout->setContentsMargins(0, 0, 0, 0);
    for (std::size_t at = 0; at < HistoryTexts::states.size(); ++at) {
        const MessageState state = HistoryTexts::states.at(at);
        auto *const box = new QCheckBox(HistoryTexts::stateName(state), group);
        box->setObjectName(u"chkState(%1)"_s.arg(static_cast<quint32>(state)));
        box->setChecked(true);
        connect(box, &QCheckBox::toggled, this, &MessagesTab::applyFilter);
        layout->addWidget(box);
        m_states.at(at) = box;
    }
    layout->addStretch();
    drawStates();
    return group;
}

void MessagesTab::drawStates()
{
    for (std::size_t at = 0; at < m_states.size(); ++at)
        m_states.at(at)->setIcon(
            StateSymbol::icon(HistoryTexts::states.at(at), palette(), QPalette::Window));
}

void MessagesTab::changeEvent(QEvent *event)
{
    QWidget::changeEvent(event);
    if (event->type() == QEvent::PaletteChange && m_states.front())
        drawStates();
}

void MessagesTab::applyFilter()
{
    HistoryFilter filter{m_filter.from(), m_filter.to(), m_filter.text(), {}};
    for (std::size_t at = 0; at < m_states.size(); ++at)
        filter.states.setFlag(HistoryTexts::states.at(at), m_states.at(at)->isChecked());
    m_model->setFilter(filter);
}

void MessagesTab::refresh()
{
    m_model->refresh();
    m_model->refreshRows(m_list->firstVisibleRow(), m_list->lastVisibleRow());
    if (m_chosen.id != 0) {
        fetchSteps();
        fetchAnswers();
    }
}

void MessagesTab::reload()
{
    m_model->reload();
}

void MessagesTab::choose(int row)
{
    const HistoryRow *const chosen = row >= 0 ? m_model->row(row) : nullptr;
    if (!chosen) {
        m_chosen = {};
        m_details->showNothing();
        return;
    }
    const bool isOther = chosen->id != m_chosen.id;
    showChosen(*chosen);
    if (!isOther)
        return;
    m_steps.clear();
    m_answers.clear();
    showSteps();
    m_details->setOptedOut(std::nullopt);
    fetchSteps();
    fetchAnswers();
    fetchOptedOut();
}

void MessagesTab::showChosen(const HistoryRow &row)
{
    m_chosen = row;
    m_details->showMessage(
        u"%1 · %2"_s.arg(HistoryTexts::oneLine(row.phone), HistoryTexts::stateName(row.state)),
        row.text);
    m_details->setSendAgainEnabled(MessageActions::canSendAgain(row.state));
}

/// What is shown of the chosen message follows its row.
void MessagesTab::refreshChosen()
{
    const auto at = m_chosen.id != 0 ? m_model->rowOf(m_chosen.id) : std::nullopt;
    if (const HistoryRow *const row = at ? m_model->row(*at) : nullptr; row && *row != m_chosen)
        showChosen(*row);
}

void MessagesTab::fetchSteps()
{
    m_source.fetchSteps(this, m_chosen.id,
                        [this, id = m_chosen.id](const SourceResult<QList<HistoryEvent>> &events) {
                            if (!events || id != m_chosen.id)
                                return;
                            m_steps.clear();
                            for (const HistoryEvent &event : *events)
                                m_steps.append({HistoryTexts::moment(event.at),
                                                HistoryTexts::stepName(event),
                                                HistoryTexts::stepDetail(event)});
                            showSteps();
                        });
}

void MessagesTab::fetchAnswers()
{
    constexpr quint32 maxAnswers = 20;
    const InboxFilter fromPhone{m_chosen.at, {}, lastDigits(m_chosen.phone), false};
    m_source.fetchAnswers(
        this, fromPhone, maxAnswers,
        [this, id = m_chosen.id](const SourceResult<Page<ReceivedMessage>> &page) {
            if (!page || id != m_chosen.id)
                return;
            m_answers.clear();
            for (const ReceivedMessage &message : page->rows) {
                if (lastDigits(message.phone) == lastDigits(m_chosen.phone)) // and not in its text
                    m_answers.prepend({HistoryTexts::moment(message.at), GS(TextId::StepAnswer),
                                       HistoryTexts::oneLine(message.text)});
            }
            showSteps();
        });
}

void MessagesTab::fetchOptedOut()
{
    if (m_chosen.id == 0 || m_chosen.phone.trimmed().isEmpty())
        return;
    m_source.fetchOptedOut(this, m_chosen.phone,
                           [this, id = m_chosen.id](const SourceResult<bool> &isOptedOut) {
                               if (isOptedOut && id == m_chosen.id)
                                   m_details->setOptedOut(*isOptedOut);
                           });
}

void MessagesTab::showSteps()
{
    m_details->showSteps(m_steps + m_answers);
}

OutputList MessagesTab::outputList() const
{
    OutputList list;
    list.title = GS(TextId::MessagesTab).remove(u'&');
    list.captions = {GS(TextId::MomentColumn),   GS(TextId::DeliveryDateColumn),
                     GS(TextId::PhoneColumn),    GS(TextId::StateColumn),
                     GS(TextId::CodeColumn),     GS(TextId::MessageColumn),
                     GS(TextId::DeliveredColumn)};
    list.widths = {13, 13, 11, 9, 5, 36, 13};
    list.areOurs = {true, false, false, true, true, false, true};
    list.fetch = [this, filter = m_model->filter()](QObject *context, const PageRequest &request,
                                                    const SourceAnswer<Page<QStringList>> &answer) {
        m_source.fetchHistory(context, filter, request, asFields<HistoryRow>(answer, fieldsOf));
    };
    return list;
}

} // namespace norvane
