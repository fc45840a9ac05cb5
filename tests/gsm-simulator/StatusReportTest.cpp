#include "gsm-simulator/StatusReport.h"

#include "gsm-simulator/TurnedClock.h"

namespace norvane {

namespace simulator {

using std::chrono::milliseconds;

namespace {

using StatusReports = TurnedClock;

// Times of 9 March 2026 in the zone an hour before UTC, and the recipient of the hello message.
const QByteArray noon = "62309021000040"_ba;
const QByteArray recipient = "0B916407281553F8"_ba;
const QByteArray serviceCentre = "07914306000000F0"_ba;

QByteArray routed(const QByteArray &reference, const QByteArray &discharged = noon,
                  const QByteArray &status = "00"_ba)
{
    return "+CDS: 25|" + serviceCentre + "06" + reference + recipient + noon + discharged + status;
}

/// The references of the reports in what a modem in text mode has said.
QByteArrayList referencesIn(const QByteArray &said)
{
    QByteArrayList references;
    for (const QByteArray &line : said.split('|')) {
        if (line.startsWith("+CDS: "))
            references += line.split(',').at(1);
    }
    return references;
}

struct ReportRow
{
    const char *description;
    StatusReport report;
    const char *octets;
};

void PrintTo(const ReportRow &row, std::ostream *stream)
{
    *stream << row.description;
}

class ReportOctets : public testing::TestWithParam<ReportRow>
{};

QDateTime at(int hour, int minute, int second, int offset)
{
    return {QDate(2026, 12, 31), QTime(hour, minute, second), Qt::OffsetFromUTC, offset};
}

} // namespace

TEST_P(ReportOctets, areThoseOfTheStandard)
{
    EXPECT_EQ(reportTpdu(GetParam().report).toHex().toUpper(), GetParam().octets);
}

INSTANTIATE_TEST_SUITE_P(
    Worked, ReportOctets,
    testing::Values(
        ReportRow{"delivered, an odd number of digits",
                  {42, {u"+34600111222"_s, 0x91}, at(23, 59, 58, 3600), at(23, 59, 59, 3600), 0},
                  "062A0B914306101122F2"
                  "62211332958540"
                  "62211332959540"
                  "00"},
        ReportRow{"expired, an even number of digits, national",
                  {255, {u"600111"_s, 0xA1}, at(1, 2, 3, 0), at(4, 5, 6, 0), 0x46},
                  "06FF06A1061011"
                  "62211310203000"
                  "62211340506000"
                  "46"},
        ReportRow{"a zone west of Greenwich, half an hour off",
                  {0, {u"1"_s, 0x81}, at(0, 0, 0, -12600), at(0, 0, 0, -12600), 0x30},
                  "06000181F1"
                  "62211300000049"
                  "62211300000049"
                  "30"},
        ReportRow{"to a name",
                  {1, {u"INFO"_s, 0xD0}, at(0, 0, 0, 0), at(0, 0, 0, 0), 0},
                  "060107D049A7F109"
                  "62211300000000"
                  "62211300000000"
                  "00"}));

TEST_F(StatusReports, aRequestIsAnsweredBehindTheAnswerAndWithoutOneNothingIs)
{
    TalkingModem modem(settings());
    modem.ask("AT+CNMI=2,0,0,1");
    EXPECT_EQ(modem.submitHello(), "+CMGS: 0|OK");
    EXPECT_EQ(modem.submitWithRequest(),
              "+CMGS: 1|OK|" + QByteArray(routed("01")).replace('|', "\r\n"));
    EXPECT_EQ(modem.wake(), "");
    EXPECT_EQ(modem.interpreter.nextWake(), std::nullopt);
}

TEST_F(StatusReports, comeWhenTheirTimeHasPassed)
{
    ModemSettings late = settings();
    late.reports.delay = milliseconds(5000);
    late.reports.status = 0x46;
    TalkingModem modem(late);
    modem.ask("AT+CNMI=2,0,0,1");
    EXPECT_EQ(modem.submitWithRequest(), "+CMGS: 0|OK");
    EXPECT_EQ(modem.interpreter.nextWake(), m_now.addSecs(5));
    pass(4999);
    EXPECT_EQ(modem.wake(), "");
    pass(1);
    EXPECT_EQ(modem.wake(), routed("00", "62309021005040", "46"));
}

TEST_F(StatusReports, inTextModeAreOneLine)
{
    TalkingModem modem(settings());
    modem.ask("AT+CMGF=1;+CSMP=49,167,0,0;+CNMI=2,0,0,1");
    EXPECT_EQ(modem.submitText("\"600111222\",129", "hello"),
              "+CMGS: 0|OK|+CDS: 6,0,\"600111222\",129,\"26/03/09,12:00:00+04\","
              "\"26/03/09,12:00:00+04\",0");
    modem.ask("AT+CSMP=17,167,0,0");
    EXPECT_EQ(modem.submitText("\"600111222\",129", "hello"), "+CMGS: 1|OK");
    modem.ask("AT+CSMP=49,167,0,0;+CSCS=\"UCS2\"");
    EXPECT_TRUE(modem.submitText("\"+346\"", "0068").contains("\"002B003300340036\",145"));
}

TEST_F(StatusReports, areStoredAndIndicatedWhereThatIsAskedFor)
{
    TalkingModem modem(settings());
    modem.ask("AT+CNMI=2,0,0,2;+CPMS=\"SR\"");
    EXPECT_EQ(modem.submitWithRequest(), "+CMGS: 0|OK|+CDSI: \"SR\",1");
    EXPECT_EQ(modem.submitWithRequest(), "+CMGS: 1|OK|+CDSI: \"SR\",2");
    EXPECT_EQ(modem.ask("AT+CPMS?"), "+CPMS: \"SR\",2,20,\"SM\",0,20,\"SM\",0,20|OK");
    const QByteArray first = ",,25|" + serviceCentre + "0600" + recipient + noon + noon + "00";
    EXPECT_EQ(modem.lines("AT+CMGR=1"), "+CMGR: 0" + first + "|OK");
    EXPECT_EQ(modem.lines("AT+CMGR=1"), "+CMGR: 1" + first + "|OK");
    EXPECT_EQ(modem.ask("AT+CMGD=1;+CMGR=1"), "+CMS ERROR: 321");
    EXPECT_EQ(modem.submitWithRequest(), "+CMGS: 2|OK|+CDSI: \"SR\",1");
    EXPECT_EQ(modem.lines("AT+CMGF=1;+CMGR=2"),
              "+CMGR: \"REC UNREAD\",6,1,\"+46708251358\",145,\"26/03/09,12:00:00+04\","
              "\"26/03/09,12:00:00+04\",0|OK");
}

TEST_F(StatusReports, goToTheMemoryThatTheDeviceHasForThem)
{
    ModemSettings other = settings();
    other.reception.reportMemory = "SM";
    TalkingModem modem(other);
    modem.ask("AT+CNMI=2,0,0,2");
    EXPECT_EQ(modem.submitWithRequest(), "+CMGS: 0|OK|+CDSI: \"SM\",1");
    EXPECT_TRUE(modem.lines("AT+CMGL=4").startsWith("+CMGL: 1,0,,25|"));
}

TEST_F(StatusReports, waitInTheNetworkWhileNobodyWantsThem)
{
    TalkingModem modem(settings());
    EXPECT_EQ(modem.submitWithRequest(), "+CMGS: 0|OK");
    EXPECT_EQ(modem.interpreter.nextWake(), std::nullopt);
    EXPECT_EQ(modem.lines("AT+CNMI=2,0,0,1"), "OK|" + routed("00"));
}

TEST_F(StatusReports, waitWhileTheDeviceKeepsBackWhatIsUnsolicited)
{
    TalkingModem modem(settings());
    modem.ask("AT+CNMI=0,0,0,1");
    EXPECT_EQ(modem.submitWithRequest(), "+CMGS: 0|OK");
    EXPECT_EQ(modem.lines("AT+CNMI=1"), "OK|" + routed("00"));
}

TEST_F(StatusReports, indicationsThatAreKeptBackAreFlushedOrClearedAsAskedFor)
{
    TalkingModem modem(settings());
    modem.ask("AT+CNMI=0,0,0,2,0");
    EXPECT_EQ(modem.submitWithRequest(), "+CMGS: 0|OK");
    EXPECT_EQ(modem.lines("AT+CNMI=2"), "OK|+CDSI: \"SR\",1");
    modem.ask("AT+CNMI=0,0,0,2,1");
    EXPECT_EQ(modem.submitWithRequest(), "+CMGS: 1|OK");
    EXPECT_EQ(modem.lines("AT+CNMI=2"), "OK");
    EXPECT_EQ(modem.ask("AT+CPMS=\"SR\""), "+CPMS: 2,20,0,20,0,20|OK");
}

TEST_F(StatusReports, waitWhileSomethingIsBeingWritten)
{
    ModemSettings late = settings();
    late.reports.delay = milliseconds(1000);
    TalkingModem modem(late);
    modem.ask("AT+CNMI=2,0,0,1");
    modem.submitWithRequest();
    modem.say("AT+C");
    pass(1000);
    EXPECT_EQ(modem.interpreter.nextWake(), std::nullopt);
    EXPECT_EQ(modem.wake(), "");
    EXPECT_EQ(modem.lines("SQ"), "+CSQ: 20,99|OK|" + routed("00", "62309021001040"));
}

TEST_F(StatusReports, waitForTheNetworkAndComeWithTheRegistration)
{
    ModemSettings slow = settings();
    slow.registerAfter = milliseconds(2000);
    slow.reports.delay = milliseconds(100);
    TalkingModem modem(slow);
    pass(2000);
    modem.ask("AT+CNMI=2,0,0,1");
    modem.submitWithRequest();
    modem.ask("AT+CFUN=4");
    pass(100);
    EXPECT_EQ(modem.wake(), "");
    EXPECT_EQ(modem.interpreter.nextWake(), std::nullopt);
    modem.ask("AT+CFUN=1");
    EXPECT_EQ(modem.interpreter.nextWake(), m_now.addSecs(2));
    pass(2000);
    EXPECT_TRUE(modem.wake().startsWith("+CDS: 25|"));
}

TEST_F(StatusReports, canBeLeftOutOrDoubled)
{
    for (const int count : {0, 1, 2}) {
        ModemSettings often = settings();
        often.reports.count = count;
        TalkingModem modem(often);
        modem.ask("AT+CNMI=2,0,0,1");
        EXPECT_EQ(modem.submitWithRequest().count("+CDS: "), count);
    }
}

TEST_F(StatusReports, aTemporaryOneCanComeBefore)
{
    ModemSettings twoSteps = settings();
    twoSteps.reports.firstStatus = 0x30;
    twoSteps.reports.delay = milliseconds(1000);
    TalkingModem modem(twoSteps);
    modem.ask("AT+CNMI=2,0,0,1");
    modem.submitWithRequest();
    pass(1000);
    EXPECT_EQ(modem.wake(), routed("00", "62309021001040", "30"));
    EXPECT_EQ(modem.wake(), "");
    pass(1000);
    EXPECT_EQ(modem.wake(), routed("00", "62309021002040", "00"));
}

TEST_F(StatusReports, ofMessagesThatFollowEachOtherCanComeTheLastOneFirst)
{
    for (const int firstStatus : {-1, 0x30}) {
        ModemSettings reversed = settings();
        reversed.reports.order = ReportOrder::Reversed;
        reversed.reports.delay = milliseconds(1000);
        reversed.reports.firstStatus = firstStatus;
        TalkingModem modem(reversed);
        modem.ask("AT+CNMI=2,0,0,1");
        for (int i = 0; i < 3; ++i) {
            modem.submitWithRequest();
            pass(400);
        }
        modem.ask("AT+CMGF=1");
        pass(599);
        EXPECT_EQ(modem.wake(), "");
        pass(1);
        EXPECT_EQ(referencesIn(modem.wake()), (QByteArrayList{"2", "1", "0"}));
        pass(1000);
        EXPECT_EQ(referencesIn(modem.wake()).size(), firstStatus < 0 ? 0 : 3);
    }
}

TEST_F(StatusReports, comeInTheOrderOfTheMessagesOtherwise)
{
    ModemSettings late = settings();
    late.reports.delay = milliseconds(1000);
    TalkingModem modem(late);
    modem.ask("AT+CNMI=2,0,0,1");
    for (int i = 0; i < 3; ++i)
        modem.submitWithRequest();
    modem.ask("AT+CMGF=1");
    pass(1000);
    EXPECT_EQ(referencesIn(modem.wake()), (QByteArrayList{"0", "1", "2"}));
}

TEST_F(StatusReports, referencesStartWhereToldAndWrap)
{
    ModemSettings high = settings();
    high.firstReference = 254;
    TalkingModem modem(high);
    modem.ask("AT+CNMI=2,0,0,1;+CMGF=1;+CSMP=49");
    QByteArrayList references;
    for (int i = 0; i < 3; ++i)
        references += referencesIn(modem.submitText("\"1\"", "x").replace("\r\n", "|"));
    EXPECT_EQ(references, (QByteArrayList{"254", "255", "0"}));
}

TEST_F(StatusReports, aRequestForOneCanBeRefused)
{
    ModemSettings refusing = settings();
    refusing.reports.refusal = 69;
    TalkingModem modem(refusing);
    modem.ask("AT+CNMI=2,0,0,1");
    EXPECT_EQ(modem.submitWithRequest(), "+CMS ERROR: 69");
    EXPECT_EQ(modem.submitHello(), "+CMGS: 0|OK");
    EXPECT_EQ(modem.accepted.size(), 1U);
}

TEST_F(StatusReports, aDeviceMayKnowOneWayOnlyOrNone)
{
    struct Row
    {
        bool routes;
        bool stores;
        const char *ways;
        const char *toRoute;
        const char *toStore;
    };
    for (const Row &row :
         {Row{true, true, "0-2", "OK", "OK"}, Row{true, false, "0,1", "OK", "+CMS ERROR: 302"},
          Row{false, true, "0,2", "+CMS ERROR: 302", "OK"},
          Row{false, false, "0", "+CMS ERROR: 302", "+CMS ERROR: 302"}}) {
        ModemSettings limited = settings();
        limited.reception.routesReports = row.routes;
        limited.reception.storesReports = row.stores;
        TalkingModem modem(limited);
        EXPECT_EQ(modem.ask("AT+CNMI=?"),
                  QByteArray("+CNMI: (0-3),(0-3),(0-3),(") + row.ways + "),(0,1)|OK");
        EXPECT_EQ(modem.ask("AT+CNMI=2,1,0,1"), row.toRoute);
        EXPECT_EQ(modem.ask("AT+CNMI=2,1,0,2"), row.toStore);
        EXPECT_EQ(modem.ask("AT+CNMI=2,1,0,0"), "OK");
    }
}

TEST_F(StatusReports, aSettingThatIsRefusedChangesNothing)
{
    ModemSettings limited = settings();
    limited.reception.storesReports = false;
    TalkingModem modem(limited);
    EXPECT_EQ(modem.ask("AT+CNMI=2,1,0,2"), "+CMS ERROR: 302");
    EXPECT_EQ(modem.ask("AT+CNMI?"), "+CNMI: 0,0,0,0,0|OK");
}

TEST_F(StatusReports, areSaidByNobodySilentOrUnplugged)
{
    ModemSettings gone = settings();
    gone.dropAfter = 1;
    gone.reports.delay = milliseconds(10);
    TalkingModem modem(gone);
    modem.ask("AT+CNMI=2,0,0,1");
    modem.submitWithRequest();
    pass(10);
    EXPECT_EQ(modem.interpreter.nextWake(), std::nullopt);
    EXPECT_EQ(modem.wake(), "");
}

} // namespace simulator

} // namespace norvane
