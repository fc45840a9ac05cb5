#include "foundation/FailureTexts.h"

#include "foundation/Globals.h"
#include "foundation/TextId.h"

namespace norvane {

using namespace Qt::StringLiterals;

namespace {

/// The language text, else `builtIn` with the argument in the place of its "%1".
QString text(qint32 id, const char *builtIn, const QString &argument = {})
{
    if (goLocalize && goLocalize->has(id))
        return GS(id, argument);
    return QString::fromLatin1(builtIn).replace(u"%1"_s, argument);
}

} // namespace

QString FailureText::settingsUnreadable(const QString &file)
{
    return text(TextId::SettingsUnreadable, "The settings file %1 can't be read", file);
}

QString FailureText::settingsDamaged(const QString &file)
{
    return text(TextId::SettingsDamaged, "The settings file %1 is damaged. Mend it or delete it",
                file);
}

QString FailureText::settingsNotSaved(const QString &file)
{
    return text(TextId::SettingsNotSaved, "The settings can't be saved in %1", file);
}

QString FailureText::dataFolderNotMade(const QString &folder)
{
    return text(TextId::DataFolderNotCreated,
                "The data folder %1 can't be created. See whether a file has that name and whether "
                "you may write there",
                folder);
}

QString FailureText::engineNotStarted(const QString &reason)
{
    return text(TextId::EngineNotStarted, "The sending engine can't be started: %1", reason);
}

QString FailureText::noSessionBus()
{
    return text(TextId::NoSessionBus, "there is no session bus");
}

QString FailureText::programNotFound(const QString &program)
{
    return text(TextId::ProgramMissing, "the program %1 is missing or can't be run", program);
}

QString FailureText::engineDidNotComeUp()
{
    return text(TextId::EngineDidNotComeUp, "it was started but did not come up");
}

QString FailureText::engineEnded()
{
    return text(TextId::EngineEnded, "it ended by itself. Its file engine.log tells why");
}

QString FailureText::engineDoesNotAnswer(const QString &error)
{
    return text(TextId::EngineNotAnswering, "The sending engine doesn't answer (%1)", error);
}

} // namespace norvane
