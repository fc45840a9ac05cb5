#include "NorvaneHistory/InboxTab.h"

#include "NorvaneHistory/ChosenPhone.h"
#include "NorvaneHistory/FilterBar.h"
#include "NorvaneHistory/HistoryTexts.h"
#include "NorvaneHistory/InboxModel.h"
#include "NorvaneHistory/ListPane.h"
#include "NorvaneHistory/SteadyTableView.h"
#include "foundation/Globals.h"
#include "foundation/TextId.h"

#include <QCheckBox>
#include <QVBoxLayout>

namespace norvane {

using namespace Qt::StringLiterals;

namespace {

QStringList storedFields(const ReceivedMessage &row)
{
    return {row.at, row.sentAt, row.phone, GS(row.isRead ? TextId::ReadWord : TextId::UnreadWord),
            row.text};
}

QStringList shownFields(const ReceivedMessage &row)
{
    QStringList fields = storedFields(row);
    fields[0] = HistoryTexts::moment(row.at);
    return fields;
}

} // namespace

InboxTab::InboxTab(HistorySource &source, const FilterBar &filter, MessageActions &actions,
                   QWidget *parent)
    : QWidget(parent), m_source(source), m_filter(filter), m_model(new InboxModel(source, this)),
      m_unreadOnly(new QCheckBox(GS(TextId::UnreadOnlyBox), this)),
      m_pane(new ListPane(*m_model, DetailsPane::Kind::Received, GS(TextId::InboxTab).remove(u'&'),
                          QFont::Bold, this)),
      m_phone(new ChosenPhone(source, actions, m_pane->details(), this))
{
    m_unreadOnly->setObjectName(u"chkUnreadOnly"_s);
    m_pane->list().setObjectName(u"grdInbox"_s);
    auto *const layout = new QVBoxLayout(this);
    layout->addWidget(m_unreadOnly);
    layout->addWidget(m_pane, 1);
    connect(m_unreadOnly, &QCheckBox::toggled, this, &InboxTab::applyFilter);
    connect(m_pane, &ListPane::rowChosen, this, &InboxTab::choose);
}

const MessageTableModel &InboxTab::model() const
{
    return *m_model;
}

void InboxTab::applyFilter()
{
    m_model->setFilter(
        {m_filter.from(), m_filter.to(), m_filter.text(), m_unreadOnly->isChecked()});
}

void InboxTab::refresh()
{
    m_model->refresh();
    m_phone->refresh();
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
        m_chosen = 0;
        m_phone->chooseNone();
        m_pane->details().showNothing();
        return;
    }
    if (chosen->id == m_chosen)
        return;
    m_chosen = chosen->id;
    const QString phone = chosen->phone;
    m_pane->details().showMessage(
        u"%1 · %2"_s.arg(HistoryTexts::phone(phone), HistoryTexts::moment(chosen->at)),
        chosen->text);
    m_model->markRead(row);
    m_phone->choose(m_chosen, phone);
}

OutputList InboxTab::outputList(OutputForm form) const
{
    OutputList list;
    list.title = GS(TextId::InboxTab).remove(u'&');
    list.captions = {GS(TextId::MomentColumn), GS(TextId::NetworkMomentColumn),
                     GS(TextId::SenderColumn), GS(TextId::ReadColumn), GS(TextId::MessageColumn)};
    list.widths = {14, 18, 14, 8, 46};
    list.areOurs = {true, false, false, true, false};
    const auto fields = form == OutputForm::Shown ? shownFields : storedFields;
    list.fetch = [this, filter = m_model->filter(),
                  fields](QObject *context, const PageRequest &request,
                          const SourceAnswer<Page<QStringList>> &answer) {
        m_source.walkInbox(context, filter, request, asFields<ReceivedMessage>(answer, fields));
    };
    return list;
}

} // namespace norvane
