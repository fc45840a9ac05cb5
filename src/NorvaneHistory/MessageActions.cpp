#include "NorvaneHistory/MessageActions.h"

#include "NorvaneHistory/ComposeSheet.h"
#include "NorvaneHistory/HistoryTexts.h"
#include "foundation/Globals.h"
#include "foundation/MessageBoxes.h"
#include "foundation/Normalisation.h"
#include "foundation/TextId.h"

#include <QWidget>

namespace norvane {

namespace {

bool isConfirmed(const QString &question,
                 MessageBoxes::Buttons buttons = MessageBoxes::Buttons::YesNo)
{
    return messageBoxes().show(question, MessageBoxes::Icon::Question, buttons, boxTitle()) ==
           MessageBoxes::Answer::Yes;
}

} // namespace

MessageActions::MessageActions(HistorySource &source, QWidget *window)
    : QObject(window), m_source(source), m_window(window)
{}

bool MessageActions::canSendAgain(MessageState state)
{
    return state == MessageState::Failed || state == MessageState::InDoubt ||
           state == MessageState::Refused;
}

void MessageActions::sendAgain(const HistoryRow &message)
{
    if (!canSendAgain(message.state))
        return;
    const QString phone = message.phone;
    const QString text = message.text;
    const QString shown = HistoryTexts::phone(phone);
    const bool isAgreed = message.state == MessageState::InDoubt
                              ? isConfirmed(GS(TextId::SendDoubtfulQuestion, shown),
                                            MessageBoxes::Buttons::YesNoDefaultNo)
                              : isConfirmed(GS(TextId::SendAgainQuestion, shown));
    if (isAgreed)
        send(phone, text, [] {});
}

void MessageActions::answer(const QString &phone)
{
    compose(phone, {});
}

void MessageActions::compose(const QString &phone, const QString &text)
{
    ComposeSheet sheet(phone, text, m_window);
    while (sheet.exec() == QDialog::Accepted) {
        const QString receiver = sheet.phone();
        const QString written = sheet.text();
        if (!isConfirmed(GS(TextId::SendQuestion, HistoryTexts::phone(receiver))))
            continue; // back to what was written
        send(receiver, NormalizeSMSText(false, written),
             [this, receiver, written] { compose(receiver, written); });
        return;
    }
}

void MessageActions::setOptedOut(const QString &phone, bool isOptedOut)
{
    const QString named = phone;
    const qint32 question = isOptedOut ? TextId::OptOutQuestion : TextId::OptInQuestion;
    if (!isConfirmed(GS(question, HistoryTexts::phone(named))))
        return;
    m_source.setOptedOut(this, named, isOptedOut, [this](const SourceResult<bool> &changed) {
        if (!changed)
            showFailure(changed.error());
        else
            Q_EMIT optOutsChanged();
    });
}

void MessageActions::send(const QString &phone, const QString &text,
                          const std::function<void()> &onFailure)
{
    m_source.send(this, phone, text, [this, onFailure](const SourceResult<Sending> &sending) {
        if (!sending) {
            showFailure(sending.error());
            onFailure();
        } else if (*sending == Sending::NotStarted) {
            messageBoxes().show(GS(TextId::SendingNotStarted), MessageBoxes::Icon::Exclamation,
                                MessageBoxes::Buttons::Ok, boxTitle());
        }
    });
}

void MessageActions::showFailure(const SourceFailure &failure)
{
    messageBoxes().show(failure.text, MessageBoxes::Icon::Critical, MessageBoxes::Buttons::Ok,
                        boxTitle());
}

} // namespace norvane
