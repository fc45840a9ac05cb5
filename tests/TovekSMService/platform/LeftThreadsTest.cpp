#include "TovekSMService/platform/LeftThreads.h"
#include "support/WaitUntil.h"

#include <QThread>

#include <gtest/gtest.h>

#include <future>

namespace norvane {

namespace {

TEST(LeftThreadsTest, oneThatEndsIsWaitedFor)
{
    bool isDone = false;
    std::unique_ptr<QThread> thread(QThread::create([&isDone] { isDone = true; }));
    thread->start();
    LeftThreads::endOrLeave(std::move(thread), hangMs);
    EXPECT_TRUE(isDone);
    EXPECT_FALSE(LeftThreads::areAny());
}

TEST(LeftThreadsTest, oneThatDoesNotEndIsLeftAndKnownUntilItDoes)
{
    std::promise<void> answer;
    std::unique_ptr<QThread> thread(
        QThread::create([wait = answer.get_future().share()] { wait.wait(); }));
    thread->start();
    LeftThreads::endOrLeave(std::move(thread), 0);
    EXPECT_TRUE(LeftThreads::areAny());
    answer.set_value();
    EXPECT_TRUE(waitUntil([] { return !LeftThreads::areAny(); }));
}

} // namespace

} // namespace norvane
