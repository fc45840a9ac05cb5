#include "TovekSMService/modem/at/AtTrace.h"

#include "TovekSMService/log/Categories.h"
#include "TovekSMService/modem/codec/AtMask.h"

#include <algorithm>

namespace norvane {

namespace {

void logLine(const char *direction, const QByteArray &line)
{
    qCDebug(logAt).noquote() << direction << line.trimmed();
}

} // namespace

void AtTrace::sent(const QByteArray &command, int owed)
{
    if (!logAt().isDebugEnabled())
        return;
    // One more than is owed, in case that an answer is still to come which nobody counts any more.
    if (AtMask::carriesSecret(command))
        maskStrictlyFor(owed + 1);
    logLine("->", AtMask::masked(command));
}

void AtTrace::sentPayload(int owed)
{
    if (!logAt().isDebugEnabled())
        return;
    maskStrictlyFor(owed);
    logLine("->", AtMask::hidden);
}

void AtTrace::sentEscape()
{
    logLine("->", "ESC");
}

void AtTrace::received(const AtToken &token, int owed)
{
    if (!logAt().isDebugEnabled())
        return;
    logLine("<-",
            m_strictFinals > 0 ? AtMask::maskedStrictly(token.line) : AtMask::masked(token.line));
    if (token.kind == AtToken::Kind::Final)
        m_strictFinals = std::max(m_strictFinals - 1, 0);
    // A message may have a line that looks like a final result.
    if (AtMask::announcesMessage(token.line))
        maskStrictlyFor(owed + 1);
}

void AtTrace::note(const char *what)
{
    qCDebug(logAt) << what;
}

void AtTrace::maskStrictlyFor(int finals)
{
    m_strictFinals = std::max(m_strictFinals, finals);
}

} // namespace norvane
