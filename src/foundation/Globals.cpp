#include "foundation/Globals.h"

#include "common/FailureNumbers.h"
#include "foundation/TextId.h"

namespace norvane {

using namespace Qt::StringLiterals;

std::unique_ptr<clsStartUpData> goStartUpData;
std::unique_ptr<cls_Localize> goLocalize;
WindowLimits gWindowLimits;
QString DataFolder;
QString SupportContact;

QString Localisation::text(qint32 id, const QStringList &arguments)
{
    if (!goLocalize)
        Failure::raise(Failure::ObjectNotSet, u"GS"_s);
    return goLocalize->GS(id, arguments);
}

QString boxTitle()
{
    return GS(TextId::ApplicationName, u"Norvane SMS"_s);
}

} // namespace norvane
