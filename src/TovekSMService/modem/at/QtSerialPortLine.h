#pragma once

#include "TovekSMService/modem/at/SerialLine.h"
#include "TovekSMService/platform/DeviceClaim.h"

#include <QSerialPort>

namespace norvane {

/// A real serial device, or a pseudo-terminal.
class QtSerialPortLine : public SerialLine
{
    Q_OBJECT

public:
    explicit QtSerialPortLine(QObject *parent = nullptr);
    ~QtSerialPortLine() override;

    [[nodiscard]] Result<void, LineFailure> open(const QString &device, int baud) override;
    void close() override;
    bool isOpen() const override;
    bool write(const QByteArray &bytes) override;

private:
    Result<void, LineFailure> claim(const QString &path);
    Result<void, LineFailure> openPort(const QString &path, int baud);
    void closePort();
    void onReadyRead();
    void onErrorOccurred(QSerialPort::SerialPortError error);

    DeviceClaim m_claim;
    QSerialPort m_port;
    QString m_path;
    bool m_inUse = false;
};

} // namespace norvane
