#pragma once

#include <QString>

#include <cerrno>

#include <unistd.h>

namespace norvane {

/// An open file, closed with this object.
class Descriptor
{
public:
    explicit Descriptor(int value) : m_value(value) {}
    Descriptor(const Descriptor &) = delete;
    Descriptor &operator=(const Descriptor &) = delete;
    ~Descriptor() { close(); }

    int value() const { return m_value; }
    bool isOpen() const { return m_value >= 0; }
    /// @return 0, or the error
    int close()
    {
        const int error = isOpen() && ::close(m_value) != 0 ? errno : 0;
        m_value = -1;
        return error;
    }

private:
    int m_value;
};

/// Whether `path` has a form that can be passed to the system.
inline bool isUsablePath(const QString &path)
{
    return !path.isEmpty() && !path.contains(QChar::Null);
}

} // namespace norvane
