#include "TovekSMService/store/StoreFixture.h"

#include <QFile>

namespace norvane {

using namespace Qt::StringLiterals;

namespace {

class PinRecordTest : public StoreFixture
{};

QString sim()
{
    return u"8934071100275844103"_s;
}

QString pin()
{
    return u"73915"_s;
}

TEST_F(PinRecordTest, pinsAreRememberedForEachSimAndPin)
{
    EXPECT_EQ(given(m_store->pins().history(sim(), pin())), PinHistory::NeverTried);
    for (const PinHistory history :
         {PinHistory::Tried, PinHistory::Refused, PinHistory::Accepted, PinHistory::NeverTried}) {
        done(m_store->pins().setHistory(sim(), pin(), history, noon()));
        reopen();
        EXPECT_EQ(given(m_store->pins().history(sim(), pin())), history);
    }
    done(m_store->pins().setHistory(sim(), pin(), PinHistory::Refused, noon()));
    EXPECT_EQ(given(m_store->pins().history(sim(), u"73916"_s)), PinHistory::NeverTried);
    EXPECT_EQ(given(m_store->pins().history(u"other"_s, pin())), PinHistory::NeverTried);
}

TEST_F(PinRecordTest, simAndPinAreKeptApart)
{
    done(m_store->pins().setHistory(u"12"_s, u"345"_s, PinHistory::Refused, noon()));
    EXPECT_EQ(given(m_store->pins().history(u"123"_s, u"45"_s)), PinHistory::NeverTried);
}

TEST_F(PinRecordTest, recordsOfAttemptsDoNotTellThePin)
{
    done(m_store->pins().setHistory(sim(), pin(), PinHistory::Refused, noon()));
    m_store.reset();
    QFile written(file());
    ASSERT_TRUE(written.open(QIODevice::ReadOnly));
    const QByteArray bytes = written.readAll();
    EXPECT_TRUE(bytes.contains(sim().toLatin1()));
    EXPECT_FALSE(bytes.contains(pin().toLatin1()));
}

} // namespace

} // namespace norvane
