#include "TovekSMService/admin/InboxReport.h"

namespace norvane {

using namespace Qt::StringLiterals;

QString InboxReport::line(const ReceivedMessage &message, ReportLines::Format format)
{
    return ReportLines::line({{message.at},
                              {message.sentAt},
                              {message.phone},
                              {message.text},
                              {message.isRead ? u"yes"_s : u"no"_s}},
                             format);
}

StoreResult<> InboxReport::write(const ReportSource &store, const QString &since,
                                 ReportLines::Format format, QTextStream &out)
{
    if (format == ReportLines::Format::Csv)
        out << u"at,sent at,phone,message,read\r\n"_s;
    return store.received(since,
                          [&](const ReceivedMessage &message) { out << line(message, format); });
}

} // namespace norvane
