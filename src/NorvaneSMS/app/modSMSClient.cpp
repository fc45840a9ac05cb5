#include "NorvaneSMS/app/modSMSClient.h"

#include "NorvaneSMS/app/SupportAddresses.h"
#include "NorvaneSMS/app/mode/DataFolder.h"
#include "NorvaneSMS/console/frmSMSClient.h"
#include "foundation/FileSystem.h"
#include "foundation/Globals.h"
#include "foundation/MessageBoxes.h"

#include <algorithm>
#include <exception>
#include <initializer_list>
#include <utility>

namespace norvane {

using namespace Qt::StringLiterals;

namespace {

constexpr auto lineEnd = "\r\n";

/// Systems that are asked for the user's nation.
constexpr qint32 systemsWithNation[] = {99, 2002, 2003};

bool isOneOf(const QString &code, std::initializer_list<const char *> codes)
{
    return std::any_of(codes.begin(), codes.end(),
                       [&](const char *other) { return code == QLatin1String(other); });
}

void fillCountry(clsStartUpData &data, PlatformHelpers &helpers)
{
    try {
        const qint32 system = helpers.GetOSIdentifier(data.DebugMode);
        if (std::find(std::begin(systemsWithNation), std::end(systemsWithNation), system) !=
            std::end(systemsWithNation))
            data.Country = helpers.GetNationISO3();
    } catch (const std::exception &) {
        data.Country.clear(); // the locale's country takes its place below
    }
    if (!isOneOf(data.Country, {"ESP", "PRT", "AGO", "CPV", "MOZ", "GTM", "PAN"}))
        data.Country = helpers.GetLocaleText(LocaleItem::AbbreviatedCountry).toUpper();
    data.CountryName = helpers.GetLocaleText(LocaleItem::NativeCountry);
}

void fillLanguage(clsStartUpData &data, PlatformHelpers &helpers)
{
    data.Language = helpers.GetLocaleText(LocaleItem::AbbreviatedLanguage).toUpper();
    data.LanguageName = helpers.GetLocaleText(LocaleItem::Language);
    data.ShortDateFormat = helpers.GetLocaleText(LocaleItem::ShortDate).toLower();
    data.LongDateFormat = helpers.GetLocaleText(LocaleItem::LongDate);
    data.DecimalSeparator = helpers.GetLocaleText(LocaleItem::Decimal);
    data.ThousandSeparator = helpers.GetLocaleText(LocaleItem::Thousand);

    if (data.Language == "ESP"_L1)
        data.Language = u"ESN"_s;
    if (!isOneOf(data.Language, {"CAT", "PTG", "ESN"}))
        data.Language = u"ESN"_s;
}

bool isPortuguese(const clsStartUpData &data)
{
    return data.Language == "PTG"_L1;
}

QString missingFileText(const clsStartUpData &data)
{
    const QLatin1String mail =
        isPortuguese(data) ? SupportAddresses::portugueseMail : SupportAddresses::spanishMail;
    const QLatin1String end(lineEnd);
    return u"It is not possible open the resource file for your language: "_s + data.LanguageName +
           end + u"for this country it is necessary the file NorvaneSMS_"_s + data.Language +
           u".XML "_s + end + u"in the same folder as the App"_s + end + end + u"contact "_s +
           mail + u" to obtine that file"_s + end;
}

QString badFileText(const clsStartUpData &data)
{
    const QLatin1String end(lineEnd);
    return u"Error in loading the file NorvaneSMS_"_s + data.Language + u".XML "_s + end +
           u"the file seems to be corrupted"_s + end;
}

void showLoadFailure(const QString &text)
{
    messageBoxes().show(text, MessageBoxes::Icon::Critical, MessageBoxes::Buttons::Ok,
                        u"Norvane SMS - Load Resource File"_s);
}

/// Steps of LoadLocalization that can fail; `path` keeps how far the file's name was built.
bool load(PlatformHelpers &helpers, QString language, QString &path)
{
    clsStartUpData &data = *goStartUpData;
    fillCountry(data, helpers);
    fillLanguage(data, helpers);

    // The console runs in this language on every machine; what was found above is kept in the
    // other properties only.
    data.Country = u"ESP"_s;
    data.Language = u"ESN"_s;

    SupportContact = isPortuguese(data) ? SupportAddresses::portugueseMail : SupportAddresses::web;
    if (language.isEmpty())
        language = data.Language;

    const FileSystem files;
    path = files.BuildPath(helpers.programFolder(), u"NorvaneSMS_"_s + language + u".XML"_s);
    if (!files.FileExists(path)) {
        showLoadFailure(missingFileText(data));
        return false;
    }
    goLocalize = std::make_unique<cls_Localize>();
    if (goLocalize->Init(path, language))
        return true;
    showLoadFailure(badFileText(data));
    return false;
}

} // namespace

bool modSMSClient::LoadLocalization(PlatformHelpers &helpers, QString language)
{
    QString path;
    try {
        return load(helpers, std::move(language), path);
    } catch (const std::exception &) {
        // The source has no line numbers, so the number of the failing line is 0.
        showLoadFailure(u"Canot open the resource file "_s + path + QLatin1String(lineEnd) +
                        u"0"_s);
        return false;
    }
}

std::unique_ptr<frmSMSClient> modSMSClient::Main(PlatformHelpers &helpers,
                                                 ConsoleEnvironment environment)
{
    goStartUpData = std::make_unique<clsStartUpData>();
    if (!LoadLocalization(helpers, QString()))
        return nullptr;
    static_cast<void>(ResolveDataFolder(helpers, DataFolder));
    environment.settings.repairServerMode();

    auto console = std::make_unique<frmSMSClient>(std::move(environment));
    console->Form_Load();
    console->show();
    return console;
}

void modSMSClient::ReleaseGlobals()
{
    goStartUpData.reset();
    goLocalize.reset();
}

} // namespace norvane
