#include "TovekSMService/dispatch/DispatcherFixture.h"

#include "TovekSMService/dispatch/OutcomePruner.h"
#include "TovekSMService/store/PostgresDatabase.h"
#include "TovekSMService/store/QueueNews.h"
#include "TovekSMService/store/TestStoreShared.h"
#include "support/WaitUntil.h"

namespace norvane {

namespace {

using SharedDispatcher = DispatcherFixture;

TEST_F(SharedDispatcher, whatIsForgottenIsToldToTheOtherEngines)
{
    const auto other = openStoreOf(u"other"_s, file(), m_clock);
    QStringList heard;
    other->sharedDatabase()->onNotified([&](const QStringList &news) { heard += news; });
    const auto isTold = [&] {
        done(other->sharedDatabase()->probe());
        takeTurns();
        return heard.contains(QueueNews::ofHistory());
    };
    m_time.pass(500);
    EXPECT_FALSE(isTold());
    OtherConnection(file()).run(
        u"INSERT INTO outcome (message_id, delivery_date, phone, text, code, at, reported) "
        "VALUES (1, '', '600', 'old', 1, '2000-01-01T00:00:00', 1)"_s);
    // The clock is turned until it is told; that the server has it takes a moment of its own.
    EXPECT_TRUE(m_time.until(isTold, 4000) || waitUntil(isTold));
    EXPECT_TRUE(OtherConnection(file()).rows(u"SELECT id FROM outcome"_s).isEmpty());
}

} // namespace

} // namespace norvane
