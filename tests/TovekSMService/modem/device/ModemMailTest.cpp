#include "TovekSMService/modem/device/FakeMailbox.h"
#include "TovekSMService/modem/device/ModemFixture.h"

namespace norvane {

namespace {

/// What a modem makes of a device that keeps what comes.
class ModemMail : public ModemFixture
{
protected:
    ModemMail()
    {
        m_line->onCommand = [this](const QByteArray &command) {
            return m_mailbox.answerTo(command);
        };
        QObject::connect(m_modem.get(), &Modem::mailRead, m_modem.get(),
                         [this](const QList<Arrival> &arrivals) {
                             m_read += arrivals;
                             ++m_turns;
                         });
        QObject::connect(m_modem.get(), &Modem::mailDue, m_modem.get(), [this] { ++m_dueCount; });
    }

    /// Lets the modem do all that is due, and dismisses what it read.
    void fetchAll()
    {
        while (m_modem->hasMail()) {
            const int turns = m_turns;
            m_modem->fetchMail();
            ASSERT_TRUE(until([&] { return m_turns > turns; }));
        }
    }

    int countOf(const QByteArray &command) const
    {
        return static_cast<int>(m_line->commands.count(command));
    }

    FakeMailbox m_mailbox;
    QList<Arrival> m_read;
    int m_turns = 0;
    int m_dueCount = 0;
};

const QByteArray message = "0004039121F30000622190011203800141";
const QByteArray report = "00062A039121F3622190011203806221900112038000";

/// A device that keeps reports.
class ModemReports : public ModemMail
{
protected:
    ModemReports() { openReady(); }

    /// The device gets reports at these places, and announces them.
    void keepReports(int first, int last)
    {
        for (int place = first; place <= last; ++place) {
            m_mailbox.memories["SR"].insert(place, {0, reportOf(place)});
            m_line->say("\r\n+CDSI: \"SR\"," + QByteArray::number(place) + "\r\n");
        }
        ASSERT_TRUE(until([&] { return m_modem->hasMail(); }));
    }

    /// Reads what is there, says that it is stored, and lets it be deleted.
    void fetchAndDismiss()
    {
        const qsizetype before = m_read.size();
        fetchAll();
        m_modem->dismissMail(m_read.mid(before));
        fetchAll();
    }

    int deletions() const
    {
        return static_cast<int>(
            std::count_if(m_line->commands.cbegin(), m_line->commands.cend(),
                          [](const auto &command) { return command.startsWith("AT+CMGD"); }));
    }
    qsizetype left() { return m_mailbox.memories["SR"].size(); }

