#include "NorvaneSMS/console/ConsoleFixture.h"

#include "NorvaneSMS/console/QueueGridModel.h"
#include "NorvaneSMS/console/SentGridModel.h"
#include "NorvaneSMS/console/TerminalView.h"
#include "foundation/Globals.h"

#include <QLabel>
#include <QTableView>

#include <ctime>

namespace norvane {

using namespace Qt::StringLiterals;

class EngineEvents : public ConsoleFixture
{
protected:
    void SetUp() override { loadAsServer(); }

    QTableView *sent() const { return control<QTableView>("grdSentDetails"); }
    QTableView *queue() const { return control<QTableView>("grdQueue"); }
    QString cell(const QTableView *grid, int row, int column) const
    {
        return grid->model()->index(row, column).data().toString();
    }
    bool shows(const char *name) const { return !control(name)->isHidden(); }

    void raiseDeviceInfo(const QString &manufacturer = u"Acme"_s, const QString &model = u"M1"_s)
    {
        Q_EMIT engine()->DeviceInfo(manufacturer, model, u"123456789012345"_s, u"Net"_s, 80, -5,
                                    u"F1"_s, u"T"_s, u"+34"_s, u"H1"_s);
    }
    void raiseSent(qint32 queueCount = 0)
    {
        Q_EMIT engine()->SMSSent(u"912345678"_s, u"Hola"_s, queueCount);
    }
    void raiseFailed(qint32 code = -39)
    {
        Q_EMIT engine()->SMSSentFailed(u"912345678"_s, u"Hola"_s, code);
    }
    QString estimate(const QString &time) const { return GS(3760053, time); }

