#pragma once

#include "support/ReservedPort.h"

#include <QString>
#include <QTemporaryDir>

#include <memory>

namespace norvane {

/// Where clients of libpq come in: a socket in a folder of its own, or a port of 127.0.0.1.
class ProxyListener
{
public:
    enum class Kind { Socket, Loopback };

    explicit ProxyListener(Kind kind);
    ~ProxyListener();
    ProxyListener(const ProxyListener &) = delete;
    ProxyListener &operator=(const ProxyListener &) = delete;

    /// For libpq: host and port.
    QString address() const;
    /// To wait for clients; -1 while none is let in.
    int descriptor() const { return m_isRefusing ? -1 : m_descriptor; }
    /// A client that waits, as a socket that doesn't block; -1 if none does.
    int accept() const;
    /// New clients find nobody at the address, and are let in again.
    void setRefusing(bool refusing);

private:
    QString socketPath() const;
    QString hiddenPath() const { return m_folder.filePath(QStringLiteral("hidden")); }

    QTemporaryDir m_folder;
    const std::unique_ptr<ReservedPort> m_port; ///< of the loopback
    const int m_descriptor;
    bool m_isRefusing = false;
};

} // namespace norvane
