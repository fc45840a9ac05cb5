#include "TovekSMService/modem/at/QtSerialPortLine.h"

#include "TovekSMService/platform/SerialDevices.h"

#include <QFileInfo>

namespace norvane {

using namespace Qt::StringLiterals;

namespace {

/// For how long a driver may keep the engine waiting.
constexpr int claimMs = 2000;

LineError lineErrorOf(QSerialPort::SerialPortError error)
{
    switch (error) {
    case QSerialPort::DeviceNotFoundError:
        return LineError::NoSuchDevice;
    case QSerialPort::PermissionError:
        return LineError::NotPermitted;
    case QSerialPort::UnsupportedOperationError:
        return LineError::UnsupportedSpeed;
    case QSerialPort::ResourceError:
        return LineError::Unplugged;
    case QSerialPort::ReadError:
        return LineError::ReadFailed;
    case QSerialPort::WriteError:
        return LineError::WriteFailed;
    case QSerialPort::NotOpenError:
        return LineError::NotOpen;
    default:
        return LineError::Other;
    }
}

Result<void, LineFailure> fail(LineError error, const QString &detail)
{
    return failed(LineFailure{error, detail});
}

} // namespace

QtSerialPortLine::QtSerialPortLine(QObject *parent) : SerialLine(parent)
{
    connect(&m_port, &QSerialPort::readyRead, this, &QtSerialPortLine::onReadyRead);
    connect(&m_port, &QSerialPort::errorOccurred, this, &QtSerialPortLine::onErrorOccurred);
}

QtSerialPortLine::~QtSerialPortLine()
{
    close();
}

Result<void, LineFailure> QtSerialPortLine::open(const QString &device, int baud)
{
    close();

    // The lock that other programs honour is made for the device's own name, not for a link's.
    const QString path = QFileInfo(device).canonicalFilePath();
    if (path.isEmpty())
        return fail(LineError::NoSuchDevice, device);
    if (!SerialDevices::isTerminalDevice(path))
        return fail(LineError::NotSerial, path);
    if (baud <= 0)
        return fail(LineError::UnsupportedSpeed, QString::number(baud));
    if (const auto holder = SerialDevices::holderOf(path))
        return fail(LineError::HeldByAnother, SerialDevices::describe(*holder));
    SerialDevices::removeDeadLocks(path);

    const auto opened = claim(path).and_then([&] { return openPort(path, baud); });
    if (!opened) {
        closePort();
        return opened;
    }
    m_port.clear();
    m_inUse = true;
    return {};
}

/// Opens the device once before the port does, which then finds its driver awake.
Result<void, LineFailure> QtSerialPortLine::claim(const QString &path)
{
    using Kind = PlatformFailure::Kind;
    const Result<void, PlatformFailure> claimed = m_claim.take(path, claimMs);
    if (claimed)
        return {};
    const QString &text = claimed.error().text;
    switch (claimed.error().kind) {
    case Kind::HeldByAnother: {
        const auto holder = SerialDevices::openerOf(path);
        return fail(LineError::HeldByAnother, holder ? SerialDevices::describe(*holder) : text);
    }
    case Kind::NotPermitted:
        return fail(LineError::NotPermitted, text);
    case Kind::Gone:
        return fail(LineError::NoSuchDevice, text);
    case Kind::Stuck:
    case Kind::Other:
        break;
    }
    return fail(LineError::Other, text);
}

Result<void, LineFailure> QtSerialPortLine::openPort(const QString &path, int baud)
{
    m_path = path;
    m_port.setPortName(path);
    m_port.setBaudRate(baud);
    m_port.setDataBits(QSerialPort::Data8);
    m_port.setParity(QSerialPort::NoParity);
    m_port.setStopBits(QSerialPort::OneStop);
    m_port.setFlowControl(QSerialPort::NoFlowControl);
    if (m_port.open(QIODevice::ReadWrite)) {
        // A device may take the speed without an error and run at another one.
        const auto actual = SerialDevices::speedOf(m_port.handle());
        if (actual && *actual != baud)
            return fail(LineError::UnsupportedSpeed, QString::number(baud));
        return {};
    }

    const QString text = m_port.errorString();
    LineError error = lineErrorOf(m_port.error());
    if (error == LineError::NotPermitted && SerialDevices::mayUse(path))
        error = LineError::HeldByAnother;
    return fail(error, text);
}

void QtSerialPortLine::close()
{
    m_inUse = false;
    closePort();
}

void QtSerialPortLine::closePort()
{
    if (m_port.isOpen()) {
        // The system would wait for bytes that the device doesn't take.
        m_port.clear(QSerialPort::Output);
        m_port.close();
    }
    m_claim.release();
}

bool QtSerialPortLine::isOpen() const
{
    return m_inUse;
}

bool QtSerialPortLine::write(const QByteArray &bytes)
{
    if (!m_inUse || m_port.write(bytes) != bytes.size())
        return false;
    // Straight to the device instead of at the next turn of the event loop. What it can't take now
    // follows when it can; a failure comes as errorOccurred.
    m_port.flush();
    return m_inUse;
}

void QtSerialPortLine::onReadyRead()
{
    const QByteArray bytes = m_port.readAll();
    if (m_inUse && !bytes.isEmpty())
        Q_EMIT received(bytes);
}

void QtSerialPortLine::onErrorOccurred(QSerialPort::SerialPortError error)
{
    if (!m_inUse || error == QSerialPort::NoError || error == QSerialPort::TimeoutError)
        return;
    LineFailure failure{lineErrorOf(error), m_port.errorString()};
    // Reading from a device that has gone ends like reading at the end of a file.
    if (!SerialDevices::isPresent(m_port.handle()))
        failure = {LineError::Unplugged, m_path + u" has gone"_s};
    m_inUse = false;
    // The port is in the middle of its own work here: it is closed, and the news told, afterwards.
    QMetaObject::invokeMethod(
        this,
        [this, failure] {
            if (m_inUse)
                return; // opened anew meanwhile
            closePort();
            Q_EMIT broken(failure);
        },
        Qt::QueuedConnection);
}

} // namespace norvane
