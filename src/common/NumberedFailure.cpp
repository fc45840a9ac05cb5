#include "common/NumberedFailure.h"

namespace norvane {

using namespace Qt::StringLiterals;

NumberedFailure::NumberedFailure(qint32 number, const QString &source, const QString &description)
    : m_number(number), m_source(source), m_description(description),
      m_what((source + u": "_s + shown()).toUtf8())
{}

QString NumberedFailure::shown() const
{
    return m_description + u" - "_s + QString::number(m_number);
}

const char *NumberedFailure::what() const noexcept
{
    return m_what.constData();
}

} // namespace norvane
