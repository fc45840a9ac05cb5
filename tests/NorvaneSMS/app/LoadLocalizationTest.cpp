#include "NorvaneSMS/app/AppFixture.h"
#include "NorvaneSMS/app/SupportAddresses.h"
#include "NorvaneSMS/app/modSMSClient.h"
#include "common/NumberedFailure.h"
#include "foundation/Globals.h"

#include <QDir>

#include <stdexcept>

namespace norvane {

using namespace Qt::StringLiterals;

namespace {

class LoadLocalizationTest : public AppFixture
{
protected:
    LoadLocalizationTest()
    {
        goStartUpData = std::make_unique<clsStartUpData>();
        platform.onNation = [this] {
            ++nationQueries;
            return nation;
        };
        platform.onLocaleItem = [this](qint32 item) { itemsAsked.append(item); };
    }

    void useSystem(quint32 platformId, quint32 major, quint32 minor)
    {
        platform.onVersion = [=]() -> std::optional<VersionRecord> {
            VersionRecord record;
            record.platformId = platformId;
            record.major = major;
            record.minor = minor;
            return record;
        };
    }

    bool load(const QString &language = {})
    {
        return modSMSClient::LoadLocalization(helpers, language);
    }

    bool localeWasAskedForTheCountry() const
    {
        return itemsAsked.contains(LocaleItem::AbbreviatedCountry);
    }

    void expectOneBox(const QString &text)
    {
        ASSERT_EQ(boxes.shown.size(), 1);
        EXPECT_EQ(boxes.shown.at(0),
                  (RecordingMessageBoxes::Shown{text, MessageBoxes::Icon::Critical,
                                                MessageBoxes::Buttons::Ok,
                                                u"Norvane SMS - Load Resource File"_s}))
            << qPrintable(boxes.shown.at(0).text);
    }

