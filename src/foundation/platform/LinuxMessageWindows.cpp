#include "foundation/platform/MessageWindows.h"

#include <QEvent>
#include <QSocketNotifier>

#include <atomic>
#include <cerrno>
#include <deque>
#include <map>
#include <optional>

#include <fcntl.h>
#include <unistd.h>

namespace norvane {

namespace {

/// Small enough for the pipe to take it whole or not at all.
struct Message
{
    WindowHandle window;
    quint32 message;
    quint64 wParam;
    qint64 lParam;
};

// All that another thread sees of this file. A timer's thread must not come to a lock here.
std::atomic<int> g_writeEnd{-1};
static_assert(decltype(g_writeEnd)::is_always_lock_free);

bool writeMessage(const Message &message) noexcept
{
    return ::write(g_writeEnd.load(std::memory_order_relaxed), &message, sizeof message) ==
           ssize_t{sizeof message};
}

/// The queue of the interface thread and its windows. Once made it stays until the process ends.
class Queue
{
public:
    /// @return null when the platform has no pipe to give, with the reason in `error`
    static Queue *make(int &error)
    {
        int ends[2];
        if (::pipe2(ends, O_CLOEXEC | O_NONBLOCK) != 0) {
            error = errno;
            return nullptr;
        }
        g_writeEnd.store(ends[1], std::memory_order_relaxed);
        return new Queue(ends[0]);
    }

    WindowHandle createWindow()
    {
        WindowHandle handle = 1;
        while (m_windows.contains(handle))
            ++handle;
        m_windows.emplace(handle, defaultWindowProc);
        return handle;
    }

    void closeWindow(WindowHandle window) { m_windows.erase(window); }

    WindowProc procedure(WindowHandle window) const
    {
        const auto found = m_windows.find(window);
        return found == m_windows.end() ? nullptr : found->second;
    }

    void setProcedure(WindowHandle window, WindowProc receiver)
    {
        const auto found = m_windows.find(window);
        if (found != m_windows.end())
            found->second = receiver ? receiver : defaultWindowProc;
    }

    void post(const Message &message)
    {
        if (writeMessage(message))
            return;
        // Behind what is taken out, the message keeps the pipe readable until its turn has come.
        while (const std::optional<Message> waiting = readMessage())
            m_backlog.push_back(*waiting);
        writeMessage(message);
    }

private:
    /// Takes one message each time that the event loop finds some. A failure passes through
    /// event() and no slot, to where the event loop's failures are reported.
    class Notifier : public QSocketNotifier
    {
    public:
        Notifier(int descriptor, Queue &queue) : QSocketNotifier(descriptor, Read), m_queue(queue)
        {}

    protected:
        bool event(QEvent *event) override
        {
            if (event->type() != QEvent::SockAct)
                return QSocketNotifier::event(event);
            m_queue.dispatchOne();
            return true;
        }

    private:
        Queue &m_queue;
    };

    explicit Queue(int readEnd) : m_readEnd(readEnd), m_notifier(readEnd, *this) {}

    std::optional<Message> readMessage() const
    {
        Message message{};
        if (::read(m_readEnd, &message, sizeof message) != ssize_t{sizeof message})
            return std::nullopt;
        return message;
    }

    std::optional<Message> takeMessage()
    {
        if (m_backlog.empty())
            return readMessage();
        const Message message = m_backlog.front();
        m_backlog.pop_front();
        return message;
    }

    void dispatchOne()
    {
        const std::optional<Message> message = takeMessage();
        if (!message)
            return;
        if (const WindowProc receiver = procedure(message->window))
            receiver(message->window, message->message, message->wParam, message->lParam);
    }

    int m_readEnd;
    std::map<WindowHandle, WindowProc> m_windows;
    std::deque<Message> m_backlog;
    Notifier m_notifier;
};

// Never released: timers that end with the process itself still send their last messages.
Queue *g_queue = nullptr;

} // namespace

bool postWindowMessage(WindowHandle window, quint32 message, quint64 wParam, qint64 lParam) noexcept
{
    return writeMessage({window, message, wParam, lParam});
}

qint64 defaultWindowProc(WindowHandle window, quint32 message, quint64 /*wParam*/,
                         qint64 /*lParam*/)
{
    if (message == WM_CLOSE && g_queue)
        g_queue->closeWindow(window);
    return 0;
}

WindowHandle MessageWindows::create(int &error)
{
    if (!g_queue)
        g_queue = Queue::make(error);
    return g_queue ? g_queue->createWindow() : 0;
}

WindowProc MessageWindows::procedure(WindowHandle window)
{
    return g_queue ? g_queue->procedure(window) : nullptr;
}

void MessageWindows::setProcedure(WindowHandle window, WindowProc procedure)
{
    if (g_queue)
        g_queue->setProcedure(window, procedure);
}

void MessageWindows::post(WindowHandle window, quint32 message, quint64 wParam, qint64 lParam)
{
    if (g_queue)
        g_queue->post({window, message, wParam, lParam});
}

} // namespace norvane
