#include "TovekSMService/bus/ReportAcknowledgements.h"

#include <gtest/gtest.h>

namespace norvane {

using namespace Qt::StringLiterals;

namespace {

const QString one = u":1.1"_s;
const QString other = u":1.2"_s;
constexpr qint64 report = 7;

TEST(ReportAcknowledgements, whatAnAcknowledgerWasToldIsNotHandledUntilItSaysSo)
{
    ReportAcknowledgements reports;
    reports.addAcknowledger(one);
    reports.addListener(one);
    EXPECT_FALSE(reports.raisedToAll(report));
    EXPECT_TRUE(reports.isPending(one, report));
    EXPECT_TRUE(reports.acknowledge(one, report));
    EXPECT_FALSE(reports.isPending(one, report));
    EXPECT_FALSE(reports.acknowledge(one, report)) << "once";
}

TEST(ReportAcknowledgements, aReportIsHandledWhenAListenerThatNeverAcknowledgesWasTold)
{
    ReportAcknowledgements reports;
    reports.addListener(one);
    EXPECT_TRUE(reports.raisedTo(one, report));
    EXPECT_TRUE(reports.raisedToAll(report));
    reports.addAcknowledger(other);
    reports.addListener(other);
    EXPECT_FALSE(reports.raisedTo(other, report));
    EXPECT_TRUE(reports.raisedToAll(report)) << "one of them counts";
}

TEST(ReportAcknowledgements, theFirstOfSeveralConsolesAcknowledgesForAll)
{
    ReportAcknowledgements reports;
    for (const QString &console : {one, other}) {
        reports.addAcknowledger(console);
        reports.addListener(console);
    }
    EXPECT_FALSE(reports.raisedToAll(report));
    EXPECT_TRUE(reports.acknowledge(other, report));
    EXPECT_FALSE(reports.isPending(one, report));
    EXPECT_FALSE(reports.acknowledge(one, report));
}

TEST(ReportAcknowledgements, nobodyAcknowledgesWhatItWasNotTold)
{
    ReportAcknowledgements reports;
    reports.addAcknowledger(one);
    reports.addListener(one);
    reports.addAcknowledger(other);
    EXPECT_FALSE(reports.raisedToAll(report));
    EXPECT_FALSE(reports.acknowledge(other, report)) << "it doesn't listen";
    reports.addListener(other);
    EXPECT_FALSE(reports.acknowledge(other, report)) << "it came later";
    EXPECT_FALSE(reports.acknowledge(one, report + 1));
    EXPECT_TRUE(reports.isPending(one, report));
}

TEST(ReportAcknowledgements, whoLeavesHasNothingPendingWhenItComesAgain)
{
    ReportAcknowledgements reports;
    EXPECT_EQ(reports.listeners(), 0);
    reports.addAcknowledger(one);
    EXPECT_EQ(reports.listeners(), 0) << "it doesn't listen yet";
    reports.addListener(one);
    EXPECT_EQ(reports.listeners(), 1);
    EXPECT_FALSE(reports.raisedTo(one, report));
    reports.removeCaller(one);
    EXPECT_EQ(reports.listeners(), 0);
    reports.addListener(one);
    EXPECT_FALSE(reports.isPending(one, report));
    EXPECT_TRUE(reports.raisedTo(one, report)) << "it has not said again that it acknowledges";
}

} // namespace

} // namespace norvane
