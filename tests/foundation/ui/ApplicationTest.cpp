#include "foundation/ui/Application.h"

#include "common/NumberedFailure.h"
#include "foundation/ui/FatalReport.h"
#include "support/RecordingMessageBoxes.h"
#include "support/WaitUntil.h"

#include <QPushButton>
#include <QSocketNotifier>
#include <QTest>
#include <QTimer>

#include <gtest/gtest.h>

#include <functional>

#include <unistd.h>

namespace norvane {

using namespace Qt::StringLiterals;

namespace {

[[noreturn]] void fail()
{
    throw NumberedFailure(6, u"handler"_s, u"Overflow"_s);
}

/// An object whose handling of an event is what a test says.
class Handler : public QObject
{
public:
    explicit Handler(std::function<void()> handle) : m_handle(std::move(handle)) {}

    bool event(QEvent *event) override
    {
        if (event->type() != QEvent::User)
            return QObject::event(event);
        m_handle();
        return true;
    }

private:
    std::function<void()> m_handle;
};

class ApplicationTest : public ::testing::Test
{
protected:
    ApplicationTest()
    {
        m_former = FatalReport::setTerminate([this](int code) { exitCodes.append(code); });
    }
    ~ApplicationTest() override { FatalReport::setTerminate(m_former); }

    void expectOneReport()
    {
        EXPECT_TRUE(waitUntil([this] { return !exitCodes.isEmpty(); }));
        EXPECT_EQ(exitCodes, (QList<int>{1}));
        ASSERT_EQ(boxes.shown.size(), 1);
        EXPECT_EQ(boxes.shown.at(0).text, u"Overflow - 6"_s);
        EXPECT_EQ(boxes.shown.at(0).title, u"Norvane SMS"_s);
        EXPECT_EQ(boxes.shown.at(0).icon, MessageBoxes::Icon::Critical);
    }

    RecordingMessageBoxes boxes;
    QList<int> exitCodes;

private:
    FatalReport::Terminate m_former;
};

/// A form whose handler fails.
class FailingForm : public QObject
{
public:
    void button_Click() { fail(); }
};

TEST_F(ApplicationTest, failureOfAClickEndsInTheReport)
{
    QPushButton button;
    FailingForm form;
    QObject::connect(&button, &QPushButton::clicked, &form,
                     FatalReport::guarded(&form, &FailingForm::button_Click));
    QTest::mouseClick(&button, Qt::LeftButton);
    expectOneReport();
}

TEST_F(ApplicationTest, failureOfAKeyEndsInTheReport)
{
    QPushButton button;
    FailingForm form;
    QObject::connect(&button, &QPushButton::clicked, &form,
                     FatalReport::guarded(&form, &FailingForm::button_Click));
    QTest::keyClick(&button, Qt::Key_Space);
    expectOneReport();
}

TEST_F(ApplicationTest, failureOfATimerEndsInTheReport)
{
    QTimer timer;
    timer.setSingleShot(true);
    QObject::connect(&timer, &QTimer::timeout, &timer, [] { fail(); });
    timer.start(0);
    expectOneReport();
}

TEST_F(ApplicationTest, failureOfAQueuedCallEndsInTheReport)
{
    QObject context;
    QMetaObject::invokeMethod(
        &context, [] { fail(); }, Qt::QueuedConnection);
    expectOneReport();
}

TEST_F(ApplicationTest, failureOfAPostedEventEndsInTheReport)
{
    Handler handler(fail);
    QCoreApplication::postEvent(&handler, new QEvent(QEvent::User));
    expectOneReport();
}

TEST_F(ApplicationTest, failureOfASocketEndsInTheReport)
{
    int ends[2] = {-1, -1};
    ASSERT_EQ(::pipe(ends), 0);
    {
        QSocketNotifier notifier(ends[0], QSocketNotifier::Read);
        QObject::connect(&notifier, &QSocketNotifier::activated, &notifier, [&notifier] {
            notifier.setEnabled(false);
            fail();
        });
        EXPECT_EQ(::write(ends[1], "x", 1), 1);
        expectOneReport();
    }
    ::close(ends[0]);
    ::close(ends[1]);
}

TEST_F(ApplicationTest, failureOfAHandlerThatRunsWhileTheBoxIsOpenIsDropped)
{
    Handler handler(fail);
    boxes.whileShown = [&] {
        QCoreApplication::postEvent(&handler, new QEvent(QEvent::User));
        QCoreApplication::sendPostedEvents(&handler, QEvent::User);
    };
    QCoreApplication::postEvent(&handler, new QEvent(QEvent::User));
    expectOneReport();
}

TEST_F(ApplicationTest, handlerThatSucceedsKeepsItsAnswer)
{
    bool handled = false;
    Handler handler([&] { handled = true; });
    QEvent event(QEvent::User);
    EXPECT_TRUE(QCoreApplication::sendEvent(&handler, &event));
    EXPECT_TRUE(handled);
    EXPECT_TRUE(boxes.shown.isEmpty());
    EXPECT_TRUE(exitCodes.isEmpty());
}

} // namespace

} // namespace norvane
