#include "TovekSMService/bus/ReportAcknowledgements.h"

#include <gtest/gtest.h>

namespace norvane {

using namespace Qt::StringLiterals;

namespace {

const QString firstConsole = u":1.1"_s;
const QString secondConsole = u":1.2"_s;
constexpr qint64 failure = 7;

TEST(ReportAcknowledgements, whatAnAcknowledgerWasToldIsNotHandledUntilItSaysSo)
{
    ReportAcknowledgements reports;
    reports.addAcknowledger(firstConsole);
    reports.addListener(firstConsole);
    EXPECT_FALSE(reports.raisedToAll(failure));
    EXPECT_TRUE(reports.isPending(firstConsole, failure));
    EXPECT_TRUE(reports.acknowledge(firstConsole, failure));
    EXPECT_FALSE(reports.isPending(firstConsole, failure));
    EXPECT_FALSE(reports.acknowledge(firstConsole, failure)) << "once";
}

TEST(ReportAcknowledgements, aReportIsHandledWhenAListenerThatNeverAcknowledgesWasTold)
{
    ReportAcknowledgements reports;
    reports.addListener(firstConsole);
    EXPECT_TRUE(reports.raisedTo(firstConsole, failure));
    EXPECT_TRUE(reports.raisedToAll(failure));
    reports.addAcknowledger(secondConsole);
    reports.addListener(secondConsole);
    EXPECT_FALSE(reports.raisedTo(secondConsole, failure));
    EXPECT_TRUE(reports.raisedToAll(failure)) << "one of them counts";
}

TEST(ReportAcknowledgements, theFirstOfSeveralConsolesAcknowledgesForAll)
{
    ReportAcknowledgements reports;
    for (const QString &console : {firstConsole, secondConsole}) {
        reports.addAcknowledger(console);
        reports.addListener(console);
    }
    EXPECT_FALSE(reports.raisedToAll(failure));
    EXPECT_TRUE(reports.acknowledge(secondConsole, failure));
    EXPECT_FALSE(reports.isPending(firstConsole, failure));
    EXPECT_FALSE(reports.acknowledge(firstConsole, failure));
}

TEST(ReportAcknowledgements, nobodyAcknowledgesWhatItWasNotTold)
{
    ReportAcknowledgements reports;
    reports.addAcknowledger(firstConsole);
    reports.addListener(firstConsole);
    reports.addAcknowledger(secondConsole);
    EXPECT_FALSE(reports.raisedToAll(failure));
    EXPECT_FALSE(reports.acknowledge(secondConsole, failure)) << "it doesn't listen";
    reports.addListener(secondConsole);
    EXPECT_FALSE(reports.acknowledge(secondConsole, failure)) << "it came later";
    EXPECT_FALSE(reports.acknowledge(firstConsole, failure + 1));
    EXPECT_TRUE(reports.isPending(firstConsole, failure));
}

TEST(ReportAcknowledgements, whoLeavesHasNothingPendingWhenItComesAgain)
{
    ReportAcknowledgements reports;
    EXPECT_EQ(reports.listeners(), 0);
    reports.addAcknowledger(firstConsole);
    EXPECT_EQ(reports.listeners(), 0) << "it doesn't listen yet";
    reports.addListener(firstConsole);
    EXPECT_EQ(reports.listeners(), 1);
    EXPECT_FALSE(reports.raisedTo(firstConsole, failure));
    reports.removeCaller(firstConsole);
    EXPECT_EQ(reports.listeners(), 0);
    reports.addListener(firstConsole);
    EXPECT_FALSE(reports.isPending(firstConsole, failure));
    EXPECT_TRUE(reports.raisedTo(firstConsole, failure))
        << "it has not said again that it acknowledges";
}

} // namespace

} // namespace norvane
