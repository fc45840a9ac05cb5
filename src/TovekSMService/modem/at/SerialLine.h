#pragma once

#include "common/Result.h"

#include <QByteArray>
#include <QObject>
#include <QString>

namespace norvane {

/// What can go wrong with a line.
enum class LineError {
    NoSuchDevice,     ///< nothing has that name
    NotSerial,        ///< there is something, but no serial device
    HeldByAnother,    ///< another program has it
    NotPermitted,     ///< the account may not open it
    UnsupportedSpeed, ///< the device refuses the speed or another property of the line
    Unplugged,        ///< the device has gone away
    ReadFailed,
    WriteFailed,
    NotOpen,
    Other,
};

/// Why a line can't be opened, or can't be used any more.
struct LineFailure
{
    LineError error = LineError::Other;
    /// For logs: who holds the device, the system's message. May be empty.
    QString detail;
};

/// A line to a device: bytes out, bytes in, and the news that it has broken. Nothing is emitted
/// from within `open` and `close`.
class SerialLine : public QObject
{
    Q_OBJECT

public:
    explicit SerialLine(QObject *parent = nullptr) : QObject(parent) {}

    /// Opens the device exclusively, 8 data bits, no parity, 1 stop bit, no flow control.
    /// @param device path of the device or of a link to it
    /// @param baud   bits a second
    [[nodiscard]] virtual Result<void, LineFailure> open(const QString &device, int baud) = 0;
    virtual void close() = 0;
    virtual bool isOpen() const = 0;

    /// Takes all bytes for sending, or gives false if the line can't be written to.
    virtual bool write(const QByteArray &bytes) = 0;

Q_SIGNALS:
    void received(const QByteArray &bytes);
    /// The line can't be used any more; it is closed when this is emitted.
    void broken(const LineFailure &failure);
};

} // namespace norvane
