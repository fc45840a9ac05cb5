#include "NorvaneHistory/MessagesTab.h"

#include "NorvaneHistory/ChosenPhone.h"
#include "NorvaneHistory/FilterBar.h"
#include "NorvaneHistory/HistoryModel.h"
#include "NorvaneHistory/HistoryTexts.h"
#include "NorvaneHistory/ListPane.h"
#include "NorvaneHistory/MessageActions.h"
#include "NorvaneHistory/StateSymbol.h"
#include "NorvaneHistory/SteadyTableView.h"
#include "foundation/Globals.h"
#include "foundation/TextId.h"

#include <QEvent>
#include <QHBoxLayout>
#include <QHeaderView>
#include <QVBoxLayout>

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

QStringList storedFields(const HistoryRow &row)
{
    return {row.at,
            row.deliveryDate,
            row.phone,
            HistoryTexts::stateName(row.state),
            QString::number(row.code),
            row.text,
            row.deliveredAt};
}

/// Why a message didn't arrive; empty for one that did, or may yet.
QString reasonOf(const HistoryRow &row)
{
    switch (row.state) {
    case MessageState::Refused:
        return HistoryTexts::networkStatus(row.code);
    case MessageState::Failed:
    case MessageState::InDoubt:
        return HistoryTexts::errorText(row.code);
    default:
        return {};
    }
}

QStringList shownFields(const HistoryRow &row)
{
    return {HistoryTexts::moment(row.at),
            HistoryTexts::moment(row.deliveryDate),
            row.phone,
            HistoryTexts::stateName(row.state),
            reasonOf(row),
            row.text,
            HistoryTexts::moment(row.deliveredAt)};
}

int stateWidth(const QFontMetrics &metrics)
{
    constexpr int margin = 48; // pixels around a text, with its drawing
    int widest = 0;
    for (const MessageState each : HistoryTexts::states)
        widest = std::max(widest, metrics.horizontalAdvance(HistoryTexts::stateName(each)));
    return widest + margin;
}

} // namespace

MessagesTab::MessagesTab(HistorySource &source, const FilterBar &filter, MessageActions &actions,
                         QWidget *parent)
    : QWidget(parent), m_source(source), m_filter(filter), m_model(new HistoryModel(source, this))
{
    // The Tab key goes from one to the next as they are made.
    QWidget *const states = makeStates();
    m_pane = new ListPane(*m_model, DetailsPane::Kind::Sent, GS(TextId::MessagesTab).remove(u'&'),
                          QFont::Normal, this);
    m_phone = new ChosenPhone(source, actions, m_pane->details(), this);
    SteadyTableView &list = m_pane->list();
    list.setObjectName(u"grdMessages"_s);
    list.horizontalHeader()->resizeSection(HistoryModel::State, stateWidth(list.fontMetrics()));
    auto *const layout = new QVBoxLayout(this);
    layout->addWidget(states);
    layout->addWidget(m_pane, 1);

    connect(m_pane, &ListPane::rowChosen, this, &MessagesTab::choose);
    connect(&list, &SteadyTableView::scrolled, this, &MessagesTab::refreshVisibleRows);
    connect(m_model, &HistoryModel::dataChanged, this, &MessagesTab::refreshChosen);
    connect(&m_pane->details(), &DetailsPane::sendAgainRequested, this,
            [this, &actions] { actions.sendAgain(m_chosen); });
}

const MessageTableModel &MessagesTab::model() const
{
    return *m_model;
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
    refreshVisibleRows();
    if (m_chosen.id != 0) {
        m_stepsFlight.start([this] { fetchSteps(); });
        m_answersFlight.start([this] { fetchAnswers(); });
        m_phone->refresh();
    }
}

