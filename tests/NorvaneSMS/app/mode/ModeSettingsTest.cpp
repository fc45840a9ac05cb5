#include "NorvaneSMS/app/mode/ModeSettings.h"

#include "common/FailureNumbers.h"
#include "support/RaisedFailure.h"

#include <QHash>

#include <gtest/gtest.h>

namespace norvane {

using namespace Qt::StringLiterals;

namespace {

/// A store in memory that notes what is written and fails as told.
class MadeUpSettings : public StoredSettings
{
public:
    QString get(const QString &application, const QString &section, const QString &key,
                const QString &defaultValue) const override
    {
        if (failingReads)
            Failure::raise(Failure::PathFileAccess, u"settings"_s);
        return values.value(application + u'/' + section + u'/' + key, defaultValue);
    }
    void save(const QString &application, const QString &section, const QString &key,
              const QString &value) override
    {
        if (failingWrites)
            Failure::raise(Failure::DiskFull, u"settings"_s);
        writes.append(key + u'=' + value);
        values.insert(application + u'/' + section + u'/' + key, value);
    }

    QHash<QString, QString> values;
    QStringList writes;
    bool failingReads = false;
    bool failingWrites = false;
};

class ModeSettingsTest : public ::testing::Test
{
protected:
    MadeUpSettings store;
    ModeSettings settings{store, u"/opt/norvane"_s};

    void storeMode(const QString &text) { store.values[u"Norvane/SMS/ServerMode"_s] = text; }
};

TEST_F(ModeSettingsTest, unconfiguredWorkstationIsAServerWithTheProgramFolderAsQueueFolder)
{
    EXPECT_TRUE(settings.serverMode());
    EXPECT_EQ(settings.queueFolder(), u"/opt/norvane"_s);
}

TEST_F(ModeSettingsTest, readingAndRepairingLeaveTheKeysUnwritten)
{
    settings.repairServerMode();
    EXPECT_TRUE(settings.serverMode());
    settings.queueFolder();
    EXPECT_TRUE(store.writes.isEmpty());
    EXPECT_TRUE(store.values.isEmpty());
}

TEST_F(ModeSettingsTest, valuesAreKeptUnderTheirKeysAsText)
{
    settings.saveServerMode(false);
    settings.saveQueueFolder(u"/srv/queue"_s);
    EXPECT_EQ(store.values.value(u"Norvane/SMS/ServerMode"_s), u"False"_s);
    EXPECT_EQ(store.values.value(u"Norvane/SMS/QueueFolder"_s), u"/srv/queue"_s);
    EXPECT_EQ(store.values.size(), 2);
    EXPECT_FALSE(settings.serverMode());
    EXPECT_EQ(settings.queueFolder(), u"/srv/queue"_s);
    settings.saveServerMode(true);
    EXPECT_EQ(store.values.value(u"Norvane/SMS/ServerMode"_s), u"True"_s);
    EXPECT_TRUE(settings.serverMode());
}

TEST_F(ModeSettingsTest, queueFolderIsNotValidated)
{
    for (const QString &folder : {u""_s, u"relative"_s, u"/no/such/folder"_s, u"  "_s}) {
        store.values[u"Norvane/SMS/QueueFolder"_s] = folder;
        EXPECT_EQ(settings.queueFolder(), folder);
    }
}

TEST_F(ModeSettingsTest, storedTextIsReadAsABoolean)
{
    const std::pair<QString, bool> rows[] = {
        {u"True"_s, true},   {u"true"_s, true}, {u"TRUE"_s, true}, {u"False"_s, false},
        {u"fAlSe"_s, false}, {u"0"_s, false},   {u"-1"_s, true},   {u"2"_s, true}};
    for (const auto &[text, mode] : rows) {
        storeMode(text);
        settings.repairServerMode();
        EXPECT_EQ(settings.serverMode(), mode) << qPrintable(text);
    }
    EXPECT_TRUE(store.writes.isEmpty());
}

TEST_F(ModeSettingsTest, textThatIsNoBooleanFailsUntilItIsRepairedToServer)
{
    for (const QString &text : {u"perhaps"_s, u""_s, u"Verdadero"_s, u"True1"_s}) {
        store.writes.clear();
        storeMode(text);
        EXPECT_EQ(raisedNumber([&] { settings.serverMode(); }), 13) << qPrintable(text);
        settings.repairServerMode();
        EXPECT_EQ(store.writes, (QStringList{u"ServerMode=True"_s})) << qPrintable(text);
        EXPECT_TRUE(settings.serverMode());
    }
}

TEST_F(ModeSettingsTest, storeThatCannotBeReadIsRaisedAndNotRepaired)
{
    store.failingReads = true;
    EXPECT_EQ(raisedNumber([&] { settings.repairServerMode(); }), 75);
    EXPECT_EQ(raisedNumber([&] { settings.serverMode(); }), 75);
    EXPECT_EQ(raisedNumber([&] { settings.queueFolder(); }), 75);
    EXPECT_TRUE(store.writes.isEmpty());
}

TEST_F(ModeSettingsTest, repairThatCannotBeWrittenIsRaised)
{
    storeMode(u"perhaps"_s);
    store.failingWrites = true;
    EXPECT_EQ(raisedNumber([&] { settings.repairServerMode(); }), 61);
    EXPECT_EQ(raisedNumber([&] { settings.saveQueueFolder(u"/x"_s); }), 61);
}

} // namespace

} // namespace norvane
