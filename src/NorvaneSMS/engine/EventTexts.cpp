#include "NorvaneSMS/engine/EventTexts.h"

#include "contract/SMSManager.h"
#include "foundation/ErrorText.h"
#include "foundation/Globals.h"
#include "foundation/TextId.h"

#include <QRegularExpression>

namespace norvane {

using namespace Qt::StringLiterals;

namespace {

constexpr qsizetype deviceStatusLength = 25;

QString line(QLatin1String label, const QString &value)
{
    return label + value + u"\r\n"_s;
}

/// The locale's long time form without its zone.
QString timeFormat(const QLocale &locale)
{
    static const QRegularExpression zone(u",?\\s*[\\(\\[]?t+[\\)\\]]?\\s*"_s);
    return locale.timeFormat(QLocale::LongFormat).remove(zone);
}

} // namespace

QString EventTexts::terminalText(const Device &device)
{
    return line("Manufacturer: "_L1, device.Manufacturer) + line("Model: "_L1, device.Model) +
           line("IMEI: "_L1, device.IMEI) + line("NetworkInfo: "_L1, device.NetworkInfo) +
           line("BatteryLevel: "_L1, QString::number(device.BatteryLevel)) +
           line("SignalLevel: "_L1, QString::number(device.SignalLevel)) +
           line("Firmware: "_L1, device.FirmWare) + line("Time: "_L1, device.Time) +
           line("SMSCNumber: "_L1, device.SMSCNumber) + line("Hardware: "_L1, device.Hardware);
}

QString EventTexts::deviceStatus(const QString &manufacturer, const QString &model)
{
    return (manufacturer + u'-' + model).left(deviceStatusLength);
}

QString EventTexts::sentLine(const QString &phone)
{
    return GS(TextId::MessageSent, phone);
}

QString EventTexts::failedLine(const QString &phone, qint32 errorCode)
{
    return GS(TextId::MessageFailed, phone, errorCode, GetErrorText(errorCode));
}

QString EventTexts::warningLine(qint32 errCode, const QString &extraInfo)
{
    return GS(TextId::EngineWarning, errCode, GetErrorText(errCode), extraInfo);
}

QString EventTexts::sentMoment(const QDateTime &moment, const QLocale &locale)
{
    return locale.toString(moment.date(), QLocale::ShortFormat) + u' ' +
           timeText(moment.time(), locale);
}

QString EventTexts::wholeMoment(const QDateTime &moment, const QLocale &locale)
{
    QString dateFormat = locale.dateFormat(QLocale::ShortFormat);
    if (!dateFormat.contains("yyyy"_L1))
        dateFormat.replace("yy"_L1, "yyyy"_L1);
    return locale.toString(moment.date(), dateFormat) + u' ' + timeText(moment.time(), locale);
}

QString EventTexts::failedMoment(const QDateTime &moment)
{
    return moment.toString(u"dd-MM-yyyy HH:mm:ss"_s);
}

QString EventTexts::timeText(const QTime &time, const QLocale &locale)
{
    return locale.toString(time, timeFormat(locale));
}

QString EventTexts::sentCaption(qsizetype rows)
{
    return GS(TextId::SentFrame) + u" ( "_s + QString::number(rows) + u" )"_s;
}

QString EventTexts::queueSize(qint32 count)
{
    return count >= 1 ? GS(TextId::QueueSize, count) : GS(TextId::QueueEmpty);
}

QString EventTexts::engineStatus(qint32 status)
{
    return status == SMSManager::running ? GS(TextId::EngineRunning) : GS(TextId::EngineStopped);
}

} // namespace norvane
