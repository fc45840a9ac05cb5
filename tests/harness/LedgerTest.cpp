#include "harness/Ledger.h"

#include <gtest/gtest.h>

namespace norvane {

using namespace Qt::StringLiterals;

namespace {

/// One message of each kind, all of them as they should be.
Account soundAccount()
{
    Account account;
    account.queued = {{u"1"_s, u"one part"_s},
                      {u"2"_s, u"two parts"_s},
                      {u"3"_s, u"may be delivered, and was"_s},
                      {u"4"_s, u"may be delivered, and was not"_s},
                      {u"5"_s, u"waits"_s},
                      {u"6"_s, u"waits between its parts"_s},
                      {u"7"_s, u"refused"_s},
                      {u"8"_s, u"never came"_s, Queued::Unanswered},
                      {u"9"_s, u"no room"_s, Queued::Refused}};
    account.received = {{u"1"_s, u"one part"_s},
                        {u"2"_s, u"two "_s, 1, 2},
                        {u"2"_s, u"parts"_s, 2, 2},
                        {u"3"_s, u"may be delivered, and was"_s},
                        {u"6"_s, u"waits "_s, 1, 2}};
    account.outcomes = {{u"1"_s, 1}, {u"2"_s, 1}, {u"3"_s, -39}, {u"4"_s, -39}, {u"7"_s, -36}};
    account.waiting = {{u"5"_s, 0, 0}, {u"6"_s, 2, 1}};
    account.told = {{u"3"_s, -39}, {u"4"_s, -39}, {u"7"_s, -36}};
    account.outcomes[0].isDelivered = true;
    account.outcomes[1].isDelivered = true;
    account.reports = Reports::HandedOver;
    account.mailGiven = {{u"+1"_s, u"short"_s}, {u"+2"_s, u"long, in parts"_s}};
    account.mailKept = {{u"+2"_s, u"long, in parts"_s}, {u"+1"_s, u"short"_s}};
    return account;
}

template <typename Record>
void remove(QList<Record> &records, const char *phone)
{
    records.removeIf([&](const Record &record) { return record.phone == QLatin1String(phone); });
}

} // namespace

TEST(Ledger, aSoundAccountIsClean)
{
    const Tally tally = count(soundAccount());
    EXPECT_TRUE(tally.isClean()) << tally.faults.join(u'\n').toStdString();
    EXPECT_EQ(
        tally.line().toStdString(),
        "cycles=0 queued=9 sent=2 failed=3 arrived=1 corrected=0 waiting=2 delivered=2 mail=2 "
        "twice=0 lost=0 untrue=0 strange=0 untold=0 uncommitted=0 unfenced=0 "
        "reports-lost=0 reports-wrong=0 mail-lost=0 mail-doubled=0 mail-torn=0 stuck=0");
}

struct Doctored
{
    const char *name;
    void (*doctor)(Account &account);
    int Tally::*kind;
};

class DoctoredAccount : public testing::TestWithParam<Doctored>
{};

TEST_P(DoctoredAccount, isNoticedAsWhatItIs)
{
    Account account = soundAccount();
    GetParam().doctor(account);
    const Tally tally = count(account);
    EXPECT_FALSE(tally.isClean());
    EXPECT_EQ(tally.*GetParam().kind, 1) << tally.line().toStdString();
    EXPECT_EQ(tally.faults.size(), 1) << tally.faults.join(u'\n').toStdString();
}

INSTANTIATE_TEST_SUITE_P(
    Ledger, DoctoredAccount,
    testing::Values(
        Doctored{"aMessageReceivedTwice",
                 [](Account &account) { account.received.append(account.received.at(0)); },
                 &Tally::twice},
        Doctored{"aPartReceivedTwice",
                 [](Account &account) { account.received.append(account.received.at(2)); },
                 &Tally::twice},
        Doctored{"aMessageThatMayBeDeliveredReceivedTwice",
                 [](Account &account) { account.received.append(account.received.at(3)); },
                 &Tally::twice},
        Doctored{"aMessageThatIsSentAndWaits",
                 [](Account &account) {
                     account.waiting.append({u"4"_s, 0, 0});
                 },
                 &Tally::twice},
        Doctored{"aMessageThatWaitsAndWasReceived",
                 [](Account &account) {
                     account.received.append({u"5"_s, u"waits"_s});
                 },
                 &Tally::twice},
        Doctored{"aPartThatWaitsAndWasReceived",
                 [](Account &account) { account.waiting[1].partsSent = 0; }, &Tally::twice},
        Doctored{"aSecondOutcome",
                 [](Account &account) {
                     account.outcomes.append({u"1"_s, 1, true});
                 },
                 &Tally::twice},
        Doctored{"aMessageThatIsNowhere", [](Account &account) { remove(account.waiting, "5"); },
                 &Tally::lost},
        Doctored{"aMessageToldAsSentAndNotReceived",
                 [](Account &account) {
                     remove(account.received, "1");
                     account.outcomes[0].isDelivered = false;
                 },
                 &Tally::lost},
        Doctored{"aMessageToldAsSentWithoutItsLastPart",
                 [](Account &account) {
                     account.received.removeAt(2);
                     account.outcomes[1].isDelivered = false;
                 },
                 &Tally::lost},
        Doctored{"aPartCountedAsSentAndNotReceived",
                 [](Account &account) { remove(account.received, "6"); }, &Tally::lost},
        Doctored{"anUnansweredMessageReceivedAndForgotten",
                 [](Account &account) {
                     account.received.append({u"8"_s, u"never came"_s});
                 },
                 &Tally::lost},
        Doctored{"aMessageToldAsFailedForGoodAndReceived",
                 [](Account &account) {
                     account.received.append({u"7"_s, u"refused"_s});
                 },
                 &Tally::untrue},
        Doctored{"aMessageLeftInDoubtAndKnownToBeReceived",
                 [](Account &account) { account.outcomes[2].isKnown = true; }, &Tally::untrue},
        Doctored{"anotherText", [](Account &account) { account.received[0].text = u"one"_s; },
                 &Tally::untrue},
        Doctored{"aMessageThatNobodyQueued",
                 [](Account &account) {
                     account.received.append({u"77"_s, u"?"_s});
                 },
                 &Tally::strange},
        Doctored{"aMessageThatWasRefusedAndWaits",
                 [](Account &account) {
                     account.waiting.append({u"9"_s, 0, 0});
                 },
                 &Tally::strange},
        Doctored{"aFailureNeverTold", [](Account &account) { remove(account.told, "7"); },
                 &Tally::untold},
        Doctored{"aFailureToldTwice",
                 [](Account &account) { account.told.append(account.told.at(0)); }, &Tally::untold},
        Doctored{"aFailureToldWithAnotherCode",
                 [](Account &account) { account.told[2].code = -39; }, &Tally::untold},
        Doctored{"aSentMessageToldAsFailed",
                 [](Account &account) {
                     account.told.append({u"1"_s, -39});
                 },
                 &Tally::untold},
        Doctored{"aReportThatIsNotTold",
                 [](Account &account) { account.outcomes[1].isDelivered = false; },
                 &Tally::reportsLost},
        Doctored{"aMessageToldAsDeliveredAndNotReceived",
                 [](Account &account) { account.outcomes[3].isDelivered = true; },
                 &Tally::reportsWrong},
        Doctored{"mailThatIsNotKept", [](Account &account) { account.mailKept.removeAt(0); },
                 &Tally::mailLost},
        Doctored{"mailThatIsKeptTwice",
                 [](Account &account) { account.mailKept.append(account.mailKept.at(0)); },
                 &Tally::mailDoubled},
        Doctored{"mailWithoutAPart",
                 [](Account &account) { account.mailKept[0].text = u"long, [...]"_s; },
                 &Tally::mailTorn},
        Doctored{"aPieceOfMailBesideTheWhole",
                 [](Account &account) {
                     account.mailKept.append({u"+2"_s, u"long, "_s});
                 },
                 &Tally::mailTorn},
        Doctored{"mailThatNobodySent",
                 [](Account &account) {
                     account.mailKept.append({u"+3"_s, u"?"_s});
                 },
                 &Tally::mailTorn}),
    [](const testing::TestParamInfo<Doctored> &tested) { return tested.param.name; });

TEST(Ledger, aPartThatIsLeavingMayHaveBeenReceivedOrNot)
{
    Account account = soundAccount();
    account.waiting[0].state = 1;
    EXPECT_TRUE(count(account).isClean());
    account.received.append({u"5"_s, u"waits"_s});
    EXPECT_TRUE(count(account).isClean());
}

TEST(Ledger, reportsThatAreUnderwayNeedNotBeTold)
{
    Account account = soundAccount();
    account.reports = Reports::MayBeUnderway;
    account.outcomes[0].isDelivered = false;
    EXPECT_TRUE(count(account).isClean());
}

TEST(Ledger, aLostAnswerLeavesItsReportWithoutAPart)
{
    const Tally tally = count(soundAccount()); // the third message
    EXPECT_EQ(tally.arrived, 1);
    EXPECT_EQ(tally.reportsLost, 0);
}

TEST(Ledger, lanesAreAddedUpWithEveryNumber)
{
    Tally all;
    all.addLine(u"cycles=1 queued=2 sent=3 failed=4 arrived=5 corrected=6 waiting=7 "
                "delivered=8 mail=9 twice=10 lost=11 untrue=12 strange=13 untold=14 "
                "uncommitted=15 unfenced=16 reports-lost=17 reports-wrong=18 mail-lost=19 "
                "mail-doubled=20 mail-torn=21 stuck=22"_s);
    all.addLine(u"cycles=1 queued=1 sent=1 failed=1 arrived=1 corrected=1 waiting=1 "
                "delivered=1 mail=1 twice=1 lost=1 untrue=1 strange=1 untold=1 "
                "uncommitted=1 unfenced=1 reports-lost=1 reports-wrong=1 mail-lost=1 "
                "mail-doubled=1 mail-torn=1 stuck=1"_s);
    EXPECT_EQ(
        all.line().toStdString(),
        "cycles=2 queued=3 sent=4 failed=5 arrived=6 corrected=7 waiting=8 delivered=9 mail=10 "
        "twice=11 lost=12 untrue=13 strange=14 untold=15 uncommitted=16 unfenced=17 "
        "reports-lost=18 reports-wrong=19 mail-lost=20 mail-doubled=21 mail-torn=22 stuck=23");
}

TEST(Ledger, eachKindOfFaultAloneIsNotClean)
{
    for (int Tally::*const kind :
         {&Tally::twice, &Tally::lost, &Tally::untrue, &Tally::strange, &Tally::untold,
          &Tally::uncommitted, &Tally::unfenced, &Tally::reportsLost, &Tally::reportsWrong,
          &Tally::mailLost, &Tally::mailDoubled, &Tally::mailTorn, &Tally::stuck}) {
        Tally tally;
        EXPECT_TRUE(tally.isClean());
        tally.fault(kind, u"what"_s);
        EXPECT_FALSE(tally.isClean());
    }
}

} // namespace norvane
