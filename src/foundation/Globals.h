#pragma once

#include "foundation/clsStartUpData.h"
#include "foundation/cls_Localize.h"

#include <QString>

#include <memory>

namespace norvane {

/// Smallest and largest outer size of the console window, in pixels.
struct WindowLimits
{
    int minimumWidth = 0;
    int minimumHeight = 0;
    int maximumWidth = 0;
    int maximumHeight = 0;

    bool operator==(const WindowLimits &) const = default;
};

// The application-wide state. modSMSClient alone creates and releases it; texts can be fetched from
// the end of LoadLocalization until ReleaseGlobals.

extern std::unique_ptr<clsStartUpData> goStartUpData;
extern std::unique_ptr<cls_Localize> goLocalize;
extern WindowLimits gWindowLimits;
extern QString DataFolder;
extern QString SupportContact;

/// The language text `id` with its placeholders filled.
/// @throws NumberedFailure 91 while no language file is loaded
template <typename... Arguments>
QString GS(qint32 id, const Arguments &...arguments);

namespace Localisation {
QString text(qint32 id, const QStringList &arguments);

inline QString argument(const QString &value)
{
    return value;
}
inline QString argument(qint64 value)
{
    return QString::number(value);
}
} // namespace Localisation

template <typename... Arguments>
QString GS(qint32 id, const Arguments &...arguments)
{
    return Localisation::text(id, QStringList{Localisation::argument(arguments)...});
}

/// The title of the console's message boxes.
/// @throws NumberedFailure 91 while no language file is loaded
QString boxTitle();

} // namespace norvane
