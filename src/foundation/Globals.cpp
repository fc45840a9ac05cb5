#include "foundation/Globals.h"

#include "common/FailureNumbers.h"

std::unique_ptr<clsStartUpData> goStartUpData;
std::unique_ptr<cls_Localize> goLocalize;
WindowLimits gWindowLimits;
QString DataFolder;
QString SupportContact;

QString Localisation::text(qint32 id, const QStringList &arguments)
{
    if (!goLocalize)
        Failure::raise(Failure::ObjectNotSet, QStringLiteral("GS"));
    return goLocalize->GS(id, arguments);
}

QString boxTitle()
{
    return GS(0, QStringLiteral("Norvane SMS"));
}
