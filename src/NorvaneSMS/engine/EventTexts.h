#pragma once

#include <QDateTime>
#include <QLocale>
#include <QString>

namespace norvane {

/// What the engine's events show, as pure functions: terminal lines, grid cells and labels.

namespace EventTexts {

/// The arguments of DeviceInfo.
struct Device
{
    QString Manufacturer;
    QString Model;
    QString IMEI;
    QString NetworkInfo;
    qint32 BatteryLevel = 0;
    qint32 SignalLevel = 0;
    QString FirmWare;
    QString Time;
    QString SMSCNumber;
    QString Hardware;
};

/// What the terminal holds after DeviceInfo: ten lines, each ended by CR LF.
QString terminalText(const Device &device);

/// The first 25 characters of manufacturer, "-" and model.
QString deviceStatus(const QString &manufacturer, const QString &model);

// Terminal lines, without their line end.
QString sentLine(const QString &phone);
QString failedLine(const QString &phone, qint32 errorCode);
QString warningLine(qint32 errCode, const QString &extraInfo);

/// The moment of a sent row, in the system's default date and time form.
QString sentMoment(const QDateTime &moment, const QLocale &locale);
/// The same with all figures of the year.
QString wholeMoment(const QDateTime &moment, const QLocale &locale);
/// The moment of a failed row: "dd-mm-yyyy hh:mm:ss".
QString failedMoment(const QDateTime &moment);
/// A time of day in the system's default time form.
QString timeText(const QTime &time, const QLocale &locale);

/// The caption of the sent frame, for `rows` rows below the header.
QString sentCaption(qsizetype rows);

QString queueSize(qint32 count);
QString engineStatus(qint32 status);

} // namespace EventTexts

} // namespace norvane