void MessagesTab::refreshVisibleRows()
{
    const SteadyTableView &list = m_pane->list();
    m_model->refreshRows(list.firstVisibleRow(), list.lastVisibleRow());
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
        m_phone->chooseNone();
        m_pane->details().showNothing();
        return;
    }
    if (*chosen == m_chosen)
        return;
    const bool isOther = chosen->id != m_chosen.id;
    showChosen(*chosen);
    if (!isOther)
        return;
    m_steps.clear();
    m_answers.clear();
    showSteps();
    m_stepsFlight.start([this] { fetchSteps(); });
    m_answersFlight.start([this] { fetchAnswers(); });
    m_phone->choose(m_chosen.id, m_chosen.phone);
}

void MessagesTab::showChosen(const HistoryRow &row)
{
    m_chosen = row;
    DetailsPane &details = m_pane->details();
    details.showMessage(
        u"%1 · %2"_s.arg(HistoryTexts::phone(row.phone), HistoryTexts::stateName(row.state)),
        row.text);
    details.setSendAgainEnabled(MessageActions::canSendAgain(row.state));
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
    if (m_chosen.id == 0) {
        m_stepsFlight.finish();
        return;
    }
    m_source.fetchSteps(this, m_chosen.id,
                        [this, id = m_chosen.id](const SourceResult<QList<HistoryEvent>> &events) {
                            m_stepsFlight.finish();
                            if (!events || id != m_chosen.id)
                                return;
                            m_steps.clear();
                            for (const HistoryEvent &event : *events)
                                m_steps.append(
                                    {event.at,
                                     {HistoryTexts::moment(event.at), HistoryTexts::stepName(event),
                                      HistoryTexts::stepDetail(event)}});
                            showSteps();
                        });
}

void MessagesTab::fetchAnswers()
{
    constexpr quint32 maxAnswers = 20;
    if (m_chosen.id == 0) {
        m_answersFlight.finish();
        return;
    }
    const InboxFilter fromPhone{m_chosen.at, {}, lastDigits(m_chosen.phone), false};
    m_source.fetchAnswers(
        this, fromPhone, maxAnswers,
        [this, id = m_chosen.id](const SourceResult<Page<ReceivedMessage>> &page) {
            m_answersFlight.finish();
            if (!page || id != m_chosen.id)
                return;
            m_answers.clear();
            for (const ReceivedMessage &message : page->rows) {
                if (lastDigits(message.phone) == lastDigits(m_chosen.phone)) // and not in its text
                    m_answers.prepend({message.at,
                                       {HistoryTexts::moment(message.at), GS(TextId::StepAnswer),
                                        HistoryTexts::oneLine(message.text)}});
            }
            showSteps();
        });
}

/// Steps stay in the order in which they happened, whatever the clock did; an answer stands before
/// the first of them that is later.
void MessagesTab::showSteps()
{
    QList<DetailsPane::Step> shown;
    auto answer = m_answers.cbegin();
    for (const MomentAndStep &step : m_steps) {
        for (; answer != m_answers.cend() && answer->at < step.at; ++answer)
            shown.append(answer->step);
        shown.append(step.step);
    }
    for (; answer != m_answers.cend(); ++answer)
        shown.append(answer->step);
    m_pane->details().showSteps(shown);
}

OutputList MessagesTab::outputList(OutputForm form) const
{
    OutputList list;
    list.title = GS(TextId::MessagesTab).remove(u'&');
    list.captions = {GS(TextId::MomentColumn),   GS(TextId::DeliveryDateColumn),
                     GS(TextId::PhoneColumn),    GS(TextId::StateColumn),
                     GS(TextId::CodeColumn),     GS(TextId::MessageColumn),
                     GS(TextId::DeliveredColumn)};
    list.widths = {13, 13, 11, 9, 14, 27, 13};
    list.areOurs = {true, false, false, true, true, false, true};
    const auto fields = form == OutputForm::Shown ? shownFields : storedFields;
    list.fetch = [this, filter = m_model->filter(),
                  fields](QObject *context, const PageRequest &request,
                          const SourceAnswer<Page<QStringList>> &answer) {
        m_source.walkHistory(context, filter, request, asFields<HistoryRow>(answer, fields));
    };
    return list;
}

} // namespace norvane
