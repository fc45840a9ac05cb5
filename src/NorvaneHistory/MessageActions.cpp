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

bool isConfirmed(const QString &question)
{
    return messageBoxes().show(question, MessageBoxes::Icon::Question, MessageBoxes::Buttons::YesNo,
                               boxTitle()) == MessageBoxes::Answer::Yes;
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
    const qint32 question = message.state == MessageState::InDoubt ? TextId::SendDoubtfulQuestion
                                                                   : TextId::SendAgainQuestion;
    if (isConfirmed(GS(question, HistoryTexts::oneLine(message.phone))))
        send(message.phone, message.text);
}

void MessageActions::answer(const QString &phone)
{
    ComposeSheet sheet(phone, m_window);
    while (sheet.exec() == QDialog::Accepted) {
        if (!isConfirmed(GS(TextId::SendQuestion, HistoryTexts::oneLine(sheet.phone()))))
            continue; // back to what was written
        send(sheet.phone(), NormalizeSMSText(false, sheet.text()));
        return;
    }
}

void MessageActions::setOptedOut(const QString &phone, bool isOptedOut)
{
    const qint32 question = isOptedOut ? TextId::OptOutQuestion : TextId::OptInQuestion;
    if (!isConfirmed(GS(question, HistoryTexts::oneLine(phone))))
        return;
    m_source.setOptedOut(this, phone, isOptedOut, [this](const SourceResult<bool> &changed) {
        if (!changed)
            showFailure(changed.error());
        else
            Q_EMIT optOutsChanged();
    });
}

void MessageActions::send(const QString &phone, const QString &text)
{
    m_source.send(this, phone, text, [this](const SourceResult<bool> &sent) {
        if (!sent)
            showFailure(sent.error());
    });
}

void MessageActions::showFailure(const SourceFailure &failure)
{
    messageBoxes().show(failure.text, MessageBoxes::Icon::Critical, MessageBoxes::Buttons::Ok,
                        boxTitle());
}

} // namespace norvane
