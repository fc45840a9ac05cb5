#include "NorvaneSMS/console/PoolingFixture.h"

#include "NorvaneSMS/queue/Fixture.h"
#include "foundation/ui/FatalReport.h"
#include "support/WindowMessages.h"

#include <QDir>
#include <QFileInfo>
#include <QMetaObject>

#include <utility>

namespace norvane {

using namespace Qt::StringLiterals;

Pooling::Pooling() : m_previous(FatalReport::setTerminate([this](int code) { exitCode = code; }))
{
    storeQueueFolder(queue.path());
}

Pooling::~Pooling()
{
    FatalReport::setTerminate(m_previous);
}

void Pooling::tick()
{
    timers.tick();
    processWindowMessages();
    QCoreApplication::sendPostedEvents();
}

void Pooling::drop(const QString &name)
{
    writeFile(path(name), QByteArray("912345678").leftJustified(25) + "05032009140709" +
                              name.toUtf8().leftJustified(160));
}

void Pooling::dropMany(int count)
{
    for (int number = 0; number < count; ++number)
        drop(u"sms."_s + QString::number(number));
}

bool Pooling::isThere(const QString &name) const
{
    return QFileInfo::exists(path(name));
}

QStringList Pooling::names() const
{
    return QDir(queue.path())
        .entryList(QDir::AllEntries | QDir::System | QDir::NoDotAndDotDot, QDir::Name);
}

QStringList Pooling::takeMessages()
{
    QStringList taken;
    const QStringList calls = takeCalls();
    for (const QString &call : calls) {
        if (call.startsWith(u"AddSMS(912345678|"_s))
            taken.append(call.section(u'|', 1, 1));
    }
    return taken;
}

qsizetype Pooling::messages() const
{
    return script.calls.filter(u"AddSMS("_s).size();
}

void Pooling::whenEventsAreProcessed(std::function<void()> action)
{
    script.inAddSMS = [this, action = std::move(action)] {
        QMetaObject::invokeMethod(qApp, action, Qt::QueuedConnection);
        script.inAddSMS = nullptr;
    };
}

} // namespace norvane
