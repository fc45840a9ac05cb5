#include "NorvaneHistory/HistoryLanguage.h"

#include "foundation/FileSystem.h"
#include "foundation/Globals.h"
#include "foundation/MessageBoxes.h"
#include "foundation/PlatformHelpers.h"

namespace norvane {

using namespace Qt::StringLiterals;

QString HistoryLanguage::chosen(const PlatformHelpers &helpers)
{
    const QString code = helpers.GetLocaleText(LocaleItem::AbbreviatedLanguage).toUpper();
    if (code == "CAT"_L1)
        return code;
    return code == "POR"_L1 || code == "PTG"_L1 ? u"PTG"_s : u"ESN"_s;
}

bool HistoryLanguage::load(const PlatformHelpers &helpers)
{
    const QString language = chosen(helpers);
    const QString path =
        FileSystem().BuildPath(helpers.programFolder(), u"NorvaneSMS_%1.XML"_s.arg(language));
    goLocalize = std::make_unique<cls_Localize>();
    if (goLocalize->Init(path, language))
        return true;
    goLocalize.reset();
    messageBoxes().show(u"The language file %1 is missing or damaged."_s.arg(path),
                        MessageBoxes::Icon::Critical, MessageBoxes::Buttons::Ok, u"Norvane SMS"_s);
    return false;
}

QString HistoryLanguage::toolkitName(const QString &language)
{
    if (language == "CAT"_L1)
        return u"ca"_s;
    return language == "PTG"_L1 ? u"pt_BR"_s : u"es"_s;
}

} // namespace norvane
