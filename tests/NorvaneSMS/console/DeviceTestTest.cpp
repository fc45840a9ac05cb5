#include "NorvaneSMS/console/ConsoleFixture.h"

#include "NorvaneSMS/console/TerminalView.h"
#include "foundation/Globals.h"
#include "foundation/ui/FatalReport.h"

#include <QApplication>
#include <QKeyEvent>
#include <QMessageBox>
#include <QMouseEvent>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QTest>
#include <QTimer>

namespace norvane {

using namespace Qt::StringLiterals;

namespace {

/// Counts the paintings of a widget.
class Paints : public QObject
{
public:
    bool eventFilter(QObject *, QEvent *event) override
    {
        count += event->type() == QEvent::Paint ? 1 : 0;
        return false;
    }
    int count = 0;
};

} // namespace

class DeviceTest : public ConsoleFixture
{
protected:
    void SetUp() override { loadAsServer(); }

    enum class Press { Click, Key };

    /// Lets a press of the mouse or of the space bar wait for its turn, as the window system does
    /// while the program is busy.
    void post(Press press, const char *name) const
    {
        auto *const widget = control<QWidget>(name);
        const QPointF middle = widget->rect().center();
        for (const bool down : {true, false}) {
            QEvent *event = nullptr;
            if (press == Press::Click)
                event =
                    new QMouseEvent(down ? QEvent::MouseButtonPress : QEvent::MouseButtonRelease,
                                    middle, widget->mapToGlobal(middle), Qt::LeftButton,
                                    down ? Qt::LeftButton : Qt::NoButton, Qt::NoModifier);
            else
                event = new QKeyEvent(down ? QEvent::KeyPress : QEvent::KeyRelease, Qt::Key_Space,
                                      Qt::NoModifier, u" "_s);
            QCoreApplication::postEvent(widget, event);
        }
    }
    void press() { QTest::mouseClick(control<QPushButton>("btnTestDevice"), Qt::LeftButton); }

    static void raiseDeviceInfo(SMSManager &engine)
    {
        Q_EMIT engine.DeviceInfo(u"Acme"_s, u"M1"_s, {}, {}, 80, -5, {}, {}, {}, {});
    }
    /// DeviceInfo arrives while TestDevice is being answered.
    void deviceTellsOfItself()
    {
        script.inTestDevice = [this] { script.pendingEvents.append(raiseDeviceInfo); };
    }

