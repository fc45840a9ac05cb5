#pragma once

#include <QDBusVirtualObject>

#include <atomic>

namespace norvane {

/// Plays the service that system services ask whether a caller may do something.
class PermissionAuthority : public QDBusVirtualObject
{
    Q_OBJECT

public:
    static constexpr const char *service = "org.freedesktop.PolicyKit1";
    static constexpr const char *path = "/org/freedesktop/PolicyKit1/Authority";

    PermissionAuthority();

    void setGranting(bool granting) { m_granting = granting; }

    bool handleMessage(const QDBusMessage &message, const QDBusConnection &connection) override;
    QString introspect(const QString &path) const override;

private:
    std::atomic<bool> m_granting = true; ///< asked for in a thread of its own
};

} // namespace norvane
