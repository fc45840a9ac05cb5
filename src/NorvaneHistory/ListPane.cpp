#include "NorvaneHistory/ListPane.h"

#include "NorvaneHistory/MessageTableModel.h"
#include "NorvaneHistory/SteadyTableView.h"

#include <QHeaderView>

namespace norvane {

using namespace Qt::StringLiterals;

namespace {

void setWidths(QHeaderView &header, QFont font, QFont::Weight heaviest)
{
    constexpr int margin = 24; // pixels around a text
    font.setWeight(heaviest);
    const QFontMetrics metrics(font);
    header.resizeSection(MessageTableModel::Moment,
                         metrics.horizontalAdvance(u"00/00/0000 00:00:00"_s) + margin);
    header.resizeSection(MessageTableModel::Phone,
                         metrics.horizontalAdvance(u"+34 600 000 000 0"_s) + margin);
    header.setSectionResizeMode(MessageTableModel::Message, QHeaderView::Stretch);
}

} // namespace

ListPane::ListPane(MessageTableModel &model, DetailsPane::Kind kind, const QString &name,
                   QFont::Weight heaviest, QWidget *parent)
    : QSplitter(Qt::Vertical, parent), m_list(new SteadyTableView(name, this)),
      m_details(new DetailsPane(kind, this))
{
    constexpr int listShare = 3;
    setChildrenCollapsible(false);
    addWidget(m_list);
    addWidget(m_details);
    setStretchFactor(0, listShare);
    setStretchFactor(1, 1);
    m_list->setModel(&model);
    setWidths(*m_list->horizontalHeader(), m_list->font(), heaviest);
    connect(m_list, &SteadyTableView::rowChosen, this, &ListPane::rowChosen);
    connect(&model, &MessageTableModel::searched, m_list, &SteadyTableView::scrollToTop);
    connect(&model, &MessageTableModel::modelReset, this, [this] { Q_EMIT rowChosen(-1); });
}

} // namespace norvane
