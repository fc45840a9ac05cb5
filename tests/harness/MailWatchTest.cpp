#include "harness/MailWatch.h"

#include <gtest/gtest.h>

namespace norvane {

namespace {

class WatchedMail : public testing::Test
{
protected:
    MailPlace read(From from, const QByteArray &bytes)
    {
        MailPlace last;
        for (const char byte : bytes)
            last = watch.read(from, byte);
        return last;
    }
    MailPlace engine(const QByteArray &bytes) { return read(From::Engine, bytes); }
    MailPlace device(const QByteArray &bytes) { return read(From::Device, bytes); }

    static void expectEnd(const MailPlace &place, MailLine line, int number)
    {
        EXPECT_EQ(place.line, line);
        EXPECT_EQ(place.number, number);
        EXPECT_TRUE(place.isLast);
    }

    MailWatch watch;
};

} // namespace

TEST_F(WatchedMail, anIndicationIsKnownFromItsTagToItsEnd)
{
    EXPECT_EQ(device("\r\n+CMTI").line, MailLine::Other);
    const MailPlace tag = device(":");
    EXPECT_EQ(tag.line, MailLine::Indication);
    EXPECT_EQ(tag.offset, 5);
    EXPECT_FALSE(tag.isLast);
    expectEnd(device(" \"SM\",3\r\n"), MailLine::Indication, 0);
    expectEnd(device("\r\n+CDSI: \"SR\",1\r\n"), MailLine::Indication, 1);
}

TEST_F(WatchedMail, aReportEndsWithItsPdu)
{
    EXPECT_FALSE(device("\r\n+CDS: 25\r\n").isLast);
    const MailPlace inside = device("0006");
    EXPECT_EQ(inside.line, MailLine::Report);
    EXPECT_EQ(inside.offset, 13);
    expectEnd(device("2A\r\n"), MailLine::Report, 0);
    EXPECT_EQ(device("\r\nRING\r\n").line, MailLine::Other);
}

TEST_F(WatchedMail, theEntriesOfAListingAreCounted)
{
    expectEnd(engine("AT+CMGL=4\r"), MailLine::Read, 0);
    expectEnd(device("\r\n+CMGL: 1,0,,20\r\n0791\r\n"), MailLine::Entry, 0);
    expectEnd(device("+CMGL: 2,0,,20\r\n0791\r\n"), MailLine::Entry, 1);
    expectEnd(device("\r\nOK\r\n"), MailLine::ReadResult, 0);
    EXPECT_EQ(device("\r\nOK\r\n").line, MailLine::Other);
}

TEST_F(WatchedMail, eachCommandHasItsOwnResult)
{
    expectEnd(engine("AT+CMGR=3\r"), MailLine::Read, 0);
    expectEnd(device("\r\n+CMS ERROR: 321\r\n"), MailLine::ReadResult, 0);
    expectEnd(engine("AT+CMGD=3\r"), MailLine::Delete, 0);
    expectEnd(device("\r\nOK\r\n"), MailLine::DeleteResult, 0);
    expectEnd(engine("AT+CNMA\r"), MailLine::Acknowledge, 0);
    expectEnd(device("\r\nERROR\r\n"), MailLine::AcknowledgeResult, 0);
    EXPECT_EQ(engine("AT+CSQ\r").line, MailLine::Other);
    EXPECT_EQ(device("\r\nOK\r\n").line, MailLine::Other);
}

TEST_F(WatchedMail, aCommandMayFollowAPayload)
{
    EXPECT_EQ(engine("0011AB\x1A").line, MailLine::Other);
    expectEnd(engine("AT+CMGD=3\r"), MailLine::Delete, 0);
    EXPECT_EQ(engine("0011\x1B").line, MailLine::Other);
    expectEnd(engine("AT+CNMA\r"), MailLine::Acknowledge, 0);
}

TEST_F(WatchedMail, bothSidesMaySpeakAtOnce)
{
    EXPECT_EQ(engine("AT+CM").line, MailLine::Other);
    expectEnd(device("\r\n+CMTI: \"SM\",3\r\n"), MailLine::Indication, 0);
    expectEnd(engine("GD=1\r"), MailLine::Delete, 0);
}

} // namespace norvane
