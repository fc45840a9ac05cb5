#include "TovekSMService/modem/device/PortSearch.h"

#include "TovekSMService/log/Categories.h"
#include "TovekSMService/modem/codec/AnswerParsers.h"
#include "TovekSMService/platform/SerialDevices.h"

#include <QFileInfo>

#include <algorithm>
#include <utility>

namespace norvane {

using namespace Qt::StringLiterals;

namespace {

constexpr int probeTries = 2;

/// The device itself, or the path as it stands where there is none.
QString deviceOf(const QString &port)
{
    const QString device = QFileInfo(port).canonicalFilePath();
    return device.isEmpty() ? port : device;
}

} // namespace

PortSearch::PortSearch(SerialLine &line, AtChannel &channel, const ModemTimings &timings,
                       Ports ports, TimeSource &time)
    : m_line(line), m_channel(channel), m_timings(timings), m_ports(std::move(ports)),
      m_portLimit(time), m_nextPort(time), m_limit(time)
{
    connect(&m_portLimit, &Timer::timeout, this, &PortSearch::giveUpPort);
    connect(&m_nextPort, &Timer::timeout, this, &PortSearch::next);
}

void PortSearch::start(const QString &imei, int baud, Finished finished)
{
    stop();
    m_imei = imei;
    m_baud = baud;
    m_finished = std::move(finished);
    m_limit.setRemainingTime(m_timings.searchMs);
    m_left = candidates();
    m_nextPort.start(0);
}

void PortSearch::stop()
{
    ++m_step;
    m_portLimit.stop();
    m_nextPort.stop();
    m_left.clear();
    m_finished = nullptr;
}

/// The ports worth asking, those first that were asked least.
QStringList PortSearch::candidates()
{
    const QStringList present = m_ports();
    QHash<QString, Known> known;
    QList<std::pair<int, QString>> rows;
    for (const QString &port : present) {
        const QString device = deviceOf(port);
        const quint64 node = SerialDevices::nodeOf(device);
        Known one = m_known.value(device);
        if (one.node != node)
            one = Known{node, 0, false};
        known.insert(device, one);
        if (!one.isOther && one.asked < maxSilentTries)
            rows.append({one.asked, port});
    }
    m_known = known;
    std::stable_sort(rows.begin(), rows.end(),
                     [](const auto &a, const auto &b) { return a.first < b.first; });
    QStringList ports;
    for (const auto &[asked, port] : std::as_const(rows).mid(0, maxPorts))
        ports.append(port);
    return ports;
}

void PortSearch::next()
{
    if (!isRunning())
        return;
    if (m_left.isEmpty() || m_limit.hasExpired())
        finish(QString());
    else
        look(m_left.takeFirst());
}

void PortSearch::look(const QString &port)
{
    m_port = port;
    m_device = deviceOf(port);
    if (SerialDevices::holderOf(m_device) || SerialDevices::openerOf(m_device) ||
        !m_line.open(port, m_baud)) {
        m_nextPort.start(0);
        return;
    }
    ++m_known[m_device].asked;
    m_portLimit.start(m_timings.searchPortMs);
    m_channel.synchronise(probeTries, [this, step = m_step](SyncOutcome outcome) {
        if (step != m_step)
            return;
        if (outcome == SyncOutcome::Answered)
            ask("AT+CGSN"_ba);
        else
            giveUpPort();
    });
}

void PortSearch::ask(const QByteArray &command)
{
    m_channel.run({command, m_timings.commandMs, {}},
                  [this, command, step = m_step](const AtAnswer &answer) {
                      if (step == m_step)
                          onAnswer(command, answer);
                  });
}

void PortSearch::onAnswer(const QByteArray &command, const AtAnswer &answer)
{
    const QString imei = answer.isOk() ? AnswerParsers::imei(answer.lines) : QString();
    if (!imei.isEmpty() && imei == m_imei) {
        finish(m_port);
    } else if (!imei.isEmpty()) {
        m_known[m_device].isOther = true;
        giveUpPort();
    } else if (answer.end == AtAnswer::End::Final && command == "AT+CGSN") {
        ask("AT+GSN"_ba);
    } else {
        giveUpPort();
    }
}

void PortSearch::giveUpPort()
{
    ++m_step;
    m_portLimit.stop();
    m_line.close();
    m_channel.abandon(LineError::NotOpen);
    m_nextPort.start(0);
}

void PortSearch::finish(const QString &port)
{
    const Finished finished = std::exchange(m_finished, nullptr);
    stop();
    if (!port.isEmpty())
        qCInfo(logDevice).noquote() << "the device has come back as" << port;
    finished(port);
}

} // namespace norvane
