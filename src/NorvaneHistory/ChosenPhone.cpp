#include "NorvaneHistory/ChosenPhone.h"

#include "NorvaneHistory/DetailsPane.h"
#include "NorvaneHistory/HistorySource.h"
#include "NorvaneHistory/MessageActions.h"

namespace norvane {

ChosenPhone::ChosenPhone(HistorySource &source, MessageActions &actions, DetailsPane &details,
                         QObject *parent)
    : QObject(parent), m_source(source), m_details(details)
{
    connect(&details, &DetailsPane::answerRequested, this,
            [this, &actions] { actions.answer(m_phone); });
    connect(&details, &DetailsPane::optOutRequested, this,
            [this, &actions](bool isOptedOut) { actions.setOptedOut(m_phone, isOptedOut); });
    connect(&actions, &MessageActions::optOutsChanged, this, &ChosenPhone::refresh);
}

void ChosenPhone::choose(qint64 message, const QString &phone)
{
    m_message = message;
    m_phone = phone;
    m_details.setOptedOut(std::nullopt);
    refresh();
}

void ChosenPhone::chooseNone()
{
    m_message = 0;
    m_phone.clear();
}

void ChosenPhone::refresh()
{
    if (m_message == 0 || m_phone.trimmed().isEmpty())
        return;
    m_source.fetchOptedOut(this, m_phone,
                           [this, message = m_message](const SourceResult<bool> &isOptedOut) {
                               if (isOptedOut && message == m_message)
                                   m_details.setOptedOut(*isOptedOut);
                           });
}

} // namespace norvane
