#include "NorvaneHistory/InboxTab.h"

#include "NorvaneHistory/DetailsPane.h"
#include "NorvaneHistory/FilterBar.h"
#include "NorvaneHistory/HistoryTexts.h"
#include "NorvaneHistory/InboxModel.h"
#include "NorvaneHistory/MessageActions.h"
#include "NorvaneHistory/SteadyTableView.h"
#include "foundation/Globals.h"
#include "foundation/TextId.h"

#include <QCheckBox>
#include <QHeaderView>
#include <QSplitter>
#include <QVBoxLayout>

namespace norvane {

using namespace Qt::StringLiterals;

namespace {

QStringList fieldsOf(const ReceivedMessage &row)
{
    return {row.at, row.sentAt, row.phone, GS(row.isRead ? TextId::ReadWord : TextId::UnreadWord),
            row.text};
}

void setWidths(QHeaderView &header, QFont font)
{
    constexpr int margin = 24; // pixels around a text
    font.setBold(true);        // as what is unread
    const QFontMetrics metrics(font);
    header.resizeSection(InboxModel::Moment,
                         metrics.horizontalAdvance(u"00/00/0000 00:00:00"_s) + margin);
    header.resizeSection(InboxModel::Phone,
                         metrics.horizontalAdvance(u"+34 600 000 000 0"_s) + margin);
    header.setSectionResizeMode(InboxModel::Message, QHeaderView::Stretch);
}

} // namespace

InboxTab::InboxTab(HistorySource &source, const FilterBar &filter, MessageActions &actions,
                   QWidget *parent)
    : QWidget(parent), m_source(source), m_filter(filter), m_actions(actions),
      m_model(new InboxModel(source, this)),
      m_unreadOnly(new QCheckBox(GS(TextId::UnreadOnlyBox), this)),
      m_list(new SteadyTableView(GS(TextId::InboxTab).remove(u'&'), this)),
      m_details(new DetailsPane(DetailsPane::Kind::Received, this))
{
    constexpr int listShare = 3;
    m_unreadOnly->setObjectName(u"chkUnreadOnly"_s);
    m_list->setObjectName(u"grdInbox"_s);
    m_list->setModel(m_model);
    setWidths(*m_list->horizontalHeader(), m_list->font());

    auto *const splitter = new QSplitter(Qt::Vertical, this);
    splitter->setChildrenCollapsible(false);
    splitter->addWidget(m_list);
    splitter->addWidget(m_details);
    splitter->setStretchFactor(0, listShare);
    splitter->setStretchFactor(1, 1);
    auto *const layout = new QVBoxLayout(this);
    layout->addWidget(m_unreadOnly);
    layout->addWidget(splitter, 1);

    connect(m_unreadOnly, &QCheckBox::toggled, this, &InboxTab::applyFilter);
    connect(m_list, &SteadyTableView::rowChosen, this, &InboxTab::choose);
    connect(m_model, &InboxModel::modelReset, this, [this] { choose(-1); });
    connect(m_model, &InboxModel::reloadFailed, this, &InboxTab::failed);
    connect(m_model, &InboxModel::reloaded, this, [this] { Q_EMIT loaded(m_model->rowCount()); });
    connect(m_details, &DetailsPane::answerRequested, this,
            [this] { m_actions.answer(m_chosen.phone); });
    connect(m_details, &DetailsPane::optOutRequested, this,
            [this](bool isOptedOut) { m_actions.setOptedOut(m_chosen.phone, isOptedOut); });
    connect(&m_actions, &MessageActions::optOutsChanged, this, &InboxTab::fetchOptedOut);
}

void InboxTab::applyFilter()
{
    m_model->setFilter(
        {m_filter.from(), m_filter.to(), m_filter.text(), m_unreadOnly->isChecked()});
}

void InboxTab::refresh()
{
    m_model->refresh();
}

void InboxTab::reload()
{
    m_model->reload();
}

/// A message that is shown in full has been read.
void InboxTab::choose(int row)
{
    const ReceivedMessage *const chosen = row >= 0 ? m_model->row(row) : nullptr;
    if (!chosen) {
        m_chosen = {};
        m_details->showNothing();
        return;
    }
    if (chosen->id == m_chosen.id)
        return;
    m_chosen = *chosen;
    m_details->showMessage(
        u"%1 · %2"_s.arg(HistoryTexts::oneLine(m_chosen.phone), HistoryTexts::moment(m_chosen.at)),
        m_chosen.text);
    m_details->setOptedOut(std::nullopt);
    m_model->markRead(row);
    fetchOptedOut();
}

void InboxTab::fetchOptedOut()
{
    if (m_chosen.id == 0 || m_chosen.phone.trimmed().isEmpty())
        return;
    m_source.fetchOptedOut(this, m_chosen.phone,
                           [this, id = m_chosen.id](const SourceResult<bool> &isOptedOut) {
                               if (isOptedOut && id == m_chosen.id)
                                   m_details->setOptedOut(*isOptedOut);
                           });
}

OutputList InboxTab::outputList() const
{
    OutputList list;
    list.title = GS(TextId::InboxTab).remove(u'&');
    list.captions = {GS(TextId::MomentColumn), GS(TextId::NetworkMomentColumn),
                     GS(TextId::SenderColumn), GS(TextId::ReadColumn), GS(TextId::MessageColumn)};
    list.widths = {14, 18, 14, 8, 46};
    list.areOurs = {true, false, false, true, false};
    list.fetch = [this, filter = m_model->filter()](QObject *context, const PageRequest &request,
                                                    const SourceAnswer<Page<QStringList>> &answer) {
        m_source.fetchInbox(context, filter, request, asFields<ReceivedMessage>(answer, fieldsOf));
    };
    return list;
}

} // namespace norvane
