#include "NorvaneHistory/HistoryFixture.h"
#include "NorvaneHistory/SummaryCharts.h"

#include "foundation/Globals.h"
#include "foundation/TextId.h"

#include <QBarSet>
#include <QChart>
#include <QChartView>
#include <QCheckBox>
#include <QComboBox>
#include <QCoreApplication>
#include <QDate>
#include <QGraphicsScene>
#include <QGraphicsTextItem>
#include <QHorizontalBarSeries>
#include <QLabel>
#include <QStackedBarSeries>
#include <QTableWidget>
#include <QTimer>
#include <QValueAxis>

#include <utility>

namespace norvane {

using namespace Qt::StringLiterals;

namespace {

QString dayBefore(int days)
{
    return QDate::currentDate().addDays(-days).toString(u"yyyy-MM-dd"_s);
}

class HistorySummaryTest : public HistoryFixture
{
protected:
    void SetUp() override
    {
        source.summary.days = {{dayBefore(0), 1, 2, 3, 4, 5}, {dayBefore(6), 10, 0, 0, 0, 0}};
        source.summary.delays = {{10, 7}, {60, 3}, {0, 1}};
        source.summary.reasons = {{MessageState::Refused, 0x46, 4}, {MessageState::Failed, -22, 2}};
        open();
    }

    void showDays(int index)
    {
        control<QTimer>("tmrPause")->setInterval(hangMs); // until a test ends it
        control<QComboBox>("cboDays")->setCurrentIndex(index);
        showTab(2);
    }

    /// Lets the pause between two questions go by.
    void endPause()
    {
        auto *const pause = control<QTimer>("tmrPause");
        ASSERT_TRUE(pause->isActive());
        pause->stop();
        QMetaObject::invokeMethod(pause, "timeout");
    }

