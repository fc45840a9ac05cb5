#include "TovekSMService/log/EngineLog.h"

#include "TovekSMService/log/OneLine.h"
#include "TovekSMService/platform/JournalStream.h"
#include "TovekSMService/platform/LogOutput.h"

#include <QDateTime>
#include <QLoggingCategory>

#include <cstdio>
#include <mutex>

namespace norvane {

using namespace Qt::StringLiterals;

namespace {

struct TypeLabels
{
    EngineLog::Level level;
    int priority; ///< of the system's log
    const char *word;
};

TypeLabels labelsOf(QtMsgType type)
{
    switch (type) {
    case QtDebugMsg:
        return {EngineLog::Level::Debug, 7, "debug"};
    case QtInfoMsg:
        return {EngineLog::Level::Info, 6, "info"};
    case QtWarningMsg:
        return {EngineLog::Level::Warning, 4, "warning"};
    case QtCriticalMsg:
        return {EngineLog::Level::Error, 3, "error"};
    case QtFatalMsg:
        break;
    }
    return {EngineLog::Level::Error, 2, "fatal"};
}

/// "engine.host: "; empty for what is logged without a category.
QString labelOf(const char *category)
{
    const QLatin1String name(category);
    return name.isEmpty() || name == "default"_L1 ? QString() : name + u": "_s;
}

EngineLog::Level g_level = EngineLog::Level::Info;
bool g_toJournal = false;
/// Never destroyed: what is logged while the process ends has its place too.
LogOutput *g_output = nullptr;
std::mutex g_writing;

void writeMessage(QtMsgType type, const QMessageLogContext &context, const QString &message)
{
    if (!EngineLog::isLogged(type, context.category, g_level))
        return;
    const QString line = g_toJournal ? EngineLog::journalLine(type, context.category, message)
                                     : EngineLog::plainLine(type, context.category, message,
                                                            QDateTime::currentDateTime().toString(
                                                                u"yyyy-MM-dd HH:mm:ss.zzz"_s));
    const std::scoped_lock writing(g_writing);
    g_output->write(line.toUtf8() + '\n');
}

} // namespace

std::optional<EngineLog::Level> EngineLog::levelNamed(const QString &name)
{
    if (name == "error"_L1)
        return Level::Error;
    if (name == "warning"_L1)
        return Level::Warning;
    if (name == "info"_L1)
        return Level::Info;
    if (name == "debug"_L1)
        return Level::Debug;
    return std::nullopt;
}

bool EngineLog::isLogged(QtMsgType type, const char *category, Level level)
{
    if (type == QtDebugMsg && !QByteArrayView(category).startsWith("engine."))
        return false;
    return labelsOf(type).level <= level;
}

QString EngineLog::journalLine(QtMsgType type, const char *category, const QString &message)
{
    return u"<%1>"_s.arg(labelsOf(type).priority) + labelOf(category) + onOneLine(message);
}

QString EngineLog::plainLine(QtMsgType type, const char *category, const QString &message,
                             const QString &time)
{
    return time + u' ' + QLatin1String(labelsOf(type).word) + u' ' + labelOf(category) +
           onOneLine(message);
}

void EngineLog::setLevel(Level level)
{
    g_level = level;
    QLoggingCategory::setFilterRules(level == Level::Debug ? u"engine.*.debug=true"_s : QString());
}

void EngineLog::install(Level level, const QString &file)
{
    setLevel(level);
    if (!g_output)
        g_output = new LogOutput(::fileno(stderr), file, maxFileSize);
    g_toJournal = standardErrorIsJournal();
    qInstallMessageHandler(writeMessage);
}

} // namespace norvane
