#pragma once

#include <QAbstractNativeEventFilter>

#include <functional>

namespace norvane {

/// Tells when the window system has noted something anew about one of the program's windows, as
/// the frame that the window manager draws around it: the toolkit hears of it and raises no event.
///
/// Where the window system has no such notices nothing is told, and nothing is missed there.
class WindowNotices : public QAbstractNativeEventFilter
{
public:
    using Receiver = std::function<void(quintptr window)>;

    /// @param receiver  is called before the toolkit has dealt with the notice
    explicit WindowNotices(Receiver receiver);
    ~WindowNotices() override;

    bool nativeEventFilter(const QByteArray &eventType, void *message, qintptr *result) override;

private:
    Receiver m_receiver;
};

} // namespace norvane