    const QString deliver = u"DeliverPendingEvents"_s;
    const QString status = u"GetEngineStatus"_s;
    const QString test = u"TestDevice"_s;
    const QString stop = u"StopEngine"_s;
    const QString start = u"StartEngine"_s;
};

TEST_F(DeviceTest, aRunningEngineIsStoppedForTheTestAndStartedAfterwards)
{
    for (const qint32 result : {1, 0, -5, 2}) {
        script.status = 1;
        script.testResult = result;
        press();
        EXPECT_EQ(takeCalls(),
                  (QStringList{status, deliver, stop, deliver, test, deliver, start, deliver}))
            << result;
    }
}

TEST_F(DeviceTest, aStoppedEngineStaysStopped)
{
    for (const qint32 result : {1, 0}) {
        script.status = 0;
        script.testResult = result;
        press();
        EXPECT_EQ(takeCalls(), (QStringList{status, deliver, test, deliver})) << result;
    }
}

TEST_F(DeviceTest, anyOtherStatusCountsAsNotRunning)
{
    for (const qint32 other : {2, -1}) {
        script.status = other;
        press();
        EXPECT_EQ(takeCalls(), (QStringList{status, deliver, test, deliver})) << other;
    }
}

TEST_F(DeviceTest, successStandsInTheTerminalAndInTheStatus)
{
    press();
    EXPECT_EQ(terminal(), GS(3760018));
    EXPECT_TRUE(control<TerminalView>("txtTerm")->textCursor().atEnd());
    EXPECT_EQ(text("lblDeviceStatus"), GS(3760019));
    EXPECT_EQ(caption("fraCommunication"), GS(3760090));
    EXPECT_TRUE(boxes.shown.isEmpty());
}

TEST_F(DeviceTest, onlyOneMeansSuccess)
{
    for (const qint32 result : {0, -1, 2, 11, -2'147'483'647}) {
        script.testResult = result;
        press();
        EXPECT_EQ(text("lblDeviceStatus"), GS(3760088)) << result;
        EXPECT_EQ(terminal(), QString()) << result;
        EXPECT_EQ(caption("fraCommunication"), GS(3760090)) << result;
    }
    EXPECT_TRUE(boxes.shown.isEmpty());
}

TEST_F(DeviceTest, theSuccessTextStandsBehindTheDetailsOfTheDevice)
{
    deviceTellsOfItself();
    press();
    EXPECT_TRUE(terminal().startsWith(u"Manufacturer: Acme\r\n"_s));
    EXPECT_TRUE(terminal().endsWith(u"Hardware: \r\n"_s + GS(3760018)));
    EXPECT_EQ(text("lblDeviceStatus"), GS(3760019)) << "in place of manufacturer and model";
    raiseDeviceInfo(*engine());
    EXPECT_EQ(text("lblDeviceStatus"), u"Acme-M1"_s) << "until the next DeviceInfo";
}

TEST_F(DeviceTest, aTestThatFailsAfterDeviceInfoLeavesTheDetails)
{
    deviceTellsOfItself();
    script.testResult = 0;
    press();
    EXPECT_TRUE(terminal().endsWith(u"Hardware: \r\n"_s));
    EXPECT_EQ(text("lblDeviceStatus"), GS(3760088));
}

TEST_F(DeviceTest, whatTheEventsWroteIsLeftByAFailedTest)
{
    script.testResult = -39;
    script.inTestDevice = [this] {
        script.pendingEvents.append(
            [](SMSManager &engine) { Q_EMIT engine.WarningError(-39, QString()); });
    };
    press();
    EXPECT_EQ(terminal(), GS(3760054, -39, u"ERR_NO_RESPOND"_s, QString()) + u"\r\n"_s);
}

TEST_F(DeviceTest, eachTestStartsFromAnEmptyTerminal)
{
    press();
    Q_EMIT engine()->WarningError(1, QString());
    QString whileTesting = u"unseen"_s;
    script.inTestDevice = [&] { whileTesting = terminal(); };
    press();
    EXPECT_EQ(whileTesting, QString());
    EXPECT_EQ(terminal(), GS(3760018));
}

TEST_F(DeviceTest, whatTheStopReportsIsHandledBeforeTheTerminalIsEmptied)
{
    script.status = 1;
    show();
    Q_EMIT engine()->EngineStatus(1);
    script.pendingEvents.append([](SMSManager &engine) {
        Q_EMIT engine.EngineStatus(0);
        Q_EMIT engine.WarningError(1, QString());
    });
    bool stopEnabled = true;
    QString whileTesting = u"unseen"_s;
    script.inTestDevice = [&] {
        stopEnabled = control("btnStop")->isEnabled();
        whileTesting = terminal();
    };
    press();
    EXPECT_FALSE(stopEnabled);
    EXPECT_EQ(whileTesting, QString());
}

TEST_F(DeviceTest, frameAndPointerTellThatTheTestRuns)
{
    QString during;
    const QCursor *pointer = nullptr;
    Qt::CursorShape shape = Qt::ArrowCursor;
    script.inTestDevice = [&] {
        during = caption("fraCommunication");
        pointer = QApplication::overrideCursor();
        shape = pointer ? pointer->shape() : Qt::ArrowCursor;
    };
    press();
    EXPECT_EQ(during, GS(3760087));
    EXPECT_EQ(shape, Qt::WaitCursor);
    EXPECT_EQ(QApplication::overrideCursor(), nullptr);
}

TEST_F(DeviceTest, thePointerIsThereFromTheFirstCallToTheLast)
{
    script.status = 1;
    const auto isHourglass = [] { return QApplication::overrideCursor() != nullptr; };
    QList<bool> seen;
    const auto look = [&](SMSManager &) { seen.append(isHourglass()); };
    script.pendingEvents.append(look); // handed out behind GetEngineStatus
    script.inTestDevice = [&] { script.pendingEvents.append(look); };
    press();
    EXPECT_EQ(seen, (QList<bool>{true, true}));
    EXPECT_FALSE(isHourglass());
}

TEST_F(DeviceTest, everyCallIsMadeUnderTheHourglass)
{
    script.status = 1;
    QStringList without;
    script.inCall = [&](const QString &call) {
        if (!QApplication::overrideCursor())
            without.append(call);
    };
    press();
    script.inCall = nullptr;
    EXPECT_EQ(without, QStringList());
    EXPECT_TRUE(takeCalls().contains(start));
}

TEST_F(DeviceTest, theNewCaptionIsPaintedBeforeTheCallBlocks)
{
    show();
    Paints paints;
    control("fraCommunication")->installEventFilter(&paints);
    int before = -1;
    script.inTestDevice = [&] { before = paints.count; };
    paints.count = 0;
    press();
    EXPECT_GT(before, 0);
}

TEST_F(DeviceTest, allIsShownBeforeTheEngineIsStartedAgainUnderTheHourglass)
{
    show();
    for (const qint32 result : {1, 0}) {
        script.status = 1;
        script.testResult = result;
        Paints paints;
        control<TerminalView>("txtTerm")->viewport()->installEventFilter(&paints);
        script.inTestDevice = [&] { paints.count = 0; };
        bool started = false;
        script.inCall = [&](const QString &call) {
            if (call != start)
                return;
            started = true;
            EXPECT_EQ(caption("fraCommunication"), GS(3760090));
            EXPECT_GT(paints.count, 0) << "the terminal";
            EXPECT_EQ(text("lblDeviceStatus"), GS(result == 1 ? 3760019 : 3760088));
            ASSERT_NE(QApplication::overrideCursor(), nullptr);
            EXPECT_EQ(QApplication::overrideCursor()->shape(), Qt::WaitCursor);
        };
        press();
        EXPECT_TRUE(started);
        EXPECT_EQ(QApplication::overrideCursor(), nullptr);
        script.inCall = nullptr;
        script.inTestDevice = nullptr;
    }
}

TEST_F(DeviceTest, anEngineThatFailsInTheTestIsFatalAndGivesThePointerBack)
{
    int exitCode = 0;
    const auto previous = FatalReport::setTerminate([&](int code) { exitCode = code; });
    script.failingCalls.enqueue(6); // three at load, GetEngineStatus, DeliverPendingEvents
    press();
    EXPECT_EQ(exitCode, 1);
    EXPECT_EQ(QApplication::overrideCursor(), nullptr);
    ASSERT_EQ(boxes.shown.size(), 1);
    EXPECT_TRUE(boxes.shown.first().text.endsWith(u" - 462"_s));
    FatalReport::setTerminate(previous);
}

TEST_F(DeviceTest, onAClientItCantBePressed)
{
    loadAsClient();
    show();
    EXPECT_FALSE(control("btnTestDevice")->isEnabled());
    press();
    EXPECT_TRUE(takeCalls().isEmpty());
}

TEST_F(DeviceTest, whatIsPressedWhileTheTestBlocksRunsNoOther)
{
    show();
    script.inTestDevice = [this] {
        post(Press::Click, "btnTestDevice");
        post(Press::Key, "btnTestDevice");
        post(Press::Click, "btnClearQueue");
        post(Press::Key, "txtMessage");
    };
    press();
    QCoreApplication::processEvents();
    EXPECT_EQ(takeCalls(), (QStringList{status, deliver, test, deliver}));
    EXPECT_EQ(control<QPlainTextEdit>("txtMessage")->toPlainText(), QString());
    EXPECT_TRUE(boxes.shown.isEmpty());

    script.inTestDevice = nullptr;
    post(Press::Click, "btnTestDevice"); // what comes afterwards is handled
    QCoreApplication::processEvents();
    post(Press::Key, "txtMessage");
    QCoreApplication::processEvents();
    EXPECT_EQ(takeCalls(), (QStringList{status, deliver, test, deliver}));
    EXPECT_EQ(control<QPlainTextEdit>("txtMessage")->toPlainText(), u" "_s);
}

TEST_F(DeviceTest, whatIsPressedWhileAStartOrAStopBlocksRunsNoOtherEither)
{
    show();
    for (const QString &blocking : {stop, start}) {
        script.status = 1;
        script.inCall = [&](const QString &call) {
            if (call == blocking)
                post(Press::Click, "btnTestDevice");
        };
        press();
        script.inCall = nullptr;
        QCoreApplication::processEvents();
        EXPECT_EQ(takeCalls().count(test), 1) << qPrintable(blocking);
    }
}

TEST_F(DeviceTest, otherEventsThatCameWhileTheTestBlocksAreHandled)
{
    bool handled = false;
    script.inTestDevice = [&] {
        QMetaObject::invokeMethod(
            qApp, [&] { handled = true; }, Qt::QueuedConnection);
    };
    press();
    QCoreApplication::processEvents();
    EXPECT_TRUE(handled);
}

TEST_F(DeviceTest, aBoxThatComesUpWhileInputIsDroppedCanBeAnswered)
{
    show();
    bool answered = false;
    script.inTestDevice = [this, &answered] {
        QMetaObject::invokeMethod(
            console.get(),
            [&answered] {
                QMessageBox box(QMessageBox::Information, QString(), u"x"_s, QMessageBox::Ok);
                QTimer::singleShot(0, &box, [&box] {
                    QTest::mouseClick(box.button(QMessageBox::Ok), Qt::LeftButton);
                });
                answered = box.exec() == QMessageBox::Ok;
            },
            Qt::QueuedConnection);
    };
    press();
    EXPECT_TRUE(answered);
}

} // namespace norvane
