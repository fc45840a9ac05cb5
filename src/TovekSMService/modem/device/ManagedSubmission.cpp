#include "TovekSMService/modem/device/ManagedSubmission.h"

#include "TovekSMService/modem/device/ReportRefusals.h"
#include "TovekSMService/modem/manager/ManagerFailures.h"
#include "TovekSMService/modem/manager/ManagerNames.h"

#include <QDBusArgument>
#include <QDBusVariant>

#include <utility>

namespace norvane {

using namespace Qt::StringLiterals;

namespace {

/// A string on the bus ends with its first NUL.
QString withoutNul(QString text)
{
    return text.replace(QChar::Null, QChar(u' '));
}

/// (kind, value); the kind is 1 for one that is relative, in minutes.
QVariant validityOf(int minutes)
{
    constexpr uint relative = 1;
    QDBusArgument validity;
    validity.beginStructure();
    validity << relative << QDBusVariant(static_cast<uint>(minutes));
    validity.endStructure();
    return QVariant::fromValue(validity);
}

} // namespace

void ManagedSubmission::start(ManagerBus &bus, const QString &device, const SubmitPart &part,
                              Done done)
{
    m_bus = &bus;
    m_device = device;
    m_message = part.whole.value_or(WholeMessage());
    m_asksForReport = part.asksForReport;
    m_isReportRefused = false;
    m_done = std::move(done);
    create();
}

void ManagedSubmission::create()
{
    m_stage = Stage::Creating;
    m_path.clear();
    QVariantMap properties = {{u"number"_s, m_message.phone},
                              {u"text"_s, withoutNul(m_message.text)},
                              {u"delivery-report-request"_s, m_asksForReport}};
    if (m_message.validityMinutes > 0)
        properties.insert(u"validity"_s, validityOf(m_message.validityMinutes));
    m_bus->call(m_device, Manager::messaging, u"Create"_s, {properties}, m_timings.slowCommandMs,
                [this](const QDBusMessage &reply) { onCreated(reply); });
}

void ManagedSubmission::onCreated(const QDBusMessage &reply)
{
    if (reply.type() == QDBusMessage::ErrorMessage) {
        fail(ManagerFailures::ofMessage(reply, ManagerFailures::Stage::Creating, m_message.parts));
        return;
    }
    m_stage = Stage::Sending;
    m_path = reply.arguments().value(0).value<QDBusObjectPath>().path();
    m_bus->call(m_path, Manager::sms, u"Send"_s, {}, m_timings.sendMs * m_message.parts,
                [this](const QDBusMessage &answer) { onSent(answer); });
}

void ManagedSubmission::onSent(const QDBusMessage &reply)
{
    if (reply.type() == QDBusMessage::ErrorMessage) {
        const SendFailure failure =
            ManagerFailures::ofMessage(reply, ManagerFailures::Stage::Sending, m_message.parts);
        deleteMessage();
        if (!sendWithoutReport(failure))
            fail(failure);
        return;
    }
    m_stage = Stage::Taken;
    m_bus->call(m_path, Manager::properties, u"Get"_s,
                {QString(Manager::sms), u"MessageReference"_s}, m_timings.commandMs,
                [this](const QDBusMessage &answer) { onReference(answer); });
}

/// An error means that the message was not taken. Where it may be the request for a report that was
/// refused, the message goes again without it.
bool ManagedSubmission::sendWithoutReport(const SendFailure &failure)
{
    if (!m_asksForReport || failure.mayBeDelivered || !ReportRefusals::mayBeRefusal(failure))
        return false;
    m_asksForReport = false;
    m_isReportRefused = true;
    create();
    return true;
}

void ManagedSubmission::onReference(const QDBusMessage &reply)
{
    bool isNumber = false;
    const uint reference =
        reply.arguments().value(0).value<QDBusVariant>().variant().toUInt(&isNumber);
    deleteMessage();
    finish({true, isNumber ? static_cast<int>(reference) : -1, {}, m_isReportRefused});
}

/// The manager would keep it until it ends.
void ManagedSubmission::deleteMessage()
{
    m_bus->call(m_device, Manager::messaging, u"Delete"_s,
                {QVariant::fromValue(QDBusObjectPath(m_path))}, m_timings.slowCommandMs,
                [](const QDBusMessage &) {});
}

void ManagedSubmission::stop(const QString &text)
{
    switch (m_stage) {
    case Stage::Idle:
        return;
    case Stage::Creating:
        fail({SendProblem::LineBrokenBefore, -1, text, failureRule(SendProblem::LineBrokenBefore),
              false});
        return;
    case Stage::Sending:
        fail({SendProblem::LineBrokenAfter, -1, text, failureRule(SendProblem::LineBrokenAfter),
              true});
        return;
    case Stage::Taken:
        finish({true, -1, {}, m_isReportRefused});
        return;
    }
}

void ManagedSubmission::finish(const Outcome &outcome)
{
    m_stage = Stage::Idle;
    std::exchange(m_done, nullptr)(outcome);
}

void ManagedSubmission::fail(const SendFailure &failure)
{
    finish({false, -1, failure, m_isReportRefused});
}

} // namespace norvane
