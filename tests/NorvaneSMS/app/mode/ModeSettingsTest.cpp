#include "NorvaneSMS/app/mode/ModeSettings.h"

#include "common/FailureNumbers.h"
#include "support/RaisedFailure.h"

#include <QHash>

#include <gtest/gtest.h>

namespace {

/// A store in memory that notes what is written and fails as told.
class MadeUpSettings : public StoredSettings
{
public:
    QString get(const QString &application, const QString &section, const QString &key,
                const QString &defaultValue) const override
    {
        if (failingReads)
            Failure::raise(Failure::PathFileAccess, u"settings"_qs);
        return values.value(application + u'/' + section + u'/' + key, defaultValue);
    }
    void save(const QString &application, const QString &section, const QString &key,
              const QString &value) override
    {
        if (failingWrites)
            Failure::raise(Failure::DiskFull, u"settings"_qs);
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
    ModeSettings settings{store, u"/opt/norvane"_qs};

    void storeMode(const QString &text) { store.values[u"Norvane/SMS/ServerMode"_qs] = text; }
};

TEST_F(ModeSettingsTest, unconfiguredWorkstationIsAServerWithTheProgramFolderAsQueueFolder)
{
    EXPECT_TRUE(settings.serverMode());
    EXPECT_EQ(settings.queueFolder(), u"/opt/norvane"_qs);
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
    settings.saveQueueFolder(u"/srv/queue"_qs);
    EXPECT_EQ(store.values.value(u"Norvane/SMS/ServerMode"_qs), u"False"_qs);
    EXPECT_EQ(store.values.value(u"Norvane/SMS/QueueFolder"_qs), u"/srv/queue"_qs);
    EXPECT_EQ(store.values.size(), 2);
    EXPECT_FALSE(settings.serverMode());
    EXPECT_EQ(settings.queueFolder(), u"/srv/queue"_qs);
    settings.saveServerMode(true);
    EXPECT_EQ(store.values.value(u"Norvane/SMS/ServerMode"_qs), u"True"_qs);
    EXPECT_TRUE(settings.serverMode());
}

TEST_F(ModeSettingsTest, queueFolderIsNotValidated)
{
    for (const QString &folder : {u""_qs, u"relative"_qs, u"/no/such/folder"_qs, u"  "_qs}) {
        store.values[u"Norvane/SMS/QueueFolder"_qs] = folder;
        EXPECT_EQ(settings.queueFolder(), folder);
    }
}

TEST_F(ModeSettingsTest, storedTextIsReadAsABoolean)
{
    const std::pair<QString, bool> rows[] = {
        {u"True"_qs, true},   {u"true"_qs, true}, {u"TRUE"_qs, true}, {u"False"_qs, false},
        {u"fAlSe"_qs, false}, {u"0"_qs, false},   {u"-1"_qs, true},   {u"2"_qs, true}};
    for (const auto &[text, mode] : rows) {
        storeMode(text);
        settings.repairServerMode();
        EXPECT_EQ(settings.serverMode(), mode) << qPrintable(text);
    }
    EXPECT_TRUE(store.writes.isEmpty());
}

TEST_F(ModeSettingsTest, textThatIsNoBooleanFailsUntilItIsRepairedToServer)
{
    for (const QString &text : {u"perhaps"_qs, u""_qs, u"Verdadero"_qs, u"True1"_qs}) {
        store.writes.clear();
        storeMode(text);
        EXPECT_EQ(raisedNumber([&] { settings.serverMode(); }), 13) << qPrintable(text);
        settings.repairServerMode();
        EXPECT_EQ(store.writes, (QStringList{u"ServerMode=True"_qs})) << qPrintable(text);
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
    storeMode(u"perhaps"_qs);
    store.failingWrites = true;
    EXPECT_EQ(raisedNumber([&] { settings.repairServerMode(); }), 61);
    EXPECT_EQ(raisedNumber([&] { settings.saveQueueFolder(u"/x"_qs); }), 61);
}

} // namespace
