#include "TovekSMService/host/LogLevelSetting.h"

#include "TovekSMService/dispatch/EngineSettings.h"
#include "TovekSMService/log/Categories.h"
#include "common/SettingsText.h"
#include "common/platform/PlatformFiles.h"

namespace norvane {

using namespace Qt::StringLiterals;

namespace {

constexpr qint64 maxFile = 1024 * 1024; // bytes

} // namespace

std::optional<EngineLog::Level> LogLevelSetting::parse(const QByteArray &settings)
{
    const std::optional<SettingsText> text = SettingsText::parse(settings);
    const std::optional<QString> name = text ? text->value(u"Log"_s, u"Level"_s) : std::nullopt;
    if (!name)
        return std::nullopt;
    const std::optional<EngineLog::Level> level = EngineLog::levelNamed(name->trimmed());
    if (!level)
        qCWarning(logHost).noquote()
            << u"settings: Log/Level=%1 is none of error, warning, info and debug"_s.arg(
                   name->left(40));
    return level;
}

std::optional<EngineLog::Level> LogLevelSetting::load(const EngineName &name)
{
    QByteArray bytes;
    return platformFiles().read(EngineSettings::file(name), maxFile, bytes) == 0 ? parse(bytes)
                                                                                 : std::nullopt;
}

} // namespace norvane
