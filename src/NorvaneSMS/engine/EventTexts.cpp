#include "NorvaneSMS/engine/EventTexts.h"

#include "NorvaneSMS/engine/ErrorText.h"
#include "contract/SMSManager.h"
#include "foundation/Globals.h"

#include <QRegularExpression>

namespace {

constexpr qsizetype deviceStatusLength = 25;

QString line(QLatin1String label, const QString &value)
{
    return label + value + QStringLiteral("\r\n");
}

/// The locale's long time form without its zone.
QString timeFormat(const QLocale &locale)
{
    static const QRegularExpression zone(QStringLiteral(",?\\s*[\\(\\[]?t+[\\)\\]]?\\s*"));
    return locale.timeFormat(QLocale::LongFormat).remove(zone);
}

} // namespace

QString EventTexts::terminalText(const Device &device)
{
    return line(QLatin1String("Manufacturer: "), device.Manufacturer) +
           line(QLatin1String("Model: "), device.Model) +
           line(QLatin1String("IMEI: "), device.IMEI) +
           line(QLatin1String("NetworkInfo: "), device.NetworkInfo) +
           line(QLatin1String("BatteryLevel: "), QString::number(device.BatteryLevel)) +
           line(QLatin1String("SignalLevel: "), QString::number(device.SignalLevel)) +
           line(QLatin1String("Firmware: "), device.FirmWare) +
           line(QLatin1String("Time: "), device.Time) +
           line(QLatin1String("SMSCNumber: "), device.SMSCNumber) +
           line(QLatin1String("Hardware: "), device.Hardware);
}

QString EventTexts::deviceStatus(const QString &manufacturer, const QString &model)
{
    return (manufacturer + u'-' + model).left(deviceStatusLength);
}

QString EventTexts::sentLine(const QString &phone)
{
    return GS(3760023, phone);
}

QString EventTexts::failedLine(const QString &phone, qint32 errorCode)
{
    return GS(3760024, phone, errorCode, GetErrorText(errorCode));
}

QString EventTexts::warningLine(qint32 errCode, const QString &extraInfo)
{
    return GS(3760054, errCode, GetErrorText(errCode), extraInfo);
}

QString EventTexts::sentMoment(const QDateTime &moment, const QLocale &locale)
{
    return locale.toString(moment.date(), QLocale::ShortFormat) + u' ' +
           timeText(moment.time(), locale);
}

QString EventTexts::wholeMoment(const QDateTime &moment, const QLocale &locale)
{
    QString dateFormat = locale.dateFormat(QLocale::ShortFormat);
    if (!dateFormat.contains(QLatin1String("yyyy")))
        dateFormat.replace(QLatin1String("yy"), QLatin1String("yyyy"));
    return locale.toString(moment.date(), dateFormat) + u' ' + timeText(moment.time(), locale);
}

QString EventTexts::failedMoment(const QDateTime &moment)
{
    return moment.toString(QStringLiteral("dd-MM-yyyy HH:mm:ss"));
}

QString EventTexts::timeText(const QTime &time, const QLocale &locale)
{
    return locale.toString(time, timeFormat(locale));
}

QString EventTexts::sentCaption(qsizetype rows)
{
    return GS(3760009) + QStringLiteral(" ( ") + QString::number(rows) + QStringLiteral(" )");
}

QString EventTexts::queueSize(qint32 count)
{
    return count >= 1 ? GS(3760025, count) : GS(3760013);
}

QString EventTexts::engineStatus(qint32 status)
{
    return status == SMSManager::Running ? GS(3760014) : GS(3760026);
}
