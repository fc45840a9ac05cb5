#include "foundation/ui/PendingInput.h"

#include <QContextMenuEvent>
#include <QCoreApplication>
#include <QInputMethodEvent>
#include <QKeyEvent>
#include <QMouseEvent>
#include <QPointingDevice>
#include <QShortcutEvent>
#include <QTabletEvent>
#include <QTimer>
#include <QTouchEvent>
#include <QWheelEvent>

#include <gtest/gtest.h>

#include <functional>
#include <memory>

namespace norvane {

using namespace Qt::StringLiterals;

namespace {

/// Notes the events that reach it.
class Receiver : public QObject
{
public:
    bool event(QEvent *event) override
    {
        handled.append(event->type());
        return true;
    }

    QList<QEvent::Type> handled;
};

std::unique_ptr<QEvent> makeKey(QEvent::Type type)
{
    return std::make_unique<QKeyEvent>(type, Qt::Key_A, Qt::NoModifier, u"a"_s);
}

std::unique_ptr<QEvent> makeMouse(QEvent::Type type)
{
    return std::make_unique<QMouseEvent>(type, QPointF(1, 1), QPointF(1, 1), Qt::LeftButton,
                                         Qt::LeftButton, Qt::NoModifier);
}

std::unique_ptr<QEvent> makeTouch(QEvent::Type type)
{
    return std::make_unique<QTouchEvent>(type, QPointingDevice::primaryPointingDevice());
}

std::unique_ptr<QEvent> makeTablet(QEvent::Type type)
{
    return std::make_unique<QTabletEvent>(type, QPointingDevice::primaryPointingDevice(),
                                          QPointF(1, 1), QPointF(1, 1), 1, 0, 0, 0, 0, 0,
                                          Qt::NoModifier, Qt::LeftButton, Qt::LeftButton);
}

std::unique_ptr<QEvent> makeInput(QEvent::Type type)
{
    switch (type) {
    case QEvent::KeyPress:
    case QEvent::KeyRelease:
    case QEvent::ShortcutOverride:
        return makeKey(type);
    case QEvent::TouchBegin:
    case QEvent::TouchUpdate:
    case QEvent::TouchEnd:
        return makeTouch(type);
    case QEvent::TabletPress:
    case QEvent::TabletRelease:
    case QEvent::TabletMove:
        return makeTablet(type);
    case QEvent::Wheel:
        return std::make_unique<QWheelEvent>(QPointF(1, 1), QPointF(1, 1), QPoint(), QPoint(0, 120),
                                             Qt::NoButton, Qt::NoModifier, Qt::NoScrollPhase,
                                             false);
    case QEvent::ContextMenu:
        return std::make_unique<QContextMenuEvent>(QContextMenuEvent::Mouse, QPoint(1, 1),
                                                   QPoint(1, 1));
    case QEvent::Shortcut:
        return std::make_unique<QShortcutEvent>(QKeySequence(Qt::Key_F1), 1);
    case QEvent::InputMethod:
        return std::make_unique<QInputMethodEvent>();
    default:
        return makeMouse(type);
    }
}

void post(QObject &receiver, QEvent::Type type)
{
    QCoreApplication::postEvent(&receiver, makeInput(type).release());
}

class PendingInput : public ::testing::TestWithParam<QEvent::Type>
{};

TEST_P(PendingInput, isDropped)
{
    Receiver receiver;
    post(receiver, GetParam());
    dropPendingInput();
    EXPECT_TRUE(receiver.handled.isEmpty());
    post(receiver, GetParam());
    QCoreApplication::sendPostedEvents();
    EXPECT_EQ(receiver.handled, QList<QEvent::Type>{GetParam()}) << "what comes later is handled";
}

INSTANTIATE_TEST_SUITE_P(Types, PendingInput,
                         ::testing::Values(QEvent::MouseButtonPress, QEvent::MouseButtonRelease,
                                           QEvent::MouseButtonDblClick, QEvent::MouseMove,
                                           QEvent::Wheel, QEvent::ContextMenu, QEvent::KeyPress,
                                           QEvent::KeyRelease, QEvent::ShortcutOverride,
                                           QEvent::Shortcut, QEvent::InputMethod,
                                           QEvent::TouchBegin, QEvent::TouchUpdate,
                                           QEvent::TouchEnd, QEvent::TabletPress,
                                           QEvent::TabletRelease, QEvent::TabletMove));

TEST(PendingEvents, areHandledWhereTheyAreNoInput)
{
    Receiver receiver;
    for (const QEvent::Type type : {QEvent::User, QEvent::UpdateRequest, QEvent::LayoutRequest})
        QCoreApplication::postEvent(&receiver, new QEvent(type));
    dropPendingInput();
    EXPECT_EQ(receiver.handled,
              (QList<QEvent::Type>{QEvent::User, QEvent::UpdateRequest, QEvent::LayoutRequest}));
}

TEST(PendingEvents, inputThatArrivesRoundsLaterIsDroppedToo)
{
    Receiver receiver;
    int rounds = 0;
    QTimer arrival;
    QObject::connect(&arrival, &QTimer::timeout, [&] {
        if (++rounds == 5) {
            arrival.stop();
            post(receiver, QEvent::KeyPress);
        }
    });
    arrival.start(0);
    dropPendingInput();
    EXPECT_EQ(rounds, 5);
    QCoreApplication::processEvents();
    EXPECT_TRUE(receiver.handled.isEmpty());
}

TEST(PendingEvents, thatFollowEachOtherForEverAreLeftAtLast)
{
    int rounds = 0;
    QTimer endless;
    QObject::connect(&endless, &QTimer::timeout, [&] { ++rounds; });
    endless.start(0);
    dropPendingInput();
    EXPECT_GT(rounds, 0);
}

} // namespace

} // namespace norvane
