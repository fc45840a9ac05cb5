#include "foundation/platform/WindowNotices.h"

#include <QCoreApplication>

#include <utility>

#include <xcb/xproto.h>

namespace norvane {

WindowNotices::WindowNotices(Receiver receiver) : m_receiver(std::move(receiver))
{
    QCoreApplication::instance()->installNativeEventFilter(this);
}

WindowNotices::~WindowNotices() = default;

bool WindowNotices::nativeEventFilter(const QByteArray &eventType, void *message,
                                      qintptr * /*result*/)
{
    constexpr int sentByAClient = 0x80;
    if (eventType != "xcb_generic_event_t")
        return false;
    const auto *const event = static_cast<const xcb_generic_event_t *>(message);
    if ((event->response_type & ~sentByAClient) == XCB_PROPERTY_NOTIFY)
        m_receiver(static_cast<const xcb_property_notify_event_t *>(message)->window);
    return false;
}

} // namespace norvane
