#pragma once

#include "NorvaneHistory/HistorySource.h"
#include "NorvaneHistory/SummaryCharts.h"

#include <QWidget>

class QChartView;
class QCheckBox;
class QComboBox;
class QStackedWidget;
class QTableWidget;

namespace norvane {

/// What became of the messages of the last days, in numbers.
class SummaryTab : public QWidget
{
    Q_OBJECT

public:
    /// @param source  must outlive this object
    explicit SummaryTab(HistorySource &source, QWidget *parent = nullptr);

    /// Fetches the numbers of the range that is chosen; while the tab isn't seen, when it is.
    void refresh();

Q_SIGNALS:
    void shown();

protected:
    void showEvent(QShowEvent *event) override;
    void changeEvent(QEvent *event) override;

private:
    /// A picture and the table of its numbers, of which one is seen.
    struct Picture
    {
        QStackedWidget *both;
        QChartView *chart;
        QTableWidget *table;
    };

    Picture makePicture(const QString &name);
    QDate firstDay() const;
    void fetch();
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
    bool m_isStale = true;
    bool m_isFetching = false;
};

} // namespace norvane
