#include "gsm-simulator/MessageMemory.h"

#include "gsm-simulator/TurnedClock.h"

namespace norvane {

namespace simulator {

namespace {

using Memories = TurnedClock;

} // namespace

TEST(MessageMemory, takesTheFirstFreePlaceAndNoMoreThanItHas)
{
    MessageMemory memory({"SM", 3});
    EXPECT_EQ(memory.store("a"), 1);
    EXPECT_EQ(memory.store("b"), 2);
    EXPECT_EQ(memory.store("c"), 3);
    EXPECT_EQ(memory.store("d"), std::nullopt);
    memory.remove(2);
    EXPECT_EQ(memory.used(), 2);
    EXPECT_EQ(memory.at(2), nullptr);
    EXPECT_EQ(memory.store("e"), 2);
    EXPECT_EQ(memory.at(2)->tpdu, "e");
    memory.at(1)->isRead = true;
    memory.removeRead();
    EXPECT_EQ(memory.at(1), nullptr);
    EXPECT_EQ(memory.used(), 2);
    memory.clear();
    EXPECT_EQ(memory.used(), 0);
}

TEST_F(Memories, aFullOneLeavesReportsInTheNetworkUntilSomethingIsDeleted)
{
    ModemSettings small = settings();
    small.reception.memories = {{"SM"}, {"SR", 1}};
    TalkingModem modem(small);
    modem.ask("AT+CNMI=2,0,0,2;+CPMS=\"SR\"");
    EXPECT_TRUE(modem.submitWithRequest().endsWith("+CDSI: \"SR\",1"));
    EXPECT_EQ(modem.submitWithRequest(), "+CMGS: 1|OK");
    EXPECT_EQ(modem.ask("AT+CMGD=?"), "+CMGD: (1-1),(0-4)|OK");
    EXPECT_EQ(modem.interpreter.nextWake(), m_now.addSecs(10));
    pass(10'000);
    EXPECT_EQ(modem.wake(), "");
    EXPECT_EQ(modem.lines("AT+CMGD=1"), "OK|+CDSI: \"SR\",1");
}

TEST_F(Memories, aListMarksAsReadWhatItTells)
{
    TalkingModem modem(settings());
    modem.ask("AT+CNMI=2,0,0,2;+CPMS=\"SR\"");
    modem.submitWithRequest();
    modem.submitWithRequest();
    modem.ask("AT+CMGR=2");
    EXPECT_EQ(modem.lines("AT+CMGL=0").count("+CMGL: "), 1);
    EXPECT_EQ(modem.lines("AT+CMGL"), "OK");
    modem.submitWithRequest();
    const QByteArray all = modem.lines("AT+CMGL=4");
    for (const char *start : {"+CMGL: 1,1,,25|", "|+CMGL: 2,1,,25|", "|+CMGL: 3,0,,25|"})
        EXPECT_TRUE(all.contains(start)) << all.data();
    EXPECT_EQ(modem.lines("AT+CMGL=1").count("+CMGL: "), 3);
    EXPECT_EQ(modem.lines("AT+CMGL=2;+CMGL=3"), "OK");
}

TEST_F(Memories, deletingTakesOneTheReadOnesOrAll)
{
    for (const char *command :
         {"AT+CMGD=1", "AT+CMGD=1,0", "AT+CMGD=1,1", "AT+CMGD=0,2", "AT+CMGD=5,3", "AT+CMGD=1,4"}) {
        TalkingModem modem(settings());
        modem.ask("AT+CNMI=2,0,0,2;+CPMS=\"SR\"");
        for (int i = 0; i < 3; ++i)
            modem.submitWithRequest();
        modem.ask("AT+CMGR=1");
        EXPECT_EQ(modem.ask(command), "OK");
        const char *left = QByteArray(command).endsWith(",4") ? "\"SR\",0," : "\"SR\",2,";
        EXPECT_TRUE(modem.ask("AT+CPMS?").contains(left)) << command;
    }
}

TEST_F(Memories, outliveAResetOfTheProfile)
{
    TalkingModem modem(settings());
    modem.ask("AT+CNMI=2,0,0,2");
    modem.submitWithRequest();
    modem.ask("ATZE0");
    EXPECT_EQ(modem.ask("AT+CPMS?"), "+CPMS: \"SM\",0,20,\"SM\",0,20,\"SM\",0,20|OK");
    EXPECT_EQ(modem.ask("AT+CPMS=\"SR\""), "+CPMS: 1,20,0,20,0,20|OK");
}

TEST_F(Memories, areThoseOfTheSettings)
{
    ModemSettings own = settings();
    own.reception.memories = {{"ME", 5}, {"BM", 7}};
    own.reception.reportMemory = "BM";
    TalkingModem modem(own);
    EXPECT_EQ(modem.ask("AT+CPMS=?"), "+CPMS: (\"ME\",\"BM\"),(\"ME\"),(\"ME\")|OK");
    EXPECT_EQ(modem.ask("AT+CPMS?"), "+CPMS: \"ME\",0,5,\"ME\",0,5,\"ME\",0,5|OK");
    EXPECT_EQ(modem.ask("AT+CPMS=\"SM\""), "+CMS ERROR: 302");
    EXPECT_EQ(modem.ask("AT+CPMS=\"BM\",\"ME\""), "+CPMS: 0,7,0,5,0,5|OK");
}

} // namespace simulator

} // namespace norvane
