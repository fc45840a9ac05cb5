#pragma once

#include <QByteArray>
#include <QString>
#include <QStringList>

#include <optional>

namespace norvane {

/// The text of a settings file: "[section]" and "key=value" lines in UTF-8. What it writes, the
/// toolkit's ini reader reads too. Comments, blank lines and everything that isn't changed stay as
/// they are, for the file may be edited by hand.
///
/// An unquoted value is taken letter for letter, backslashes and commas included; between quotes a
/// backslash opens an escape. A value that begins with "@" is written with two of them.
class SettingsText
{
public:
    SettingsText() = default;

    /// @return nothing if `bytes` is no text of that form
    static std::optional<SettingsText> parse(const QByteArray &bytes);

    /// The value of the last such key, nothing if there is none.
    std::optional<QString> value(const QString &section, const QString &key) const;

    /// Changes the last such key, or adds it at the end of its section.
    void setValue(const QString &section, const QString &key, const QString &value);

    QByteArray bytes() const;

private:
    struct Place
    {
        qsizetype line = -1;     ///< of the key, -1 if it isn't there
        qsizetype lastLine = -1; ///< last line of the section that isn't blank, -1 without section
    };
    Place find(const QString &section, const QString &key) const;

    QStringList m_lines;
};

} // namespace norvane