    static QList<QueueRow> rows(int count)
    {
        QList<QueueRow> rows;
        for (int i = 0; i < count; ++i)
            rows.append({u"2026-11-20T10:00:%1"_s.arg(i, 2, 10, QLatin1Char('0')),
                         QString::number(i), u"text %1"_s.arg(i), i + 1});
        return rows;
    }
};

TEST_F(EngineEvents, deviceInfoReplacesTheTerminal)
{
    raiseSent();
    raiseDeviceInfo();
    EXPECT_EQ(terminal(), u"Manufacturer: Acme\r\nModel: M1\r\nIMEI: 123456789012345\r\n"
                          "NetworkInfo: Net\r\nBatteryLevel: 80\r\nSignalLevel: -5\r\n"
                          "Firmware: F1\r\nTime: T\r\nSMSCNumber: +34\r\nHardware: H1\r\n"_s);
    EXPECT_TRUE(control<TerminalView>("txtTerm")->textCursor().atEnd());
}

TEST_F(EngineEvents, deviceStatusTakesTheFirst25Characters)
{
    raiseDeviceInfo(u"Acme"_s, u"M1"_s);
    EXPECT_EQ(text("lblDeviceStatus"), u"Acme-M1"_s);
    raiseDeviceInfo(QString(30, u'x'), u"M1"_s);
    EXPECT_EQ(text("lblDeviceStatus"), QString(25, u'x'));
}

TEST_F(EngineEvents, theDeviceStatusKeepsItsTextWhenTheDeviceGoesAway)
{
    raiseDeviceInfo();
    Q_EMIT engine()->WarningError(-5, QString());
    EXPECT_EQ(text("lblDeviceStatus"), u"Acme-M1"_s);
}

TEST_F(EngineEvents, engineStatusOneIsTheOnlyRunningOne)
{
    for (const qint32 status : {1, 0, 2, -1}) {
        Q_EMIT engine()->EngineStatus(status);
        const bool running = status == 1;
        EXPECT_EQ(shows("imgEngineStatus(1)"), running) << status;
        EXPECT_EQ(shows("imgEngineStatus(0)"), !running) << status;
        EXPECT_EQ(control("btnStart")->isEnabled(), !running) << status;
        EXPECT_EQ(control("btnStop")->isEnabled(), running) << status;
        EXPECT_EQ(text("lblEngineStatus"), running ? GS(3760014) : GS(3760026)) << status;
    }
}

TEST_F(EngineEvents, engineStatusZeroWithMessagesWaitingEnablesStartAndCallsNothing)
{
    Q_EMIT engine()->SMSQueueChanged(3);
    takeCalls();
    Q_EMIT engine()->EngineStatus(0);
    EXPECT_TRUE(control("btnStart")->isEnabled());
    EXPECT_TRUE(takeCalls().isEmpty());
}

TEST_F(EngineEvents, aChangedQueueShowsTheCountOfTheEventAndRebuildsTheGrid)
{
    script.queue = rows(2);
    Q_EMIT engine()->SMSQueueChanged(5);
    EXPECT_EQ(text("lblQueueSize"), GS(3760025, 5));
    EXPECT_TRUE(shows("imgQueue(1)"));
    EXPECT_FALSE(shows("imgQueue(0)"));
    EXPECT_EQ(takeCalls(), QStringList{u"GetQueue"_s});
    EXPECT_EQ(queue()->model()->rowCount(), 2);
    EXPECT_TRUE(queue()->updatesEnabled());
}

TEST_F(EngineEvents, theGridIsSortedByDeliveryDateByTheConsole)
{
    script.queue = {{u"2026-11-20T12:00:00"_s, u"2"_s, {}, 1},
                    {u"2026-11-20T09:00:00"_s, u"1"_s, {}, 2},
                    {u"2026-11-20T12:00:00"_s, u"3"_s, {}, 3}};
    Q_EMIT engine()->SMSQueueChanged(3);
    EXPECT_EQ(cell(queue(), 0, 1), u"1"_s);
    EXPECT_EQ(cell(queue(), 1, 1), u"2"_s);
    EXPECT_EQ(cell(queue(), 2, 1), u"3"_s);
    EXPECT_EQ(cell(queue(), 0, 0), u"20/11/26 9:00:00"_s);
}

TEST_F(EngineEvents, noTwoDeliveryDatesLookAlike)
{
    script.queue = {{u"1999-11-20T09:00:01"_s, u"1"_s, {}, 1},
                    {u"1999-11-20T09:00:59"_s, u"2"_s, {}, 2},
                    {u"2099-11-20T09:00:59"_s, u"3"_s, {}, 3}};
    Q_EMIT engine()->SMSQueueChanged(3);
    EXPECT_EQ(cell(queue(), 0, 0), u"20/11/99 9:00:01"_s);
    EXPECT_EQ(cell(queue(), 1, 0), u"20/11/99 9:00:59"_s);
    // The column has no room for more; the tooltip has.
    const auto tip = [this](int row) {
        return queue()->model()->index(row, 0).data(Qt::ToolTipRole).toString();
    };
    EXPECT_TRUE(tip(1).contains(u">20/11/1999 9:00:59<"_s)) << qPrintable(tip(1));
    EXPECT_TRUE(tip(2).contains(u">20/11/2099 9:00:59<"_s)) << qPrintable(tip(2));
}

TEST_F(EngineEvents, redrawingIsOffWhileTheGridIsRebuilt)
{
    bool updates = true;
    script.inGetQueue = [&] { updates = queue()->updatesEnabled(); };
    Q_EMIT engine()->SMSQueueChanged(1);
    EXPECT_FALSE(updates);
    EXPECT_TRUE(queue()->updatesEnabled());
}

TEST_F(EngineEvents, theCountIsShownBeforeTheQueueIsFetched)
{
    QString shown;
    script.inGetQueue = [&] { shown = text("lblQueueSize"); };
    Q_EMIT engine()->SMSQueueChanged(7);
    EXPECT_EQ(shown, GS(3760025, 7));
}

TEST_F(EngineEvents, oneMessageIsAQueueThatHoldsSomething)
{
    Q_EMIT engine()->SMSQueueChanged(1);
    EXPECT_EQ(text("lblQueueSize"), GS(3760025, 1));
    EXPECT_TRUE(shows("imgQueue(1)"));
    EXPECT_FALSE(shows("imgQueue(0)"));
}

TEST_F(EngineEvents, aDateThatAClockChangeSkipsIsShownLikeAnyOther)
{
    qputenv("TZ", "Europe/Madrid");
    tzset();
    script.queue = {{u"2026-03-29T02:30:00"_s, u"2"_s, {}, 1}};
    Q_EMIT engine()->SMSQueueChanged(1);
    EXPECT_EQ(cell(queue(), 0, 0), u"29/3/26 2:30:00"_s);
    qunsetenv("TZ");
    tzset();
}

TEST_F(EngineEvents, anOddDateIsShownAsItCame)
{
    script.queue = {{u"soon"_s, u"2"_s, {}, 1}};
    Q_EMIT engine()->SMSQueueChanged(1);
    EXPECT_EQ(cell(queue(), 0, 0), u"soon"_s);
}

TEST_F(EngineEvents, anEmptyQueueShowsItsTextEmptiesTheGridAndLeavesTheCurrentRowAlone)
{
    script.queue = rows(3);
    Q_EMIT engine()->SMSQueueChanged(3);
    queue()->setCurrentIndex(queue()->model()->index(1, 0));
    script.queue.clear();
    Q_EMIT engine()->SMSQueueChanged(0);
    EXPECT_EQ(text("lblQueueSize"), GS(3760013));
    EXPECT_TRUE(shows("imgQueue(0)"));
    EXPECT_FALSE(shows("imgQueue(1)"));
    EXPECT_EQ(queue()->model()->rowCount(), 0);
    EXPECT_FALSE(queue()->currentIndex().isValid());
}

TEST_F(EngineEvents, aCountBelowZeroIsEmptyToo)
{
    Q_EMIT engine()->SMSQueueChanged(-1);
    EXPECT_EQ(text("lblQueueSize"), GS(3760013));
}

TEST_F(EngineEvents, theCurrentRowIsKeptAsANumberAndScrolledTo)
{
    show();
    script.queue = rows(60);
    Q_EMIT engine()->SMSQueueChanged(60);
    queue()->setCurrentIndex(queue()->model()->index(50, 0));
    script.queue.removeFirst();
    Q_EMIT engine()->SMSQueueChanged(59);
    EXPECT_EQ(queue()->currentIndex().row(), 50);
    EXPECT_EQ(cell(queue(), queue()->currentIndex().row(), 1), u"51"_s);
    EXPECT_TRUE(queue()->viewport()->rect().contains(
        queue()->visualRect(queue()->currentIndex()).center()));
}

TEST_F(EngineEvents, theLastRowIsKeptWhereTheGridHasJustEnoughRows)
{
    script.queue = rows(3);
    Q_EMIT engine()->SMSQueueChanged(3);
    queue()->setCurrentIndex(queue()->model()->index(2, 0));
    Q_EMIT engine()->SMSQueueChanged(3);
    EXPECT_EQ(queue()->currentIndex().row(), 2);
}

TEST_F(EngineEvents, theCurrentRowIsNotKeptWhereTheGridHasTooFewRows)
{
    script.queue = rows(3);
    Q_EMIT engine()->SMSQueueChanged(3);
    queue()->setCurrentIndex(queue()->model()->index(2, 0));
    script.queue.removeFirst();
    Q_EMIT engine()->SMSQueueChanged(2);
    EXPECT_FALSE(queue()->currentIndex().isValid());
}

TEST_F(EngineEvents, theHeadersAreSetAnewAfterEachRebuild)
{
    const QStringList odd{u"a"_s, u"b"_s, u"c"_s};
    const std::initializer_list<std::pair<QTableView *, QStringList>> headed = {
        {queue(), {GS(3760028), GS(3760029), GS(3760030)}},
        {sent(), {GS(3760031), GS(3760029), GS(3760030)}}};
    for (const qint32 count : {0, 2, 0}) {
        static_cast<QueueGridModel *>(queue()->model())->setHeaders(odd);
        static_cast<SentGridModel *>(sent()->model())->setHeaders(odd);
        for (const auto &[grid, headers] : headed) {
            for (int column = 0; column < 3; ++column)
                grid->setColumnWidth(column, 200 + column);
        }
        script.queue = rows(count);
        Q_EMIT engine()->SMSQueueChanged(count);
        for (const auto &[grid, headers] : headed) {
            for (int column = 0; column < 3; ++column)
                EXPECT_EQ(grid->model()->headerData(column, Qt::Horizontal).toString(),
                          headers.at(column));
            EXPECT_EQ(grid->columnWidth(0), 84);  // 1260 twips
            EXPECT_EQ(grid->columnWidth(1), 107); // 1600
            EXPECT_EQ(grid->columnWidth(2), 78);  // 1170
        }
    }
}

TEST_F(EngineEvents, sentAddsALineARowAndTheCaption)
{
    raiseSent();
    EXPECT_EQ(terminal(), GS(3760023, u"912345678"_s) + u"\r\n"_s);
    ASSERT_EQ(sent()->model()->rowCount(), 1);
    EXPECT_EQ(cell(sent(), 0, 0), u"20/11/26 9:30:15"_s);
    EXPECT_EQ(cell(sent(), 0, 1), u"912345678"_s);
    EXPECT_EQ(cell(sent(), 0, 2), u"Hola"_s);
    EXPECT_FALSE(sent()->model()->index(0, 0).data(Qt::ForegroundRole).isValid());
    EXPECT_EQ(caption("fraSentDetails"), GS(3760009) + u" ( 1 )"_s);
}

TEST_F(EngineEvents, failedAddsALineAndARedRowAndNothingElse)
{
    const QString captionBefore = caption("fraSentDetails");
    const QString estimateBefore = text("lblEstimated");
    raiseFailed(-39);
    EXPECT_EQ(terminal(), GS(3760024, u"912345678"_s, -39, u"ERR_NO_RESPOND"_s) + u"\r\n"_s);
    ASSERT_EQ(sent()->model()->rowCount(), 1);
    EXPECT_EQ(cell(sent(), 0, 0), u"20-11-2026 09:30:15"_s);
    for (int column = 0; column < 3; ++column)
        EXPECT_EQ(sent()->model()->index(0, column).data(Qt::ForegroundRole).value<QColor>(),
                  QColor(255, 0, 0));
    EXPECT_EQ(caption("fraSentDetails"), captionBefore);
    EXPECT_EQ(text("lblEstimated"), estimateBefore);
}

TEST_F(EngineEvents, whatAColumnOfASentMessageCutsOffIsReadableOverIt)
{
    raiseSent();
    for (int column = 0; column < 3; ++column)
        EXPECT_TRUE(sent()
                        ->model()
                        ->index(0, column)
                        .data(Qt::ToolTipRole)
                        .toString()
                        .contains(cell(sent(), 0, column)))
            << column;
}

TEST_F(EngineEvents, aReportOfAMessageCallsNothingOfTheEngine)
{
    raiseSent(3);
    raiseFailed();
    raiseFailed();
    raiseSent();
    EXPECT_TRUE(takeCalls().isEmpty());
    EXPECT_TRUE(boxes.shown.isEmpty());
}

TEST_F(EngineEvents, aCodeWithoutAWordIsShownWithAnEmptyOne)
{
    raiseFailed(-63);
    EXPECT_EQ(terminal(), GS(3760024, u"912345678"_s, -63, QString()) + u"\r\n"_s);
}

TEST_F(EngineEvents, codeMinusTwoShowsTheLanguagesText)
{
    raiseFailed(-2);
    EXPECT_TRUE(terminal().contains(GS(3760032)));
}

TEST_F(EngineEvents, aWarningWithCodeOneShowsOk)
{
    Q_EMIT engine()->WarningError(1, u"extra"_s);
    EXPECT_EQ(terminal(), GS(3760054, 1, u"Ok"_s, u"extra"_s) + u"\r\n"_s);
}

TEST_F(EngineEvents, aWarningChangesNothingButTheTerminal)
{
    const QString status = text("lblEngineStatus");
    Q_EMIT engine()->WarningError(-4, QString());
    EXPECT_EQ(text("lblEngineStatus"), status);
    EXPECT_EQ(sent()->model()->rowCount(), 0);
    EXPECT_TRUE(boxes.shown.isEmpty());
    EXPECT_TRUE(takeCalls().isEmpty());
}

TEST_F(EngineEvents, theCaptionCountsFailedRowsTooButIsBroughtUpToDateBySentAlone)
{
    raiseFailed();
    raiseFailed();
    raiseFailed();
    raiseSent();
    EXPECT_EQ(caption("fraSentDetails"), GS(3760009) + u" ( 4 )"_s);
    raiseFailed();
    EXPECT_EQ(caption("fraSentDetails"), GS(3760009) + u" ( 4 )"_s);
    EXPECT_EQ(sent()->model()->rowCount(), 5);
}

TEST_F(EngineEvents, theFirstEstimateMeasuresFromTheZeroDate)
{
    raiseSent(10); // the clock's seconds are 15
    EXPECT_EQ(text("lblEstimated"), estimate(u"0:02:30"_s));
}

TEST_F(EngineEvents, anEmptyQueueHasAnEstimateOfZero)
{
    raiseSent(0);
    EXPECT_EQ(text("lblEstimated"), estimate(u"0:00:00"_s));
}

TEST_F(EngineEvents, sixtySecondsApartCountAsNoneAndSixtyOneAsOne)
{
    raiseSent(10);
    now = now.addSecs(60);
    raiseSent(10);
    EXPECT_EQ(text("lblEstimated"), estimate(u"0:00:00"_s));
    now = now.addSecs(61);
    raiseSent(10);
    EXPECT_EQ(text("lblEstimated"), estimate(u"0:00:10"_s));
}

TEST_F(EngineEvents, deviceInfoSetsTheMomentThatTheEstimateMeasuresFrom)
{
    raiseDeviceInfo();
    now = now.addSecs(7);
    raiseSent(2);
    EXPECT_EQ(text("lblEstimated"), estimate(u"0:00:14"_s));
}

TEST_F(EngineEvents, failuresWarningsAndOtherEventsLeaveThatMomentAlone)
{
    raiseDeviceInfo();
    now = now.addSecs(3);
    raiseFailed();
    Q_EMIT engine()->WarningError(-1, QString());
    Q_EMIT engine()->EngineStatus(1);
    Q_EMIT engine()->SMSQueueChanged(1);
    now = now.addSecs(4);
    raiseSent(1);
    EXPECT_EQ(text("lblEstimated"), estimate(u"0:00:07"_s));
}

TEST_F(EngineEvents, theEstimateKeepsItsTextWhenTheQueueRunsEmpty)
{
    raiseSent(10);
    const QString shown = text("lblEstimated");
    Q_EMIT engine()->SMSQueueChanged(0);
    EXPECT_EQ(text("lblEstimated"), shown);
}

TEST_F(EngineEvents, linesOfTheTerminalStandOneBelowTheOther)
{
    raiseSent();
    raiseFailed(-63);
    Q_EMIT engine()->WarningError(-1, QString());
    EXPECT_EQ(terminal().count(u"\r\n"_s), 3);
    EXPECT_TRUE(control<TerminalView>("txtTerm")->textCursor().atEnd());
}

} // namespace norvane
