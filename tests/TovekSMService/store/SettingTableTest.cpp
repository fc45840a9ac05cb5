#include "TovekSMService/store/SettingTable.h"

#include "TovekSMService/store/StoreFixture.h"

namespace norvane {

using namespace Qt::StringLiterals;

namespace {

class SettingTableTest : public StoreFixture
{};

TEST_F(SettingTableTest, whatIsNotThereIsWhatTheCallerSays)
{
    EXPECT_EQ(given(SettingTable(m_store->database()).value(u"name"_s)), QString());
    EXPECT_EQ(given(SettingTable(m_store->database()).value(u"name"_s, u"absent"_s)), u"absent"_s);
}

TEST_F(SettingTableTest, theLastValueOfANameIsKeptAnEmptyOneToo)
{
    for (const QString &value : {u"one"_s, u"two"_s, QString()}) {
        done(SettingTable(m_store->database()).write(u"name"_s, value));
        done(SettingTable(m_store->database()).write(u"other"_s, u"else"_s));
        reopen();
        EXPECT_EQ(given(SettingTable(m_store->database()).value(u"name"_s, u"absent"_s)), value);
    }
}

} // namespace

} // namespace norvane
