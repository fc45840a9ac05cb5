#include "NorvaneHistory/SummaryCharts.h"

#include "NorvaneHistory/HistoryTexts.h"
#include "NorvaneHistory/StateSymbol.h"
#include "foundation/Globals.h"
#include "foundation/TextId.h"
#include "foundation/ui/Contrast.h"

#include <QApplication>
#include <QBarCategoryAxis>
#include <QBarSet>
#include <QCategoryAxis>
#include <QChart>
#include <QDate>
#include <QGraphicsLayout>
#include <QHash>
#include <QHorizontalBarSeries>
#include <QLegend>
#include <QStackedBarSeries>
#include <QValueAxis>

#include <algorithm>
#include <array>

namespace norvane {

using namespace Qt::StringLiterals;

namespace {

constexpr auto storedDay = "yyyy-MM-dd"_L1;
constexpr qreal outline = 0.5; // between two bars

/// A part of a day's bar.
struct Part
{
    MessageState state;
    quint32 HistoryDay::*count;
    Qt::BrushStyle pattern;
};

constexpr std::array parts = {
    Part{MessageState::Delivered, &HistoryDay::delivered, Qt::SolidPattern},
    Part{MessageState::Sent, &HistoryDay::sent, Qt::Dense2Pattern},
    Part{MessageState::Refused, &HistoryDay::refused, Qt::BDiagPattern},
    Part{MessageState::Failed, &HistoryDay::failed, Qt::DiagCrossPattern},
    Part{MessageState::InDoubt, &HistoryDay::inDoubt, Qt::HorPattern},
};

/// Lines that are there for who looks for them.
QColor gridColour(const QPalette &palette)
{
    constexpr float share = 0.2F;
    QColor colour = palette.color(QPalette::Text);
    colour.setAlphaF(share);
    return colour;
}

void dress(QAbstractAxis &axis, const QPalette &palette)
{
    const QColor text = palette.color(QPalette::Text);
    axis.setLabelsColor(text);
    axis.setLabelsFont(QApplication::font());
    axis.setLinePenColor(text);
    axis.setGridLineColor(gridColour(palette));
    axis.setTitleBrush(text);
}

std::unique_ptr<QChart> makeChart(const QString &title, const QPalette &palette)
{
    constexpr int margin = 4;
    auto chart = std::make_unique<QChart>();
    QFont bold = QApplication::font();
    bold.setBold(true);
    chart->setTitle(title.toHtmlEscaped());
    chart->setTitleFont(bold);
    chart->setTitleBrush(palette.color(QPalette::Text));
    chart->setBackgroundBrush(palette.color(QPalette::Base));
    chart->setBackgroundRoundness(0);
    chart->layout()->setContentsMargins(0, 0, 0, 0);
    chart->setMargins({margin, margin, margin, margin});
    chart->legend()->setFont(QApplication::font());
    chart->legend()->setLabelColor(palette.color(QPalette::Text));
    chart->legend()->setVisible(false);
    return chart;
}

/// The least of 1, 2, 5, 10, 20, 50, ... of which `maxSteps` reach `max`.
quint64 roundStep(quint32 max, quint64 maxSteps)
{
    for (quint64 power = 1;; power *= 10) {
        for (const quint64 factor : {1, 2, 5}) {
            if (factor * power * maxSteps >= max)
                return factor * power;
        }
    }
}

/// Counts from 0 up to the first step that holds `max`.
QValueAxis *makeCounts(quint32 max, const QPalette &palette)
{
    constexpr quint64 maxSteps = 4; // whose numbers have room side by side
    const quint64 step = roundStep(max, maxSteps);
    const quint64 steps = std::max<quint64>((max + step - 1) / step, 1);
    auto *const axis = new QValueAxis;
    axis->setLabelFormat(u"%d"_s);
    axis->setRange(0, static_cast<qreal>(step * steps));
    axis->setTickCount(static_cast<int>(steps) + 1);
    dress(*axis, palette);
    return axis;
}

/// The name of a day under its bar; empty for one that has no room for it.
QString dayLabel(const QDate &day, qsizetype at, qsizetype days)
{
    constexpr qsizetype week = 7;
    constexpr qsizetype month = 31;
    constexpr qsizetype every = 5;
    if (days > month)
        return day.day() == 1 ? day.toString(u"MM/yy"_s) : QString();
    return days <= week || at % every == 0 ? day.toString(u"dd/MM"_s) : QString();
}

QCategoryAxis *makeDays(const QList<HistoryDay> &days, const QPalette &palette)
{
    auto *const axis = new QCategoryAxis;
    axis->setLabelsPosition(QCategoryAxis::AxisLabelsPositionOnValue);
    // The axis marks its start, which is that of the picture then.
    axis->setStartValue(-0.5);
    axis->setRange(-0.5, static_cast<qreal>(days.size()) - 0.5);
    for (qsizetype at = 0; at < days.size(); ++at) {
        const QString label =
            dayLabel(QDate::fromString(days.at(at).day, storedDay), at, days.size());
        if (!label.isEmpty())
            axis->append(label, static_cast<qreal>(at));
    }
    dress(*axis, palette);
    axis->setGridLineVisible(false);
    return axis;
}

quint32 sumOf(const HistoryDay &day)
{
    quint32 sum = 0;
    for (const Part &part : parts)
        sum += day.*part.count;
    return sum;
}

QBarSet *makeSet(const QString &label, MessageState state, Qt::BrushStyle pattern,
                 const QPalette &palette)
{
    auto *const set = new QBarSet(label);
    const QColor colour = StateSymbol::colour(state, palette.color(QPalette::Base));
    set->setBrush(QBrush(colour, pattern));
    set->setPen(QPen(colour, outline));
    return set;
}

struct Bar
{
    QString name;
    quint32 count = 0;
};

/// Bars that lie, the first at the top.
std::unique_ptr<QChart> barsChart(const QString &title, const QList<Bar> &bars, const Part &look,
                                  const QPalette &palette)
{
    auto chart = makeChart(title, palette);
    auto *const series = new QHorizontalBarSeries;
    QBarSet *const set = makeSet(GS(TextId::CountColumn), look.state, look.pattern, palette);
    auto *const names = new QBarCategoryAxis;
    quint32 max = 0;
    for (auto bar = bars.crbegin(); bar != bars.crend(); ++bar) {
        set->append(bar->count);
        names->append(bar->name);
        max = std::max(max, bar->count);
    }
    series->append(set);
    chart->addSeries(series);
    auto *const counts = makeCounts(max, palette);
    dress(*names, palette);
    names->setGridLineVisible(false);
    names->setVisible(!bars.isEmpty()); // a dot is drawn of an empty one
    chart->addAxis(names, Qt::AlignLeft);
    chart->addAxis(counts, Qt::AlignBottom);
    series->attachAxis(names);
    series->attachAxis(counts);
    return chart;
}

} // namespace

QList<HistoryDay> SummaryCharts::everyDay(const QList<HistoryDay> &days, const QDate &first,
                                          const QDate &last)
{
    QHash<QString, HistoryDay> known;
    for (const HistoryDay &day : days)
        known.insert(day.day, day);
    QList<HistoryDay> all;
    for (QDate day = first; day <= last; day = day.addDays(1)) {
        const QString name = day.toString(storedDay);
        HistoryDay none;
        none.day = name;
        all.append(known.value(name, none));
    }
    return all;
}

SummaryCharts::Table SummaryCharts::daysTable(const QList<HistoryDay> &days)
{
    Table table{GS(TextId::DaysChart), {GS(TextId::DayColumn)}, {}};
    for (const Part &part : parts)
        table.captions << HistoryTexts::stateName(part.state);
    for (auto day = days.crbegin(); day != days.crend(); ++day) {
        QStringList row{HistoryTexts::day(day->day)};
        for (const Part &part : parts)
            row << QString::number((*day).*part.count);
        table.rows.append(row);
    }
    return table;
}

SummaryCharts::Table SummaryCharts::delaysTable(const QList<DeliveryDelay> &delays)
{
    Table table{GS(TextId::DelaysChart), {GS(TextId::DelayColumn), GS(TextId::CountColumn)}, {}};
    for (qsizetype at = 0; at < delays.size(); ++at)
        table.rows.append({HistoryTexts::delay(delays, at), QString::number(delays.at(at).count)});
    return table;
}

SummaryCharts::Table SummaryCharts::reasonsTable(const QList<FailureReason> &reasons)
{
    Table table{GS(TextId::ReasonsChart),
                {GS(TextId::StateColumn), GS(TextId::ReasonColumn), GS(TextId::CountColumn)},
                {}};
    for (const FailureReason &reason : reasons)
        table.rows.append({HistoryTexts::stateName(reason.state), HistoryTexts::reason(reason),
                           QString::number(reason.count)});
    return table;
}

std::unique_ptr<QChart> SummaryCharts::daysChart(const QList<HistoryDay> &days,
                                                 const QPalette &palette)
{
    auto chart = makeChart(GS(TextId::DaysChart), palette);
    auto *const series = new QStackedBarSeries;
    constexpr qreal barWidth = 0.8; // of the room of a day
    series->setBarWidth(barWidth);
    quint32 max = 0;
    for (const Part &part : parts) {
        QBarSet *const set =
            makeSet(HistoryTexts::stateName(part.state), part.state, part.pattern, palette);
        for (const HistoryDay &day : days)
            set->append(day.*part.count);
        series->append(set);
    }
    for (const HistoryDay &day : days)
        max = std::max(max, sumOf(day));
    chart->addSeries(series);
    auto *const bottom = makeDays(days, palette);
    auto *const left = makeCounts(max, palette);
    chart->addAxis(bottom, Qt::AlignBottom);
    chart->addAxis(left, Qt::AlignLeft);
    series->attachAxis(bottom);
    series->attachAxis(left);
    chart->legend()->setVisible(true);
    chart->legend()->setAlignment(Qt::AlignBottom);
    return chart;
}

std::unique_ptr<QChart> SummaryCharts::delaysChart(const QList<DeliveryDelay> &delays,
                                                   const QPalette &palette)
{
    QList<Bar> bars;
    for (qsizetype at = 0; at < delays.size(); ++at)
        bars.append({HistoryTexts::delay(delays, at), delays.at(at).count});
    return barsChart(GS(TextId::DelaysChart), bars, parts.front(), palette);
}

std::unique_ptr<QChart> SummaryCharts::reasonsChart(const QList<FailureReason> &reasons,
                                                    const QPalette &palette)
{
    constexpr qsizetype maxShown = 8;
    QList<Bar> bars;
    for (const FailureReason &reason : reasons.first(std::min(reasons.size(), maxShown)))
        bars.append({HistoryTexts::reason(reason), reason.count});
    return barsChart(GS(TextId::ReasonsChart), bars,
                     {MessageState::Failed, &HistoryDay::failed, Qt::DiagCrossPattern}, palette);
}

} // namespace norvane
