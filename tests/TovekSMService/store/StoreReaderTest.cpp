#include "TovekSMService/store/StoreReader.h"

#include "TovekSMService/store/StoreFixture.h"

#include <QFile>

namespace norvane {

using namespace Qt::StringLiterals;

namespace {

class StoreReaderTest : public StoreFixture
{};

TEST_F(StoreReaderTest, aReaderMakesNoFileAndChangesNone)
{
    EXPECT_FALSE(StoreReader(file() + u"-missing"_s).open());
    EXPECT_FALSE(QFile::exists(file() + u"-missing"_s));
    m_store.reset();
    OtherConnection(file()).run(u"PRAGMA user_version = 1"_s);
    const StoreResult<> opened = StoreReader(file()).open();
    ASSERT_FALSE(opened) << "an earlier version was read";
    EXPECT_TRUE(opened.error().text().contains("still has the schema version 1"_L1));
    EXPECT_EQ(OtherConnection(file()).value(u"PRAGMA user_version"_s).toInt(), 1);
}

} // namespace

} // namespace norvane
