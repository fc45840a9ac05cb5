#include "NorvaneHistory/FilterBar.h"

#include "foundation/Globals.h"
#include "foundation/TextId.h"

#include <QComboBox>
#include <QDateEdit>
#include <QHBoxLayout>
#include <QLabel>
#include <QLineEdit>

namespace norvane {

using namespace Qt::StringLiterals;

namespace {

constexpr int maxSearchedText = 200;
constexpr auto storedDay = "yyyy-MM-dd"_L1;

QDateEdit *makeDate(const QString &name, QWidget *parent)
{
    auto *const edit = new QDateEdit(QDate::currentDate(), parent);
    edit->setObjectName(name);
    edit->setDisplayFormat(u"dd/MM/yyyy"_s);
    edit->setCalendarPopup(true);
    return edit;
}

QLabel *makeLabel(qint32 textId, QWidget *buddy, QWidget *parent)
{
    auto *const label = new QLabel(GS(textId), parent);
    label->setBuddy(buddy);
    buddy->setAccessibleName(GS(textId).remove(u'&').remove(u':'));
    return label;
}

} // namespace

FilterBar::FilterBar(QWidget *parent)
    : QWidget(parent), m_text(new QLineEdit(this)), m_range(new QComboBox(this)),
      m_from(makeDate(u"dtFrom"_s, this)), m_to(makeDate(u"dtTo"_s, this))
{
    constexpr int leastTextWidth = 180; // pixels
    m_text->setObjectName(u"txtSearch"_s);
    m_text->setMaxLength(maxSearchedText);
    m_text->setClearButtonEnabled(true);
    m_text->setPlaceholderText(GS(TextId::SearchHint));
    m_text->setMinimumWidth(leastTextWidth);
    m_range->setObjectName(u"cboRange"_s);
    for (const qint32 id : {TextId::RangeAll, TextId::RangeToday, TextId::RangeWeek,
                            TextId::RangeMonth, TextId::RangeYear, TextId::RangeDates})
        m_range->addItem(GS(id));
    m_fromLabel = makeLabel(TextId::FromLabel, m_from, this);
    m_toLabel = makeLabel(TextId::ToLabel, m_to, this);

    auto *const layout = new QHBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->addWidget(makeLabel(TextId::SearchLabel, m_text, this));
    layout->addWidget(m_text, 1);
    layout->addWidget(makeLabel(TextId::RangeLabel, m_range, this));
    layout->addWidget(m_range);
    for (QWidget *const part :
         std::initializer_list<QWidget *>{m_fromLabel, m_from, m_toLabel, m_to})
        layout->addWidget(part);

    connect(m_text, &QLineEdit::textChanged, this, &FilterBar::changed);
    connect(m_range, &QComboBox::currentIndexChanged, this, &FilterBar::rangeChosen);
    connect(m_from, &QDateEdit::dateChanged, this, &FilterBar::changed);
    connect(m_to, &QDateEdit::dateChanged, this, &FilterBar::changed);
    rangeChosen();
}

QString FilterBar::text() const
{
    return m_text->text();
}

QDate FilterBar::firstDay() const
{
    constexpr int week = 7;
    constexpr int month = 30;
    constexpr int year = 365;
    const QDate today = QDate::currentDate();
    switch (m_range->currentIndex()) {
    case Today:
        return today;
    case Week:
        return today.addDays(1 - week);
    case Month:
        return today.addDays(1 - month);
    case Year:
        return today.addDays(1 - year);
    case Dates:
        return m_from->date();
    default:
        return {};
    }
}

QString FilterBar::from() const
{
    const QDate first = firstDay();
    return first.isValid() ? first.toString(storedDay) : QString();
}

QString FilterBar::to() const
{
    return m_range->currentIndex() == Dates ? m_to->date().addDays(1).toString(storedDay)
                                            : QString();
}

void FilterBar::focusText()
{
    m_text->setFocus(Qt::ShortcutFocusReason);
    m_text->selectAll();
}

void FilterBar::setText(const QString &text)
{
    m_text->setText(text);
}

void FilterBar::rangeChosen()
{
    const bool hasDates = m_range->currentIndex() == Dates;
    for (QWidget *const part :
         std::initializer_list<QWidget *>{m_fromLabel, m_from, m_toLabel, m_to})
        part->setVisible(hasDates);
    Q_EMIT changed();
}

} // namespace norvane