    QTableWidget *table(const char *name) const { return control<QTableWidget>(name); }
    QChart *chart(const char *name) const { return control<QChartView>(name)->chart(); }
    static QStringList rowOf(const QTableWidget &table, int row)
    {
        QStringList fields;
        for (int column = 0; column < table.columnCount(); ++column)
            fields << table.item(row, column)->text();
        return fields;
    }
};

TEST_F(HistorySummaryTest, numbersAreAskedForWhenTheyAreSeenAndNotBefore)
{
    EXPECT_FALSE(source.calls.contains(u"summary "_s + dayBefore(29)));
    showTab(2);
    ASSERT_TRUE(waitUntil([&] { return table("tblDays")->rowCount() == 30; }));
    EXPECT_TRUE(source.calls.contains(u"summary "_s + dayBefore(29)));
    control<QComboBox>("cboDays")->setCurrentIndex(2);
    ASSERT_TRUE(waitUntil([&] { return table("tblDays")->rowCount() == 365; }));
    EXPECT_TRUE(source.calls.contains(u"summary "_s + dayBefore(364)));
}

TEST_F(HistorySummaryTest, everyDayOfTheRangeHasARowAlsoOneWithoutMessages)
{
    showDays(0);
    ASSERT_TRUE(waitUntil([&] { return table("tblDays")->rowCount() == 7; }));
    const QString today = QDate::currentDate().toString(u"dd/MM/yyyy"_s);
    // Delivered, sent, refused, failed, in doubt; the latest first.
    EXPECT_EQ(rowOf(*table("tblDays"), 0),
              (QStringList{today, u"2"_s, u"1"_s, u"3"_s, u"4"_s, u"5"_s}));
    EXPECT_EQ(rowOf(*table("tblDays"), 1).mid(1), QStringList(5, u"0"_s));
    EXPECT_EQ(rowOf(*table("tblDays"), 6).mid(1),
              (QStringList{u"0"_s, u"10"_s, u"0"_s, u"0"_s, u"0"_s}));
}

TEST_F(HistorySummaryTest, picturesShowTheNumbersOfTheirTables)
{
    showDays(0);
    ASSERT_TRUE(waitUntil([&] { return table("tblDays")->rowCount() == 7; }));
    const auto *const days = qobject_cast<QStackedBarSeries *>(chart("chtDays")->series().value(0));
    ASSERT_NE(days, nullptr);
    ASSERT_EQ(days->barSets().size(), 5);
    for (int set = 0; set < 5; ++set) {
        ASSERT_EQ(days->barSets().at(set)->count(), 7);
        for (int day = 0; day < 7; ++day)
            EXPECT_EQ(QString::number(days->barSets().at(set)->at(day)),
                      table("tblDays")->item(6 - day, set + 1)->text());
    }
    const auto *const delays =
        qobject_cast<QHorizontalBarSeries *>(chart("chtDelays")->series().value(0));
    ASSERT_NE(delays, nullptr);
    EXPECT_EQ(delays->barSets().at(0)->at(2), 7); // the first class is at the top
    EXPECT_EQ(rowOf(*table("tblDelays"), 0), (QStringList{u"hasta 10 s"_s, u"7"_s}));
    const auto *const reasons =
        qobject_cast<QHorizontalBarSeries *>(chart("chtReasons")->series().value(0));
    ASSERT_NE(reasons, nullptr);
    EXPECT_EQ(reasons->barSets().at(0)->at(1), 4);
    EXPECT_EQ(rowOf(*table("tblReasons"), 0),
              (QStringList{u"Rechazado"_s, u"Caducado antes de la entrega (0x46)"_s, u"4"_s}));
}

TEST_F(HistorySummaryTest, eachPictureIsReadableAsATable)
{
    showDays(0);
    EXPECT_TRUE(waitUntil([&] { return table("tblDays")->rowCount() == 7; }));
    for (const char *const name : {"Days", "Delays", "Reasons"}) {
        EXPECT_TRUE(control(qPrintable(u"cht"_s + QLatin1String(name)))->isVisible());
        EXPECT_FALSE(table(qPrintable(u"tbl"_s + QLatin1String(name)))->isVisible());
    }
    control<QCheckBox>("chkAsTables")->setChecked(true);
    for (const char *const name : {"Days", "Delays", "Reasons"}) {
        EXPECT_FALSE(control(qPrintable(u"cht"_s + QLatin1String(name)))->isVisible());
        EXPECT_TRUE(table(qPrintable(u"tbl"_s + QLatin1String(name)))->isVisible());
    }
}

TEST_F(HistorySummaryTest, aPictureIsSaidInWords)
{
    showDays(0);
    EXPECT_TRUE(waitUntil([&] { return table("tblDays")->rowCount() == 7; }));
    EXPECT_EQ(control("chtDelays")->accessibleName(), u"Tiempo hasta la entrega"_s);
    EXPECT_EQ(control("chtDelays")->accessibleDescription(),
              u"hasta 10 s, 7; hasta 1 min, 3; más de 1 min, 1"_s);
}

TEST_F(HistorySummaryTest, theScaleIsRoundAndHoldsTheLargestBar)
{
    showDays(0);
    EXPECT_TRUE(waitUntil([&] { return table("tblDays")->rowCount() == 7; }));
    const auto *const axis =
        qobject_cast<QValueAxis *>(chart("chtDays")->axes(Qt::Vertical).value(0));
    ASSERT_NE(axis, nullptr);
    EXPECT_EQ(axis->min(), 0);
    EXPECT_EQ(axis->max(), 15); // messages of today
    EXPECT_EQ(axis->tickCount(), 4);
}

TEST_F(HistorySummaryTest, theScaleEndsAtTheFirstRoundStepAboveTheLargestBar)
{
    const auto scale = [](quint32 max) {
        const auto chart = SummaryCharts::delaysChart({{10, max}}, QPalette());
        const auto *const axis = qobject_cast<QValueAxis *>(chart->axes(Qt::Horizontal).value(0));
        return std::pair(static_cast<int>(axis->max()), axis->tickCount() - 1);
    };
    EXPECT_EQ(scale(0), std::pair(1, 1));
    EXPECT_EQ(scale(1), std::pair(1, 1));
    EXPECT_EQ(scale(4), std::pair(4, 4));
    EXPECT_EQ(scale(5), std::pair(6, 3));
    EXPECT_EQ(scale(101), std::pair(150, 3));
    EXPECT_EQ(scale(940), std::pair(1000, 2));
    EXPECT_EQ(scale(1'000'000), std::pair(1'000'000, 2));
}

TEST_F(HistorySummaryTest, aReasonIsReadableInFull)
{
    source.summary.reasons.clear();
    for (const qint32 status : {0x40, 0x41, 0x42, 0x43, 0x44, 0x45, 0x46})
        source.summary.reasons.append({MessageState::Refused, status, 1});
    source.summary.reasons.append({MessageState::Failed, -15, 1}); // the longest word
    showDays(0);
    ASSERT_TRUE(waitUntil([&] { return table("tblReasons")->rowCount() == 8; }));
    window->grab(); // which lays the chart out
    QStringList drawn;
    for (const QGraphicsItem *const item : chart("chtReasons")->scene()->items()) {
        const auto *const text = qgraphicsitem_cast<const QGraphicsTextItem *>(item);
        if (text && text->isVisible())
            drawn << text->toPlainText();
    }
    for (int row = 0; row < 8; ++row)
        EXPECT_TRUE(drawn.contains(table("tblReasons")->item(row, 1)->text()))
            << table("tblReasons")->item(row, 1)->text().toStdString();
}

TEST_F(HistorySummaryTest, changesAreShownWhileTheTabIsSeen)
{
    showDays(0);
    EXPECT_TRUE(waitUntil([&] { return table("tblDelays")->rowCount() == 3; }));
    source.summary.delays.append({1, 1});
    Q_EMIT source.changed();
    endPause();
    EXPECT_TRUE(waitUntil([&] { return table("tblDelays")->rowCount() == 4; }));
}

TEST_F(HistorySummaryTest, manyChangesAreAskedForOnce)
{
    showDays(0);
    EXPECT_TRUE(waitUntil([&] { return table("tblDelays")->rowCount() == 3; }));
    const auto asked = [&] { return source.calls.count(u"summary "_s + dayBefore(6)); };
    const qsizetype before = asked();
    for (int change = 0; change < 5; ++change) {
        Q_EMIT source.changed();
        QCoreApplication::processEvents();
    }
    EXPECT_EQ(asked(), before);
    endPause();
    EXPECT_TRUE(waitUntil([&] { return asked() == before + 1; }));
    EXPECT_TRUE(waitUntil([&] { return control<QTimer>("tmrPause")->isActive(); }));
    EXPECT_EQ(asked(), before + 1);
}

TEST_F(HistorySummaryTest, anotherRangeIsNotKeptWaiting)
{
    showDays(0);
    ASSERT_TRUE(waitUntil([&] { return table("tblDays")->rowCount() == 7; }));
    control<QComboBox>("cboDays")->setCurrentIndex(2);
    EXPECT_EQ(source.calls.constLast(), u"summary "_s + dayBefore(364));
}

TEST_F(HistorySummaryTest, numbersAreDrawnOverTheDaysThatTheyAreOf)
{
    source.hold();
    showDays(1);
    control<QComboBox>("cboDays")->setCurrentIndex(2);
    source.release();
    EXPECT_EQ(table("tblDays")->rowCount(), 30);
    EXPECT_TRUE(waitUntil([&] { return table("tblDays")->rowCount() == 365; }));
}

TEST_F(HistorySummaryTest, numbersThatCanNotBeHadAreToldAndTheNextOnesClearThat)
{
    source.isAway = true;
    showDays(0);
    const auto *const status = control<QLabel>("lblStatus");
    EXPECT_TRUE(waitUntil([&] { return status->text() == u"the engine is away"_s; }));
    source.isAway = false;
    control<QComboBox>("cboDays")->setCurrentIndex(1);
    ASSERT_TRUE(waitUntil([&] { return table("tblDays")->rowCount() == 30; }));
    EXPECT_TRUE(status->text().isEmpty());
}

TEST_F(HistorySummaryTest, nothingAtAllIsShownAsWell)
{
    source.summary = {};
    showDays(2);
    EXPECT_TRUE(waitUntil([&] { return table("tblDays")->rowCount() == 365; }));
    EXPECT_EQ(table("tblDelays")->rowCount(), 0);
    EXPECT_EQ(table("tblReasons")->rowCount(), 0);
    EXPECT_FALSE(window->grab().isNull());
}

TEST_F(HistorySummaryTest, listsCanNotBeSearchedOrWrittenFromThere)
{
    showTab(2);
    for (const char *const name : {"txtSearch", "btnExport", "btnPrint"})
        EXPECT_FALSE(control(name)->isEnabled()) << name;
    showTab(0);
    for (const char *const name : {"txtSearch", "btnExport", "btnPrint"})
        EXPECT_TRUE(control(name)->isEnabled()) << name;
}

} // namespace

} // namespace norvane
