#include "NorvaneHistory/HistoryTexts.h"

#include "contract/ErrorCodes.h"
#include "foundation/ErrorText.h"
#include "foundation/Globals.h"
#include "foundation/TextId.h"

#include <QDateTime>

#include <algorithm>

namespace norvane {

using namespace Qt::StringLiterals;

namespace {

constexpr auto storedForm = "yyyy-MM-ddTHH:mm:ss"_L1;

struct StatusWord
{
    qint32 status;
    qint32 textId;
};

// 3GPP TS 23.040, 9.2.3.15: temporary errors after which the service centre goes on, permanent
// ones where it makes no more attempts, and temporary ones after which it makes none.
constexpr StatusWord statusWords[] = {
    {0x20, TextId::StatusCongestion},     {0x21, TextId::StatusBusy},
    {0x22, TextId::StatusNoResponse},     {0x23, TextId::StatusRejected},
    {0x24, TextId::StatusNoQuality},      {0x25, TextId::StatusProcedureError},
    {0x40, TextId::StatusProcedureError}, {0x41, TextId::StatusIncompatible},
    {0x42, TextId::StatusRejected},       {0x43, TextId::StatusNotObtainable},
    {0x44, TextId::StatusNoQuality},      {0x45, TextId::StatusNoInterworking},
    {0x46, TextId::StatusExpired},        {0x47, TextId::StatusDeleted},
    {0x48, TextId::StatusDeleted},        {0x49, TextId::StatusDoesNotExist},
    {0x60, TextId::StatusCongestion},     {0x61, TextId::StatusBusy},
    {0x62, TextId::StatusNoResponse},     {0x63, TextId::StatusRejected},
    {0x64, TextId::StatusNoQuality},      {0x65, TextId::StatusProcedureError},
};

qint32 stepTextId(const HistoryEvent &event)
{
    switch (event.step) {
    case HistoryStep::Queued:
        return TextId::StepQueued;
    case HistoryStep::Attempt:
        return TextId::StepAttempt;
    case HistoryStep::Part:
        return TextId::StepPart;
    case HistoryStep::Sent:
        return TextId::StepSent;
    case HistoryStep::Failed:
        return event.code == ErrorCode::noRespond ? TextId::StateInDoubt : TextId::StepFailed;
    case HistoryStep::Delivered:
        return TextId::StepDelivered;
    case HistoryStep::Refused:
        return TextId::StepRefused;
    case HistoryStep::Pending:
        return TextId::StepPending;
    case HistoryStep::Unknown:
        return TextId::StepUnknown;
    }
    return TextId::StepUnknown;
}

/// Characters that turn the order of what follows them (Unicode Bidirectional Algorithm).
bool isEmbedding(QChar unit)
{
    return (unit >= u'\u202A' && unit <= u'\u202E') || (unit >= u'\u2066' && unit <= u'\u2069');
}

bool isLeftToRight(QChar unit)
{
    switch (unit.direction()) {
    case QChar::DirR:
    case QChar::DirAL:
    case QChar::DirAN:
        return false;
    default:
        return !unit.isSurrogate();
    }
}

bool breaksLine(QChar unit)
{
    return unit.category() == QChar::Other_Control || unit == QChar::LineSeparator ||
           unit == QChar::ParagraphSeparator;
}

QString duration(quint32 seconds)
{
    constexpr quint32 minute = 60;
    constexpr quint32 hour = 60 * minute;
    if (seconds < minute)
        return u"%1 s"_s.arg(seconds);
    if (seconds < hour)
        return u"%1 min"_s.arg(seconds / minute);
    return u"%1 h"_s.arg(seconds / hour);
}

} // namespace

QString HistoryTexts::stateName(MessageState state)
{
    switch (state) {
    case MessageState::Waiting:
        return GS(TextId::StateWaiting);
    case MessageState::Sent:
        return GS(TextId::StateSent);
    case MessageState::Delivered:
        return GS(TextId::StateDelivered);
    case MessageState::Refused:
        return GS(TextId::StateRefused);
    case MessageState::Failed:
        break;
    case MessageState::InDoubt:
        return GS(TextId::StateInDoubt);
    }
    return GS(TextId::StateFailed);
}

QString HistoryTexts::moment(const QString &stored)
{
    const QDateTime moment = QDateTime::fromString(stored, storedForm);
    return moment.isValid() ? moment.toString(u"dd/MM/yyyy HH:mm:ss"_s) : oneLine(stored);
}

QString HistoryTexts::day(const QString &stored)
{
    const QDate day = QDate::fromString(stored, u"yyyy-MM-dd"_s);
    return day.isValid() ? day.toString(u"dd/MM/yyyy"_s) : oneLine(stored);
}

QString HistoryTexts::stepName(const HistoryEvent &event)
{
    const QString name = GS(stepTextId(event));
    return event.part > 0 ? GS(TextId::StepOfPart, name, event.part) : name;
}

QString HistoryTexts::stepDetail(const HistoryEvent &event)
{
    switch (event.step) {
    case HistoryStep::Attempt:
    case HistoryStep::Failed:
        return errorText(event.code);
    case HistoryStep::Refused:
    case HistoryStep::Pending:
        return networkStatus(event.code);
    default:
        return event.reference.isEmpty() ? QString()
                                         : GS(TextId::StepReference, oneLine(event.reference));
    }
}

QString HistoryTexts::errorText(qint32 code)
{
    QString word = GetErrorText(code);
    if (word.endsWith(u'.'))
        word.chop(1); // a sentence, and the number belongs to it
    return word.isEmpty() ? QString::number(code) : u"%1 (%2)"_s.arg(word).arg(code);
}

QString HistoryTexts::networkStatus(qint32 status)
{
    if (status < 0)
        return GS(TextId::StatusUnknown);
    const QString number = u"0x"_s + QString::number(status, 16).toUpper().rightJustified(2, u'0');
    for (const StatusWord &word : statusWords) {
        if (word.status == status)
            return u"%1 (%2)"_s.arg(GS(word.textId), number);
    }
    return number;
}

QString HistoryTexts::reason(const FailureReason &reason)
{
    return reason.state == MessageState::Refused ? networkStatus(reason.code)
                                                 : errorText(reason.code);
}

QString HistoryTexts::delay(const QList<DeliveryDelay> &delays, qsizetype at)
{
    const quint32 upTo = delays.at(at).upTo;
    if (upTo > 0)
        return GS(TextId::DelayUpTo, duration(upTo));
    return GS(TextId::DelayMoreThan, duration(at > 0 ? delays.at(at - 1).upTo : 0));
}

QString HistoryTexts::oneLine(const QString &text)
{
    constexpr qsizetype maxShown = 400;
    QString line = text.left(maxShown);
    std::replace_if(line.begin(), line.end(), breaksLine, u' ');
    return line;
}

QString HistoryTexts::phone(const QString &text)
{
    constexpr QChar firstStrongIsolate = u'\u2068';
    constexpr QChar popIsolate = u'\u2069';
    QString line = oneLine(text);
    line.removeIf(isEmbedding); // an isolate could be ended by one of them
    if (std::all_of(line.cbegin(), line.cend(), isLeftToRight))
        return line;
    return firstStrongIsolate + line + popIsolate;
}

} // namespace norvane
