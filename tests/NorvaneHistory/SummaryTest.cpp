#include "NorvaneHistory/HistoryFixture.h"
#include "NorvaneHistory/SummaryCharts.h"

#include "foundation/Globals.h"
#include "foundation/TextId.h"

#include <QBarSet>
#include <QChart>
#include <QChartView>
#include <QCheckBox>
#include <QComboBox>
#include <QDate>
#include <QHorizontalBarSeries>
#include <QStackedBarSeries>
#include <QTableWidget>
#include <QValueAxis>

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
        control<QComboBox>("cboDays")->setCurrentIndex(index);
        showTab(2);
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
    EXPECT_EQ(axis->max(), 20); // of 15 messages
}

TEST_F(HistorySummaryTest, changesAreShownWhileTheTabIsSeen)
{
    showDays(0);
    EXPECT_TRUE(waitUntil([&] { return table("tblDelays")->rowCount() == 3; }));
    source.summary.delays.append({1, 1});
    Q_EMIT source.changed();
    EXPECT_TRUE(waitUntil([&] { return table("tblDelays")->rowCount() == 4; }));
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
