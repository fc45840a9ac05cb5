#include "TovekSMService/store/EngineName.h"

#include "contract/BusTypes.h"

#include <QRegularExpression>

namespace norvane {

using namespace Qt::StringLiterals;

std::optional<EngineName> EngineName::parse(const QString &text)
{
    static const QRegularExpression allowed(u"\\A[a-z][a-z0-9_]{0,31}\\z"_s);
    return allowed.match(text).hasMatch() ? std::optional(EngineName(text)) : std::nullopt;
}

QString EngineName::busName() const
{
    const QLatin1String unnamed(Bus::serviceName);
    return isNamed() ? unnamed + u'.' + m_text : QString(unnamed);
}

} // namespace norvane
