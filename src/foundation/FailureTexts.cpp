#include "foundation/FailureTexts.h"

#include "foundation/Globals.h"

namespace {

/// The language text, else `builtIn` with the argument in the place of its "%1".
QString text(qint32 id, const char *builtIn, const QString &argument = {})
{
    if (goLocalize && goLocalize->has(id))
        return GS(id, argument);
    return QString::fromLatin1(builtIn).replace(QStringLiteral("%1"), argument);
}

} // namespace

QString FailureText::settingsUnreadable(const QString &file)
{
    return text(3760120, "The settings file %1 can't be read", file);
}

QString FailureText::settingsDamaged(const QString &file)
{
    return text(3760121, "The settings file %1 is damaged. Mend it or delete it", file);
}

QString FailureText::settingsNotSaved(const QString &file)
{
    return text(3760122, "The settings can't be saved in %1", file);
}

QString FailureText::dataFolderNotMade(const QString &folder)
{
    return text(3760123,
                "The data folder %1 can't be created. See whether a file has that name and whether "
                "you may write there",
                folder);
}

QString FailureText::engineNotStarted(const QString &reason)
{
    return text(3760124, "The sending engine can't be started: %1", reason);
}

QString FailureText::noSessionBus()
{
    return text(3760125, "there is no session bus");
}

QString FailureText::programNotFound(const QString &program)
{
    return text(3760126, "the program %1 is missing or can't be run", program);
}

QString FailureText::engineDidNotComeUp()
{
    return text(3760127, "it was started but did not come up");
}

QString FailureText::engineEnded()
{
    return text(3760129, "it ended by itself. Its file engine.log tells why");
}

QString FailureText::engineDoesNotAnswer(const QString &error)
{
    return text(3760128, "The sending engine doesn't answer (%1)", error);
}
