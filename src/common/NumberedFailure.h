#pragma once

#include <QString>

#include <exception>

namespace norvane {

/// A failure that carries a number, the source that raised it and a description for the operator.
/// Code branches on the number, never on the text.
class NumberedFailure : public std::exception
{
public:
    NumberedFailure(qint32 number, const QString &source, const QString &description);

    qint32 number() const { return m_number; }
    const QString &source() const { return m_source; }
    const QString &description() const { return m_description; }

    /// The description, " - " and the number: the form in which message boxes show a failure.
    QString shown() const;

    const char *what() const noexcept override;

private:
    qint32 m_number;
    QString m_source;
    QString m_description;
    QByteArray m_what;
};

} // namespace norvane