    QString nation;
    int nationQueries = 0;
    QList<qint32> itemsAsked;
};

TEST_F(LoadLocalizationTest, goodFileIsLoadedWithoutAWord)
{
    installLanguage(u"ESN"_s);
    EXPECT_TRUE(load());
    EXPECT_TRUE(boxes.shown.isEmpty());
    ASSERT_TRUE(goLocalize);
    EXPECT_EQ(goLocalize->LanguageID(), u"ESN"_s);
    EXPECT_EQ(GS(3760003), u"&Enviar"_s);
    EXPECT_EQ(GS(0, u"Norvane SMS"_s), u"Norvane SMS"_s);
}

TEST_F(LoadLocalizationTest, snapshotIsFilledFromTheLocale)
{
    installLanguage(u"ESN"_s);
    ASSERT_TRUE(load());
    EXPECT_EQ(goStartUpData->CountryName, u"España"_s);
    EXPECT_EQ(goStartUpData->LanguageName, u"Spanish"_s);
    EXPECT_EQ(goStartUpData->ShortDateFormat, u"d/m/yy"_s);
    EXPECT_EQ(goStartUpData->LongDateFormat, u"dddd, d 'de' MMMM 'de' yyyy"_s);
    EXPECT_EQ(goStartUpData->DecimalSeparator, u","_s);
    EXPECT_EQ(goStartUpData->ThousandSeparator, u"."_s);
    EXPECT_FALSE(goStartUpData->DebugMode);
}

TEST_F(LoadLocalizationTest, countryAndLanguageAreSettledWhateverWasFound)
{
    const std::pair<QString, QString> rows[] = {
        {u"ESN"_s, u"ESP"_s}, {u"esp"_s, u"esp"_s}, {u"CAT"_s, u"ESP"_s},  {u"ptg"_s, u"prt"_s},
        {u"PTG"_s, u"AGO"_s}, {u"ENG"_s, u"GBR"_s}, {QString(), QString()}};
    installLanguage(u"ESN"_s);
    for (const auto &[language, country] : rows) {
        goStartUpData = std::make_unique<clsStartUpData>();
        platform.items[LocaleItem::AbbreviatedLanguage] = language;
        platform.items[LocaleItem::AbbreviatedCountry] = country;
        ASSERT_TRUE(load()) << qPrintable(language);
        EXPECT_EQ(goStartUpData->Country, u"ESP"_s);
        EXPECT_EQ(goStartUpData->Language, u"ESN"_s);
        EXPECT_EQ(goLocalize->LanguageID(), u"ESN"_s);
        EXPECT_EQ(SupportContact, u"https://soporte.norvane.example"_s);
    }
}

TEST_F(LoadLocalizationTest, portugueseSystemLooksForTheSpanishFile)
{
    platform.items[LocaleItem::AbbreviatedLanguage] = u"PTG"_s;
    platform.items[LocaleItem::AbbreviatedCountry] = u"PRT"_s;
    platform.items[LocaleItem::Language] = u"Portuguese"_s;
    installLanguage(u"PTG"_s);
    EXPECT_FALSE(load());
    EXPECT_EQ(goStartUpData->Country, u"ESP"_s);
    EXPECT_EQ(goStartUpData->LanguageName, u"Portuguese"_s);
    ASSERT_EQ(boxes.shown.size(), 1);
    EXPECT_TRUE(boxes.shown.at(0).text.contains(u"NorvaneSMS_ESN.XML "));
    EXPECT_TRUE(boxes.shown.at(0).text.contains(u"your language: Portuguese\r\n"));
}

TEST_F(LoadLocalizationTest, nationIsAskedOnThreeSystemsOnly)
{
    const struct
    {
        quint32 platformId, major, minor;
        bool asked;
    } rows[] = {{1, 4, 90, true},  {2, 5, 1, true},  {2, 5, 2, true},  {2, 5, 0, false},
                {1, 4, 10, false}, {1, 4, 0, false}, {2, 4, 0, false}, {2, 3, 51, false},
                {2, 6, 0, false},  {0, 3, 1, false}, {4, 6, 1, false}};
    installLanguage(u"ESN"_s);
    nation = u"PRT"_s;
    for (const auto &row : rows) {
        goStartUpData = std::make_unique<clsStartUpData>();
        nationQueries = 0;
        itemsAsked.clear();
        useSystem(row.platformId, row.major, row.minor);
        PlatformHelpers freshHelpers(platform);
        EXPECT_TRUE(modSMSClient::LoadLocalization(freshHelpers, QString()));
        EXPECT_EQ(nationQueries, row.asked ? 1 : 0)
            << row.platformId << '.' << row.major << '.' << row.minor;
        // The nation is a country of the list; without it the locale's country is needed.
        EXPECT_EQ(localeWasAskedForTheCountry(), !row.asked);
    }
}

TEST_F(LoadLocalizationTest, versionQueryThatFailsLeavesTheCountryToTheLocale)
{
    installLanguage(u"ESN"_s);
    platform.onVersion = [] { return std::nullopt; };
    EXPECT_TRUE(load());
    EXPECT_EQ(nationQueries, 0);
    EXPECT_TRUE(localeWasAskedForTheCountry());
}

TEST_F(LoadLocalizationTest, onlyNationsOfTheListStand)
{
    const std::pair<const char *, bool> rows[] = {{"ESP", true},  {"PRT", true},   {"AGO", true},
                                                  {"CPV", true},  {"MOZ", true},   {"GTM", true},
                                                  {"PAN", true},  {"FRA", false},  {"BRA", false},
                                                  {"prt", false}, {"PRTX", false}, {"", false}};
    installLanguage(u"ESN"_s);
    useSystem(2, 5, 1);
    for (const auto &[code, stands] : rows) {
        goStartUpData = std::make_unique<clsStartUpData>();
        itemsAsked.clear();
        nation = QLatin1String(code);
        EXPECT_TRUE(load());
        EXPECT_EQ(localeWasAskedForTheCountry(), !stands) << code;
    }
}

TEST_F(LoadLocalizationTest, failureOfTheNationQueryIsIgnored)
{
    installLanguage(u"ESN"_s);
    useSystem(2, 5, 1);
    platform.onNation = []() -> QString { throw NumberedFailure(5, u"nation"_s, u"Bad"_s); };
    EXPECT_TRUE(load());
    EXPECT_TRUE(localeWasAskedForTheCountry());
    platform.onNation = []() -> QString { throw std::runtime_error("nation"); };
    EXPECT_TRUE(load());
    EXPECT_TRUE(boxes.shown.isEmpty());
}

TEST_F(LoadLocalizationTest, failureOfTheVersionQueryIsIgnored)
{
    installLanguage(u"ESN"_s);
    platform.onVersion = []() -> std::optional<VersionRecord> {
        throw NumberedFailure(5, u"version"_s, u"Bad"_s);
    };
    EXPECT_TRUE(load());
    EXPECT_TRUE(localeWasAskedForTheCountry());
    EXPECT_TRUE(boxes.shown.isEmpty());
}

TEST_F(LoadLocalizationTest, languagePassedInNamesTheFile)
{
    installLanguage(u"CAT"_s);
    EXPECT_TRUE(load(u"CAT"_s));
    EXPECT_EQ(goLocalize->LanguageID(), u"CAT"_s);
    EXPECT_EQ(GS(3760003), u"&Envia"_s);
    EXPECT_EQ(goStartUpData->Language, u"ESN"_s);
    EXPECT_EQ(SupportContact, u"https://soporte.norvane.example"_s);
}

TEST_F(LoadLocalizationTest, missingFileIsToldWordForWord)
{
    EXPECT_FALSE(load());
    expectOneBox(u"It is not possible open the resource file for your language: Spanish\r\n"
                 u"for this country it is necessary the file NorvaneSMS_ESN.XML \r\n"
                 u"in the same folder as the App\r\n"
                 u"\r\n"
                 u"contact soporte@norvane.example to obtine that file\r\n"_s);
    EXPECT_FALSE(goLocalize);
}

TEST_F(LoadLocalizationTest, folderOfTheFilesNameIsNoFile)
{
    QDir().mkpath(platform.ownFolder + u"/NorvaneSMS_ESN.XML"_s);
    EXPECT_FALSE(load());
    ASSERT_EQ(boxes.shown.size(), 1);
    EXPECT_TRUE(boxes.shown.at(0).text.startsWith(u"It is not possible open"));
}

TEST_F(LoadLocalizationTest, missingFileOfAnotherLanguageNamesTheSettledOne)
{
    installLanguage(u"ESN"_s);
    EXPECT_FALSE(load(u"CAT"_s));
    ASSERT_EQ(boxes.shown.size(), 1);
    EXPECT_TRUE(boxes.shown.at(0).text.contains(u"the file NorvaneSMS_ESN.XML \r\n"));
}

TEST_F(LoadLocalizationTest, badFileIsToldWordForWord)
{
    for (const QByteArray &bytes :
         {QByteArray(), QByteArray("no table"), QByteArray("<xml/>"), fileWithoutRows()}) {
        boxes.shown.clear();
        writeLanguageFile(u"ESN"_s, bytes);
        EXPECT_FALSE(load());
        expectOneBox(u"Error in loading the file NorvaneSMS_ESN.XML \r\n"
                     u"the file seems to be corrupted\r\n"_s);
    }
}

TEST_F(LoadLocalizationTest, aMisspeltColumnMakesTheWholeFileBad)
{
    installLanguage(u"ESN"_s);
    QFile original(platform.ownFolder + u"/NorvaneSMS_ESN.XML"_s);
    ASSERT_TRUE(original.open(QIODevice::ReadOnly));
    const QByteArray good = original.readAll();
    for (const auto &[column, misspelt] :
         {std::pair{"ResSTring", "ResString"}, std::pair{"ResID", "ResId"}}) {
        boxes.shown.clear();
        QByteArray bytes = good;
        writeLanguageFile(u"ESN"_s, bytes.replace(column, misspelt));
        EXPECT_FALSE(load());
        expectOneBox(u"Error in loading the file NorvaneSMS_ESN.XML \r\n"
                     u"the file seems to be corrupted\r\n"_s);
        EXPECT_THROW(GS(14), NumberedFailure);
    }
}

TEST_F(LoadLocalizationTest, badFileLeavesNoTexts)
{
    writeLanguageFile(u"ESN"_s, fileWithoutRows());
    EXPECT_FALSE(load());
    ASSERT_TRUE(goLocalize); // the file was there, so the object is
    EXPECT_THROW(GS(3760003), NumberedFailure);
}

TEST_F(LoadLocalizationTest, anyOtherFailureIsToldWithThePathSoFar)
{
    installLanguage(u"ESN"_s);
    platform.onLocaleItem = [](qint32 item) {
        if (item == LocaleItem::LongDate)
            throw NumberedFailure(5, u"locale"_s, u"Invalid procedure call"_s);
    };
    EXPECT_FALSE(load());
    expectOneBox(u"Canot open the resource file \r\n0"_s);

    boxes.shown.clear();
    platform.onLocaleItem = [](qint32) { throw std::runtime_error("locale"); };
    EXPECT_FALSE(load());
    expectOneBox(u"Canot open the resource file \r\n0"_s);
}

TEST(SupportAddressesTest, addressesAreThoseOfTheHelpDesk)
{
    EXPECT_EQ(SupportAddresses::web, u"https://soporte.norvane.example"_s);
    EXPECT_EQ(SupportAddresses::spanishMail, u"soporte@norvane.example"_s);
    EXPECT_EQ(SupportAddresses::portugueseMail, u"suporte@norvane.example"_s);
}

TEST_F(LoadLocalizationTest, releasedGlobalsAreGone)
{
    installLanguage(u"ESN"_s);
    ASSERT_TRUE(load());
    modSMSClient::ReleaseGlobals();
    EXPECT_FALSE(goStartUpData);
    EXPECT_FALSE(goLocalize);
    EXPECT_THROW(GS(3760003), NumberedFailure);
    EXPECT_EQ(SupportContact, u"https://soporte.norvane.example"_s);
    modSMSClient::ReleaseGlobals();
}

} // namespace

} // namespace norvane
