// Prints what a screen reader meets in a program's windows: a line of role and name for each
// control that shows, and whether it is disabled, asked over the bus of the assistive technologies.
//   accessible_window PROGRAM [--cells]   with the cells of its tables

#include <QCoreApplication>
#include <QDBusArgument>
#include <QDBusConnection>
#include <QDBusInterface>
#include <QDBusMessage>
#include <QDBusMetaType>
#include <QDBusObjectPath>
#include <QDBusReply>
#include <QTextStream>

using namespace Qt::StringLiterals;

namespace norvane {

namespace {

const QString accessibleInterface = u"org.a11y.atspi.Accessible"_s;

/// Bits of what the bus calls the state of an object.
constexpr quint64 enabled = 1U << 8U;
constexpr quint64 showing = 1U << 25U;

/// An object on the bus of the assistive technologies.
struct Accessible
{
    QString service;
    QDBusObjectPath path;
};

QDBusArgument &operator<<(QDBusArgument &argument, const Accessible &object)
{
    argument.beginStructure();
    argument << object.service << object.path;
    argument.endStructure();
    return argument;
}

const QDBusArgument &operator>>(const QDBusArgument &argument, Accessible &object)
{
    argument.beginStructure();
    argument >> object.service >> object.path;
    argument.endStructure();
    return argument;
}

QDBusConnection assistiveBus()
{
    QDBusInterface launcher(u"org.a11y.Bus"_s, u"/org/a11y/bus"_s, u"org.a11y.Bus"_s);
    const QDBusReply<QString> address = launcher.call(u"GetAddress"_s);
    return QDBusConnection::connectToBus(address.value(), u"assistive"_s);
}

class Walker
{
public:
    enum class Tables { Closed, Open };

    Walker(QDBusConnection bus, Tables tables) : m_bus(std::move(bus))
    {
        if (tables == Tables::Open)
            m_holders << u"layered pane"_s << u"page tab list"_s << u"splitter"_s << u"table"_s;
    }

    QList<Accessible> children(const Accessible &object) const
    {
        const QDBusReply<QList<Accessible>> reply =
            call(object, accessibleInterface, u"GetChildren"_s);
        return reply.value();
    }
    QString name(const Accessible &object) const
    {
        const QDBusReply<QDBusVariant> reply = call(object, u"org.freedesktop.DBus.Properties"_s,
                                                    u"Get"_s, {accessibleInterface, u"Name"_s});
        return reply.value().variant().toString();
    }
    QString role(const Accessible &object) const
    {
        const QDBusReply<QString> reply = call(object, accessibleInterface, u"GetRoleName"_s);
        return reply.value();
    }
    bool is(const Accessible &object, quint64 state) const
    {
        const QDBusReply<QList<uint>> reply = call(object, accessibleInterface, u"GetState"_s);
        const QList<uint> halves = reply.value();
        return !halves.isEmpty() && (halves.first() & state) != 0;
    }

    /// One line for each control below `object`; those that hold others are gone into.
    void print(const Accessible &object, QTextStream &out) const
    {
        for (const Accessible &child : children(object)) {
            if (!is(child, showing))
                continue;
            const QString role = this->role(child);
            const QString name = this->name(child);
            if (!name.isEmpty() || role != u"filler"_s)
                out << role << ": " << (name.isEmpty() ? u"-"_s : name)
                    << (is(child, enabled) ? "" : " (disabled)") << '\n';
            if (m_holders.contains(role))
                print(child, out);
        }
    }

private:
    QDBusMessage call(const Accessible &object, const QString &interface, const QString &method,
                      const QVariantList &arguments = {}) const
    {
        QDBusMessage message =
            QDBusMessage::createMethodCall(object.service, object.path.path(), interface, method);
        message.setArguments(arguments);
        return m_bus.call(message);
    }

    QDBusConnection m_bus;
    QStringList m_holders = {u"frame"_s, u"dialog"_s, u"filler"_s, u"panel"_s};
};

} // namespace

} // namespace norvane

using namespace norvane;

Q_DECLARE_METATYPE(norvane::Accessible)

int main(int argc, char **argv)
{
    const QCoreApplication application(argc, argv);
    const QStringList arguments = QCoreApplication::arguments();
    if (arguments.size() < 2)
        return EXIT_FAILURE;
    qDBusRegisterMetaType<Accessible>();
    qDBusRegisterMetaType<QList<Accessible>>();

    const Walker walker(assistiveBus(), arguments.value(2) == u"--cells"_s
                                            ? Walker::Tables::Open
                                            : Walker::Tables::Closed);
    const Accessible desktop{u"org.a11y.atspi.Registry"_s,
                             QDBusObjectPath(u"/org/a11y/atspi/accessible/root"_s)};
    QTextStream out(stdout);
    for (const Accessible &program : walker.children(desktop)) {
        if (walker.name(program) == arguments.at(1))
            walker.print(program, out);
    }
    return EXIT_SUCCESS;
}
