#include "contract/SMSList.h"

#include "common/FailureNumbers.h"

#include <limits>

namespace norvane {

using namespace Qt::StringLiterals;

bool SMSList::Add(const QString &phone, const QString &message)
{
    if (m_entries.size() >= std::numeric_limits<qint16>::max())
        Failure::raise(Failure::Overflow, u"SMSList.Add"_s);
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
        Failure::raise(Failure::SubscriptOutOfRange, u"SMSList"_s);
    return m_entries.at(index);
}

} // namespace norvane
