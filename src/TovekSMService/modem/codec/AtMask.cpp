#include "TovekSMService/modem/codec/AtMask.h"

#include <QRegularExpression>

namespace norvane {

using namespace Qt::StringLiterals;

namespace {

using Option = QRegularExpression::PatternOption;

/// The names of commands behind "+", "^" and the like, up to their "=", whose value is a secret.
const QRegularExpression &secretCommand()
{
    static const QRegularExpression pattern(u"(PIN2?|PUK2?|CLCK|CPWD)\\s*="_s,
                                            Option::CaseInsensitiveOption);
    return pattern;
}

/// "=" before a quoted value with a digit: a phone number, or a PIN behind a name that was cut off.
const QRegularExpression &quotedNumber()
{
    static const QRegularExpression pattern(u"=\\s*(?=\"[^\"]*[0-9])"_s);
    return pattern;
}

/// What a PDU, or a large piece of one, looks like. The number of a SIM has 20 digits at most.
const QRegularExpression &longHexadecimal()
{
    static const QRegularExpression pattern(u"[0-9A-Fa-f]{21}"_s);
    return pattern;
}

/// A PIN of 4 to 8 digits, or a piece of one, that is all of a line.
const QRegularExpression &bareDigits()
{
    static const QRegularExpression pattern(
        u"\\A(?=(?:[^0-9]*[0-9]){2})[\\s\"',;=]*(?:[0-9][\\s\"',;=]*){2,8}\\z"_s);
    return pattern;
}

/// Lines that come with a message (3GPP TS 27.005, 3.4 and 4; 27.007, 7.15). As the reader of
/// answers does, it takes blanks before the colon.
const QRegularExpression &messageLine()
{
    static const QRegularExpression pattern(u"\\A(\\+(?:CMT|CBM|CDS|CMGR|CMGL|CUSD))\\s*:"_s,
                                            Option::CaseInsensitiveOption);
    return pattern;
}

/// Results and states that say nothing but what the standards have.
const QRegularExpression &standardResult()
{
    static const QRegularExpression pattern(
        u"\\A(?:OK|ERROR|[04]|>\\s*|\\+CM[ES] ERROR: ?(?:[0-9]{1,3}|[A-Za-z ]+)|"
        "\\+CPIN: ?[A-Z -]+2?|\\+CMGS: ?[0-9]{1,3})\\z"_s);
    return pattern;
}

const QRegularExpression &tagged()
{
    static const QRegularExpression pattern(u"\\A([+^*$%#][A-Z]{2,12}):"_s);
    return pattern;
}

QByteArray nameAlone(const QRegularExpressionMatch &match)
{
    return match.captured(1).toLatin1() + ": " + AtMask::hidden;
}

} // namespace

QByteArray AtMask::masked(const QByteArray &line)
{
    const QString text = QString::fromLatin1(line);
    if (const auto message = messageLine().match(text); message.hasMatch())
        return nameAlone(message);
    for (const QRegularExpression &value : {secretCommand(), quotedNumber()})
        if (const auto match = value.match(text); match.hasMatch())
            return line.left(match.capturedEnd()).trimmed() + hidden;
    if (longHexadecimal().match(text).hasMatch() || bareDigits().match(text).hasMatch())
        return hidden;
    return line;
}

QByteArray AtMask::maskedStrictly(const QByteArray &line)
{
    const QString text = QString::fromLatin1(line);
    if (standardResult().match(text).hasMatch())
        return line;
    const auto match = tagged().match(text);
    return match.hasMatch() ? nameAlone(match) : QByteArray(hidden);
}

bool AtMask::carriesSecret(const QByteArray &command)
{
    return secretCommand().match(QString::fromLatin1(command)).hasMatch();
}

bool AtMask::announcesMessage(const QByteArray &line)
{
    return messageLine().match(QString::fromLatin1(line)).hasMatch();
}

} // namespace norvane