    static QByteArray reportOf(int reference)
    {
        return "0006" + QByteArray::number(reference, 16).rightJustified(2, '0') +
               "039121F3622190011203806221900112038000";
    }
};

} // namespace

TEST_F(ModemMail, whatIsStoredIsPreferredToWhatIsRouted)
{
    openReady();
    EXPECT_EQ(countOf("AT+CNMI=2,1,0,2,0"), 1);
    EXPECT_EQ(countOf("AT+CSMS=1"), 0) << "nothing needs our word";
}

TEST_F(ModemMail, reportsAreTakenAsTheyComeWhereTheDeviceStoresNone)
{
    m_mailbox.routesOffered = "+CNMI: (0,1),(0,1),(0),(0,1)";
    openReady();
    EXPECT_EQ(countOf("AT+CNMI=1,1,0,1,0"), 1);
    EXPECT_EQ(countOf("AT+CSMS=1"), 1) << "without our word a report would be lost with a crash";
}

TEST_F(ModemMail, theServiceAsksForOurWordBeforeAnythingIsRouted)
{
    m_mailbox.routesOffered = "+CNMI: (2),(1),(0),(1)";
    openReady();
    EXPECT_EQ(countOf("AT+CSMS=0"), 0) << "what an engine before us left waiting would be let off";
    EXPECT_LT(m_line->commands.indexOf("AT+CSMS=1"), m_line->commands.indexOf("AT+CNMI=2,1,0,1,0"));
}

TEST_F(ModemMail, messagesAreTakenAsTheyComeWhereTheDeviceAnnouncesNone)
{
    m_mailbox.routesOffered = "+CNMI: (2),(0,2),(0),(0)";
    openReady();
    EXPECT_EQ(countOf("AT+CNMI=2,2"), 1);
    EXPECT_EQ(countOf("AT+CSMS=1"), 1);
}

TEST_F(ModemMail, aDeviceThatDoesNotSayWhatItHasIsTried)
{
    m_mailbox.routesOffered.clear();
    m_mailbox.refused = {"AT+CNMI=2,1,0,2,0", "AT+CNMI=2,1,0,1,0"};
    openReady();
    EXPECT_EQ(countOf("AT+CNMI=2,1"), 1);
    EXPECT_EQ(countOf("AT+CNMI=1,1"), 0);
}

TEST_F(ModemMail, aDeviceThatAnnouncesNothingIsUsedAllTheSame)
{
    m_mailbox.routesOffered.clear();
    m_mailbox.refused = {"AT+CNMI=2,1,0,2,0", "AT+CNMI=2,1,0,1,0", "AT+CNMI=2,1", "AT+CNMI=1,1"};
    m_mailbox.memories["SM"] = {{1, {0, message}}};
    openReady();
    fetchAll();
    EXPECT_EQ(m_read, (QList<Arrival>{{message, "SM", 1}}));
}

TEST_F(ModemMail, whatWaitsInEachMemoryIsReadBehindTheOpening)
{
    m_mailbox.memories["SM"] = {{1, {0, message}}, {7, {1, message}}};
    m_mailbox.memories["ME"] = {{3, {0, message}}};
    m_mailbox.memories["SR"] = {{2, {0, report}}};
    openReady();
    EXPECT_TRUE(m_modem->hasMail());
    fetchAll();
    EXPECT_EQ(m_read,
              (QList<Arrival>{
                  {report, "SR", 2}, {message, "SM", 1}, {message, "SM", 7}, {message, "ME", 3}}));
}

TEST_F(ModemMail, nothingIsDeletedBeforeItIsDismissed)
{
    m_mailbox.memories["SM"] = {{1, {0, message}}};
    openReady();
    fetchAll();
    ASSERT_EQ(m_read.size(), 1);
    EXPECT_TRUE(m_mailbox.memories["SM"].contains(1));
    m_modem->dismissMail(m_read);
    fetchAll();
    EXPECT_FALSE(m_mailbox.memories["SM"].contains(1));
}

TEST_F(ModemMail, whatSomebodyWroteWithTheDeviceIsNotOurs)
{
    m_mailbox.memories["SM"] = {{1, {2, message}}, {2, {3, message}}};
    openReady();
    fetchAll();
    EXPECT_TRUE(m_read.isEmpty());
}

TEST_F(ModemMail, aMemoryThatIsNoPlaceOfItsOwnIsNotRead)
{
    m_mailbox.memoriesOffered = "+CPMS: (\"MT\",\"SM\",\"BM\"),(\"SM\"),(\"SM\")";
    openReady();
    fetchAll();
    EXPECT_EQ(countOf("AT+CMGL=4"), 1);
    EXPECT_EQ(countOf("AT+CPMS=\"SM\""), 1);
}

TEST_F(ModemMail, anAnnouncementWaitsALittleForOthersAndIsReadByItsPlace)
{
    openReady();
    fetchAll();
    m_mailbox.memories["SR"] = {{4, {0, report}}};
    m_line->say("\r\n+CDSI: \"SR\",4\r\n");
    ASSERT_TRUE(until([&] { return m_unsolicited->count() > 0; }));
    EXPECT_FALSE(m_modem->hasMail());
    const int due = m_dueCount;
    ASSERT_TRUE(until([&] { return m_modem->hasMail(); }));
    EXPECT_EQ(m_dueCount, due + 1);
    fetchAll();
    EXPECT_EQ(m_read, (QList<Arrival>{{report, "SR", 4}}));
    EXPECT_EQ(countOf("AT+CMGR=4"), 1);
}

TEST_F(ModemMail, manyAnnouncementsAreReadByOneListing)
{
    openReady();
    fetchAll();
    const int listings = countOf("AT+CMGL=4");
    for (int index = 1; index <= 16; ++index) {
        m_mailbox.memories["SR"].insert(index, {0, report});
        m_line->say("\r\n+CDSI: \"SR\"," + QByteArray::number(index) + "\r\n");
    }
    ASSERT_TRUE(until([&] { return m_modem->hasMail(); }));
    fetchAll();
    EXPECT_EQ(m_read.size(), 16);
    EXPECT_EQ(countOf("AT+CMGL=4"), listings + 1);
    EXPECT_EQ(countOf("AT+CMGR=1"), 0);
}

TEST_F(ModemMail, anAnnouncementOfNothingIsForgotten)
{
    openReady();
    fetchAll();
    m_line->say("\r\n+CMTI: \"SM\",9\r\n");
    m_line->say("\r\n+CMTI: \"XX\",1\r\n");
    m_line->say("\r\n+CMTI: \"SM\"\r\n");
    m_line->say("\r\n+CMTI: \"SM\",-1\r\n");
    m_line->say("\r\n+CMTI:\r\n");
    ASSERT_TRUE(until([&] { return m_modem->hasMail(); }));
    fetchAll();
    EXPECT_TRUE(m_read.isEmpty());
    EXPECT_EQ(m_modem->state(), Modem::State::Ready);
}

TEST_F(ModemMail, aRoutedReportIsAcknowledgedOnceItIsDismissed)
{
    m_mailbox.routesOffered = "+CNMI: (2),(1),(0),(1)";
    openReady();
    fetchAll();
    m_line->say("\r\n+CDS: 21\r\n" + report + "\r\n");
    ASSERT_TRUE(until([&] { return m_modem->hasMail(); }));
    fetchAll();
    ASSERT_EQ(m_read, (QList<Arrival>{{report, {}, -1}}));
    EXPECT_EQ(countOf("AT+CNMA"), 0);
    m_modem->dismissMail(m_read);
    fetchAll();
    EXPECT_EQ(countOf("AT+CNMA"), 1);
}

TEST_F(ModemMail, aServiceThatNeedsNoWordGetsNone)
{
    m_mailbox.routesOffered = "+CNMI: (2),(2),(0),(1)";
    m_mailbox.refused = {"AT+CSMS=1"};
    openReady();
    fetchAll();
    m_line->say("\r\n+CMT: ,16\r\n" + message + "\r\n");
    ASSERT_TRUE(until([&] { return m_modem->hasMail(); }));
    fetchAll();
    ASSERT_EQ(m_read, (QList<Arrival>{{message, {}, -1}}));
    m_modem->dismissMail(m_read);
    fetchAll();
    EXPECT_EQ(countOf("AT+CNMA"), 0);
}

TEST_F(ModemMail, aWordThatCameTooLateLetsTheDeviceRouteAgain)
{
    m_mailbox.routesOffered = "+CNMI: (2),(1),(0),(1)";
    m_mailbox.refused = {"AT+CNMA"};
    openReady();
    fetchAll();
    ASSERT_EQ(countOf("AT+CNMI=2,1,0,1,0"), 1);
    m_mailbox.memories["SM"] = {{1, {0, message}}};
    m_line->say("\r\n+CDS: 21\r\n" + report + "\r\n");
    ASSERT_TRUE(until([&] { return m_modem->hasMail(); }));
    fetchAll();
    m_modem->dismissMail(m_read);
    fetchAll();
    EXPECT_EQ(countOf("AT+CNMI=2,1,0,1,0"), 2);
    EXPECT_EQ(m_read.constLast(), (Arrival{message, "SM", 1})) << "nobody announced it";
}

TEST_F(ModemMail, aDeviceThatHasStoppedRoutingIsMadeToRouteAgain)
{
    m_mailbox.routesOffered = "+CNMI: (2),(1),(0),(1)";
    openReady();
    fetchAll();
    ASSERT_EQ(countOf("AT+CNMI=2,1,0,1,0"), 1);
    m_mailbox.routesInForce = "+CNMI: 2,0,0,0,0"; // an engine before us owed it a word
    m_mailbox.memories["SM"] = {{1, {0, message}}};
    ASSERT_TRUE(until([&] { return m_modem->hasMail(); }));
    fetchAll();
    EXPECT_EQ(countOf("AT+CNMI=2,1,0,1,0"), 2);
    EXPECT_EQ(m_read, (QList<Arrival>{{message, "SM", 1}})) << "nobody announced it";
}

TEST_F(ModemMail, routesThatAreInForceAreLeftAlone)
{
    m_mailbox.routesOffered = "+CNMI: (2),(1),(0),(1)";
    openReady();
    fetchAll();
    for (int look = 1; look <= 2; ++look) {
        ASSERT_TRUE(until([&] { return m_modem->hasMail(); }));
        fetchAll();
        EXPECT_EQ(countOf("AT+CNMI?"), look);
    }
    EXPECT_EQ(countOf("AT+CNMI=2,1,0,1,0"), 1);
}

TEST_F(ModemMail, aGarbledLineOfAListingTouchesNothingAndIsLookedAtAgain)
{
    for (const char *const garbled : {"+CMGL: 5", "+CMGL:", "+CMGL: x,0,,17", "+CMGL: 1,0,,17"}) {
        m_line->onCommand = [&](const QByteArray &command) -> std::optional<QByteArray> {
            if (command == "AT+CMGL=4")
                return FakeModemLine::info(garbled);
            return m_mailbox.answerTo(command);
        };
        openReady();
        fetchAll();
        EXPECT_TRUE(m_read.isEmpty()) << garbled;
        m_line->onCommand = [&](const QByteArray &command) { return m_mailbox.answerTo(command); };
        m_mailbox.memories["SM"] = {{1, {0, message}}};
        ASSERT_TRUE(until([&] { return m_modem->hasMail(); })) << garbled;
        fetchAll();
        EXPECT_EQ(m_read, (QList<Arrival>{{message, "SM", 1}})) << garbled;
        EXPECT_FALSE(std::any_of(m_line->commands.cbegin(), m_line->commands.cend(),
                                 [](const auto &command) { return command.startsWith("AT+CMGD"); }))
            << garbled;
        m_read.clear();
        m_mailbox.memories["SM"].clear();
        m_modem->close();
    }
}

TEST_F(ModemMail, whatCannotBeReadAtPresentIsReadLater)
{
    openReady();
    fetchAll();
    m_mailbox.memories["SM"] = {{1, {0, message}}};
    m_line->onCommand = [&](const QByteArray &command) -> std::optional<QByteArray> {
        if (command.startsWith("AT+CMGR="))
            return FakeModemLine::answer("+CMS ERROR: 314"); // the SIM is busy
        return m_mailbox.answerTo(command);
    };
    m_line->say("\r\n+CMTI: \"SM\",1\r\n");
    ASSERT_TRUE(until([&] { return m_modem->hasMail(); }));
    fetchAll();
    EXPECT_TRUE(m_read.isEmpty());
    ASSERT_TRUE(until([&] { return m_modem->hasMail(); }));
    fetchAll();
    EXPECT_EQ(m_read, (QList<Arrival>{{message, "SM", 1}}));
}

TEST_F(ModemMail, anAnnouncementBehindARoutedReportWhosePduWasLostStands)
{
    m_mailbox.routesOffered = "+CNMI: (2),(1),(0),(1)";
    openReady();
    fetchAll();
    m_mailbox.memories["SM"] = {{3, {0, message}}};
    m_line->say("\r\n+CDS: 25\r\n\r\n+CMTI: \"SM\",3\r\n");
    ASSERT_TRUE(until([&] { return m_modem->hasMail(); }));
    fetchAll();
    EXPECT_EQ(m_read, (QList<Arrival>{{message, "SM", 3}}));
    m_modem->dismissMail(m_read);
    fetchAll();
    EXPECT_EQ(countOf("AT+CNMA"), 0);
}

TEST_F(ModemMail, whatTheDeviceWillNotDeleteIsNotReadAgainAndAgain)
{
    m_mailbox.memories["SM"] = {{1, {0, message}}};
    m_mailbox.isDeleting = false;
    openReady();
    fetchAll();
    m_modem->dismissMail(m_read);
    fetchAll();
    EXPECT_EQ(countOf("AT+CMGD=1"), 1);
    m_modem->deferMail(m_read);
    ASSERT_TRUE(until([&] { return m_modem->hasMail(); }));
    fetchAll();
    EXPECT_EQ(m_read.size(), 1);
}

TEST_F(ModemMail, whatCouldNotBeStoredIsReadAgainLater)
{
    m_mailbox.memories["SM"] = {{1, {0, message}}};
    openReady();
    fetchAll();
    m_modem->deferMail(m_read);
    EXPECT_FALSE(m_modem->hasMail());
    ASSERT_TRUE(until([&] { return m_modem->hasMail(); }));
    fetchAll();
    EXPECT_EQ(m_read, (QList<Arrival>{{message, "SM", 1}, {message, "SM", 1}}));
}

TEST_F(ModemMail, aDeviceThatIsLostInTheMiddleIsReadAnewWhenItIsBack)
{
    m_mailbox.memories["SM"] = {{1, {0, message}}};
    openReady();
    m_modem->fetchMail();
    m_line->breakOff();
    ASSERT_TRUE(until([&] { return m_failed->count() == 1; }));
    EXPECT_TRUE(m_read.isEmpty());
    openReady();
    fetchAll();
    EXPECT_EQ(m_read, (QList<Arrival>{{message, "SM", 1}}));
}

TEST_F(ModemMail, aMemoryLargerThanAnAnswerIsReadInSeveralTurns)
{
    for (int index = 0; index < 150; ++index)
        m_mailbox.memories["SM"].insert(index, {0, message});
    openReady();
    while (m_modem->hasMail()) {
        const int turns = m_turns;
        const qsizetype before = m_read.size();
        m_modem->fetchMail();
        ASSERT_TRUE(until([&] { return m_turns > turns; }));
        m_modem->dismissMail(m_read.mid(before));
    }
    EXPECT_TRUE(m_mailbox.memories["SM"].isEmpty());
    EXPECT_EQ(m_read.size(), 150);
}

TEST_F(ModemMail, aDeviceThatRefusesWhatItSaysThatItHasIsAskedForSomethingElse)
{
    m_mailbox.refused = {"AT+CNMI=2,1,0,2,0"};
    openReady();
    EXPECT_EQ(countOf("AT+CNMI=2,1,0,1,0"), 1);
}

TEST_F(ModemMail, aDeviceThatKnowsOnlyToDropWhatWaitedIsAskedForThat)
{
    m_mailbox.routesOffered = "+CNMI: (0-2),(0-3),(0,2),(0-2),(1)";
    openReady();
    EXPECT_EQ(countOf("AT+CNMI=2,1,0,2,1"), 1);
}

TEST_F(ModemMail, theMemoriesOfADeviceThatAnnouncesNothingAreLookedIntoAgain)
{
    m_mailbox.routesOffered.clear();
    m_mailbox.refused = {"AT+CNMI=2,1,0,2,0", "AT+CNMI=2,1,0,1,0", "AT+CNMI=2,1", "AT+CNMI=1,1"};
    openReady();
    fetchAll();
    for (int round = 1; round <= 2; ++round) {
        m_mailbox.memories["SM"] = {{round, {0, message}}};
        ASSERT_TRUE(until([&] { return m_modem->hasMail(); }));
        fetchAll();
        EXPECT_EQ(m_read.size(), round);
        m_modem->dismissMail(m_read);
        fetchAll();
    }
}

TEST_F(ModemMail, whatIsShorterThanTheDeviceSaysIsReadAgainBeforeItIsTaken)
{
    m_mailbox.memories["SM"] = {{1, {0, message.chopped(4), 2}}};
    openReady();
    fetchAll();
    EXPECT_TRUE(m_read.isEmpty()) << "the line lost two octets";
    m_mailbox.memories["SM"] = {{1, {0, message}}};
    ASSERT_TRUE(until([&] { return m_modem->hasMail(); }));
    fetchAll();
    EXPECT_EQ(m_read, (QList<Arrival>{{message, "SM", 1}}));
}

TEST_F(ModemMail, whatIsShorterThanTheDeviceSaysTimeAndAgainIsTakenAsItIs)
{
    m_mailbox.memories["SM"] = {{1, {0, message, 1}}};
    openReady();
    fetchAll();
    EXPECT_TRUE(m_read.isEmpty());
    ASSERT_TRUE(until([&] { return m_modem->hasMail(); }));
    fetchAll();
    EXPECT_EQ(m_read, (QList<Arrival>{{message, "SM", 1}}));
}

TEST_F(ModemMail, aRoutedReportThatIsTooShortIsNotAcknowledged)
{
    m_mailbox.routesOffered = "+CNMI: (2),(1),(0),(1)";
    openReady();
    fetchAll();
    m_line->say("\r\n+CDS: 21\r\n" + report.chopped(2) + "\r\n");
    m_line->say("\r\n+CDS: 21\r\n" + report + "\r\n");
    ASSERT_TRUE(until([&] { return m_modem->hasMail(); }));
    fetchAll();
    EXPECT_EQ(m_read, (QList<Arrival>{{report, {}, -1}}));
}

TEST_F(ModemMail, whatWasRoutedAndCouldNotBeStoredIsHandedOutAgain)
{
    m_mailbox.routesOffered = "+CNMI: (2),(2),(0),(1)";
    m_mailbox.refused = {"AT+CSMS=1"};
    openReady();
    fetchAll();
    m_line->say("\r\n+CMT: ,16\r\n" + message + "\r\n");
    ASSERT_TRUE(until([&] { return m_modem->hasMail(); }));
    fetchAll();
    ASSERT_EQ(m_read.size(), 1);
    m_modem->deferMail(m_read);
    EXPECT_FALSE(m_modem->hasMail());
    ASSERT_TRUE(until([&] { return m_modem->hasMail(); }));
    fetchAll();
    EXPECT_EQ(m_read, (QList<Arrival>{{message, {}, -1}, {message, {}, -1}}));
}

TEST_F(ModemReports, areDeletedByOneCommandBehindAListing)
{
    keepReports(1, 16);
    fetchAndDismiss();
    EXPECT_EQ(m_read.size(), 16);
    EXPECT_EQ(left(), 0);
    EXPECT_EQ(deletions(), 1);
}

TEST_F(ModemReports, thatCameBehindTheListingStay)
{
    keepReports(1, 16);
    fetchAll();
    m_mailbox.memories["SR"].insert(17, {0, reportOf(17)});
    m_modem->dismissMail(m_read);
    fetchAll();
    EXPECT_EQ(left(), 1);
    EXPECT_EQ(deletions(), 1);
}

TEST_F(ModemReports, areDeletedOneByOneWhereTheListingLeftSomethingOut)
{
    keepReports(1, 16);
    m_line->onCommand = [&](const QByteArray &command) -> std::optional<QByteArray> {
        std::optional<QByteArray> answer = m_mailbox.answerTo(command);
        if (command == "AT+CMGL=4") // the line lost an entry
            answer->remove(0, answer->indexOf("\r\n+CMGL: 2,"));
        return answer;
    };
    fetchAndDismiss();
    EXPECT_EQ(m_read.size(), 15);
    EXPECT_EQ(left(), 1);
    EXPECT_EQ(deletions(), 15);
}

TEST_F(ModemReports, areDeletedOneByOneWhereTheListingIsGarbled)
{
    keepReports(1, 16);
    m_mailbox.memories["SR"][3].lost = 1;
    fetchAndDismiss();
    EXPECT_EQ(m_read.size(), 15);
    EXPECT_EQ(left(), 1);
}

TEST_F(ModemReports, areDeletedOneByOneWhereTheDeviceRefusesTheOneCommand)
{
    m_mailbox.deletesRead = FakeMailbox::DeletesRead::Refused;
    keepReports(1, 16);
    fetchAndDismiss();
    EXPECT_EQ(left(), 0);
    EXPECT_EQ(deletions(), 17);
    keepReports(1, 16);
    fetchAndDismiss();
    EXPECT_EQ(deletions(), 33) << "it isn't asked again";
}

TEST_F(ModemReports, areDeletedOneByOneOnceTheDeviceIsSeenToDeleteOneAlone)
{
    m_mailbox.deletesRead = FakeMailbox::DeletesRead::OneAlone;
    keepReports(1, 16);
    fetchAndDismiss(); // the listing behind the deletion shows what is left
    m_modem->dismissMail(m_read.mid(16));
    fetchAll();
    EXPECT_EQ(left(), 0);
    EXPECT_EQ(deletions(), 16);
}

TEST_F(ModemReports, thatAreNotStoredYetAreNotDeleted)
{
    keepReports(1, 16);
    fetchAll();
    m_modem->dismissMail(m_read.mid(0, 15));
    fetchAll();
    EXPECT_EQ(left(), 1);
}

} // namespace norvane
