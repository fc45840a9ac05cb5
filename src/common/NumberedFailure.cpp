#include "common/NumberedFailure.h"

NumberedFailure::NumberedFailure(qint32 number, const QString &source, const QString &description)
    : m_number(number), m_source(source), m_description(description),
      m_what((source + QStringLiteral(": ") + shown()).toUtf8())
{}

QString NumberedFailure::shown() const
{
    return m_description + QStringLiteral(" - ") + QString::number(m_number);
}

const char *NumberedFailure::what() const noexcept
{
    return m_what.constData();
}
