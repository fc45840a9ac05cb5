#pragma once

#include <QAbstractNativeEventFilter>

#include <functional>

namespace norvane {

/// Reports when the window system has changed a property of one of the program's windows, such as
/// the frame that the window manager draws around it. The toolkit raises no event for that.
///
/// A window system without such notices reports nothing, and needs none.
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
