#pragma once

#include "NorvaneHistory/HistorySource.h"
#include "NorvaneHistory/SummaryCharts.h"

#include <QDate>
#include <QWidget>

class QChartView;
class QCheckBox;
class QComboBox;
class QStackedWidget;
class QTimer;

namespace norvane {

class ReadOnlyTable;

/// What became of the messages of the last days, in numbers.
class SummaryTab : public QWidget
{
    Q_OBJECT

public:
    /// @param source  must outlive this object
    explicit SummaryTab(HistorySource &source, QWidget *parent = nullptr);

    /// Fetches the numbers of the range that is chosen; while the tab isn't seen, when it is.
    void reload();
    /// The same for what has changed, every few seconds at most.
    void refresh();

Q_SIGNALS:
    void fetched();
    /// The numbers are those of before.
    void failed(const SourceFailure &failure);

protected:
    void showEvent(QShowEvent *event) override;
    void changeEvent(QEvent *event) override;

private:
    /// A picture and the table of its numbers, of which one is seen.
    struct Picture
    {
        QStackedWidget *both;
        QChartView *chart;
        ReadOnlyTable *table;
    };

    Picture makePicture(const QString &name);
    QDate firstDay() const;
    void fetchIfStale();
    void fetch();
    void take(const SourceResult<Summary> &summary, const QDate &first);
    void draw();
    static void fill(const Picture &picture, std::unique_ptr<QChart> chart,
                     const SummaryCharts::Table &table);

    HistorySource &m_source;
    QComboBox *m_range;
    QCheckBox *m_asTables;
    Picture m_days;
    Picture m_delays;
    Picture m_reasons;
    Summary m_summary;
    QDate m_first;   ///< of the days of `m_summary`; invalid before there are any
    QTimer *m_pause; ///< runs for a while behind an answer
    bool m_isStale = true;
    bool m_isFetching = false;
};

} // namespace norvane
