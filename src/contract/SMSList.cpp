#include "contract/SMSList.h"

#include "common/FailureNumbers.h"

#include <limits>

bool SMSList::Add(const QString &phone, const QString &message)
{
    if (m_entries.size() >= std::numeric_limits<qint16>::max())
        Failure::raise(Failure::Overflow, QStringLiteral("SMSList.Add"));
    m_entries.append({phone, message});
    return true;
}

QString SMSList::Message(qint16 index) const
{
    return at(index).message;
}

QString SMSList::Phone(qint16 index) const
{
    return at(index).phone;
}

const SMSList::Entry &SMSList::at(qint16 index) const
{
    if (index < 0 || index >= m_entries.size())
        Failure::raise(Failure::SubscriptOutOfRange, QStringLiteral("SMSList"));
    return m_entries.at(index);
}
