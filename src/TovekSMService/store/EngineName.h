#pragma once

#include <QString>

#include <optional>

namespace norvane {

/// Which engine of its user one is: the unnamed one, with which the console speaks, or a named one
/// beside it. Each has a folder, a name on the bus and a service unit of its own.
class EngineName
{
public:
    /// What a name may be, for whoever gave another one.
    static constexpr char rule[] = "1 to 32 of a-z, 0-9 and _, a letter first";

    /// The unnamed engine.
    EngineName() = default;
    /// Everything that the rule allows can stand in a bus name, in a file name and behind the "@"
    /// of a service unit as it is, so that no two names share any of these.
    /// @return nothing for a text that the rule doesn't allow
    static std::optional<EngineName> parse(const QString &text);

    bool isNamed() const { return !m_text.isEmpty(); }
    /// Empty for the unnamed engine.
    const QString &text() const { return m_text; }
    /// The name on the session bus, as "com.tovek.SMService.second".
    QString busName() const;

    bool operator==(const EngineName &) const = default;

private:
    explicit EngineName(const QString &text) : m_text(text) {}

    QString m_text;
};

} // namespace norvane
