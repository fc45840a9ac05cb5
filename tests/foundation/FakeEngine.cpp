#include <QCoreApplication>
#include <QDBusConnection>
#include <QDir>

#include <cstdio>

#include <unistd.h>

using namespace Qt::StringLiterals;

// Takes the engine's name on the session bus, tells on its error output how it was started, and
// ends with the bus.
int main(int argc, char **argv)
{
    QCoreApplication application(argc, argv);
    std::fprintf(stderr, "arguments %d\nfolder %s\nsession %d\n", argc - 1,
                 qPrintable(QDir::currentPath()), static_cast<int>(::getsid(0)));
    std::fflush(stderr);
    QDBusConnection bus = QDBusConnection::sessionBus();
    bus.connect(QString(), u"/org/freedesktop/DBus/Local"_s, u"org.freedesktop.DBus.Local"_s,
                u"Disconnected"_s, &application, SLOT(quit()));
    if (!bus.registerService(u"com.tovek.SMService"_s))
        return 1;
    return QCoreApplication::exec();
}
