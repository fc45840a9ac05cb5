#include "support/RecordingEngine.h"

#include "common/FailureNumbers.h"

namespace norvane {

using namespace Qt::StringLiterals;

void RecordingEngine::note(const QString &call)
{
    m_script.calls.append(call);
    ++m_callsMade;
    if (m_script.inCall)
        m_script.inCall(call);
    if (!m_script.failingCalls.isEmpty() && m_script.failingCalls.head() == m_callsMade) {
        m_script.failingCalls.dequeue();
        Failure::raise(Failure::RemoteServerUnavailable, u"SMSManager"_s);
    }
    if (!m_script.failingCall.isEmpty() && call.startsWith(m_script.failingCall)) {
        m_script.failingCall.clear();
        Failure::raise(Failure::RemoteServerUnavailable, u"SMSManager"_s);
    }
}

} // namespace norvane
