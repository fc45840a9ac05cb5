#include "NorvaneHistory/SummaryTab.h"

#include "NorvaneHistory/ReadOnlyTable.h"
#include "foundation/Globals.h"
#include "foundation/TextId.h"

#include <QChart>
#include <QChartView>
#include <QCheckBox>
#include <QComboBox>
#include <QDate>
#include <QEvent>
#include <QGridLayout>
#include <QLabel>
#include <QStackedWidget>
#include <QTimer>

#include <array>

namespace norvane {

using namespace Qt::StringLiterals;

namespace {

constexpr std::array<int, 3> ranges = {7, 30, 365}; // days

/// A chart in words: what a screen reader says of it.
QString inWords(const SummaryCharts::Table &table)
{
    QStringList lines;
    for (const QStringList &row : table.rows)
        lines << row.join(u", "_s);
    return lines.join(u"; "_s);
}

} // namespace

SummaryTab::SummaryTab(HistorySource &source, QWidget *parent)
    : QWidget(parent), m_source(source), m_range(new QComboBox(this)),
      m_asTables(new QCheckBox(GS(TextId::AsTablesBox), this)), m_days(makePicture(u"Days"_s)),
      m_delays(makePicture(u"Delays"_s)), m_reasons(makePicture(u"Reasons"_s)),
      m_pause(new QTimer(this))
{
    constexpr int pause = 5'000; // ms; a summary of a year takes the engine a while
    constexpr int daysShare = 4; // of the height
    constexpr int othersShare = 5;
    constexpr int delaysShare = 5;  // of the width
    constexpr int reasonsShare = 9; // whose names are sentences
    m_range->setObjectName(u"cboDays"_s);
    for (const int days : ranges)
        m_range->addItem(GS(TextId::LastDays, days));
    m_range->setCurrentIndex(1);
    m_asTables->setObjectName(u"chkAsTables"_s);
    auto *const label = new QLabel(GS(TextId::RangeLabel), this);
    label->setBuddy(m_range);
    m_range->setAccessibleName(GS(TextId::RangeLabel).remove(u'&').remove(u':'));

    auto *const bar = new QHBoxLayout;
    bar->addWidget(label);
    bar->addWidget(m_range);
    bar->addWidget(m_asTables);
    bar->addStretch();
    auto *const layout = new QGridLayout(this);
    layout->addLayout(bar, 0, 0, 1, 2);
    layout->addWidget(m_days.both, 1, 0, 1, 2);
    layout->addWidget(m_delays.both, 2, 0);
    layout->addWidget(m_reasons.both, 2, 1);
    layout->setRowStretch(1, daysShare);
    layout->setRowStretch(2, othersShare);
    layout->setColumnStretch(0, delaysShare);
    layout->setColumnStretch(1, reasonsShare);

    m_pause->setObjectName(u"tmrPause"_s);
    m_pause->setSingleShot(true);
    m_pause->setInterval(pause);
    connect(m_pause, &QTimer::timeout, this, &SummaryTab::fetchIfStale);
    connect(m_range, &QComboBox::currentIndexChanged, this, &SummaryTab::reload);
    connect(m_asTables, &QCheckBox::toggled, this, [this](bool areTables) {
        for (const Picture &picture : {m_days, m_delays, m_reasons})
            picture.both->setCurrentIndex(areTables ? 1 : 0);
    });
}

SummaryTab::Picture SummaryTab::makePicture(const QString &name)
{
    Picture picture{new QStackedWidget(this), new QChartView, new ReadOnlyTable};
    picture.chart->setObjectName(u"cht"_s + name);
    picture.chart->setRenderHint(QPainter::Antialiasing);
    picture.chart->setFrameShape(QFrame::StyledPanel);
    picture.chart->setBackgroundBrush(palette().base());
    picture.chart->setFocusPolicy(Qt::NoFocus); // there is nothing to do with it
    picture.table->setObjectName(u"tbl"_s + name);
    picture.both->addWidget(picture.chart);
    picture.both->addWidget(picture.table);
    return picture;
}

QDate SummaryTab::firstDay() const
{
    const auto range = static_cast<std::size_t>(std::max(m_range->currentIndex(), 0));
    return QDate::currentDate().addDays(1 - ranges.at(range));
}

void SummaryTab::reload()
{
    m_pause->stop();
    refresh();
}

void SummaryTab::refresh()
{
    m_isStale = true;
    fetchIfStale();
}

void SummaryTab::showEvent(QShowEvent *event)
{
    QWidget::showEvent(event);
    m_pause->stop();
    fetchIfStale();
}

void SummaryTab::changeEvent(QEvent *event)
{
    QWidget::changeEvent(event);
    if (event->type() == QEvent::PaletteChange)
        draw();
}

/// One question at a time: what changes meanwhile is asked for behind it.
void SummaryTab::fetchIfStale()
{
    if (m_isStale && isVisible() && !m_isFetching && !m_pause->isActive())
        fetch();
}

void SummaryTab::fetch()
{
    m_isFetching = true;
    m_isStale = false;
    const QDate first = firstDay();
    m_source.fetchSummary(
        this, first.toString(u"yyyy-MM-dd"_s), {},
        [this, first](const SourceResult<Summary> &summary) { take(summary, first); });
}

void SummaryTab::take(const SourceResult<Summary> &summary, const QDate &first)
{
    m_isFetching = false;
    if (first == firstDay())
        m_pause->start(); // another range is fetched at once
    if (summary) {
        m_summary = *summary;
        m_first = first;
        draw();
        Q_EMIT fetched();
    } else {
        Q_EMIT failed(summary.error());
    }
    fetchIfStale();
}

void SummaryTab::draw()
{
    using namespace SummaryCharts;
    if (!m_first.isValid())
        return;
    const QList<HistoryDay> days = everyDay(m_summary.days, m_first, QDate::currentDate());
    fill(m_days, daysChart(days, palette()), daysTable(days));
    fill(m_delays, delaysChart(m_summary.delays, palette()), delaysTable(m_summary.delays));
    fill(m_reasons, reasonsChart(m_summary.reasons, palette()), reasonsTable(m_summary.reasons));
}

void SummaryTab::fill(const Picture &picture, std::unique_ptr<QChart> chart,
                      const SummaryCharts::Table &table)
{
    const std::unique_ptr<QChart> former(picture.chart->chart());
    picture.chart->setChart(chart.release());
    picture.chart->setAccessibleName(table.title);
    picture.chart->setAccessibleDescription(inWords(table));
    picture.table->setAccessibleName(table.title);
    picture.table->showRows(table.captions, table.rows);
}

} // namespace norvane
