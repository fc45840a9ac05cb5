#include "TovekSMService/admin/OutcomeReport.h"

#include "contract/ErrorCodes.h"

namespace norvane {

using namespace Qt::StringLiterals;

namespace {

QString csvHeader()
{
    return u"at,delivery date,phone,outcome,code,reference,message,delivery,delivered at\r\n"_s;
}

QString outcomeWord(qint32 code)
{
    return code == ErrorCode::ok ? u"sent"_s : u"failed"_s;
}

} // namespace

QString OutcomeReport::line(const OutcomeRow &row, ReportLines::Format format)
{
    // The code is a number of our own, and a failure's begins with a minus sign.
    return ReportLines::line({{row.at},
                              {row.deliveryDate},
                              {row.phone},
                              {outcomeWord(row.code)},
                              {QString::number(row.code), true},
                              {row.reference},
                              {row.text},
                              {QString::fromLatin1(nameOf(row.delivery))},
                              {row.deliveredAt}},
                             format);
}

StoreResult<> OutcomeReport::write(const ReportSource &store, const QString &since,
                                   ReportLines::Format format, QTextStream &out)
{
    if (format == ReportLines::Format::Csv)
        out << csvHeader();
    return store.outcomes(since, [&](const OutcomeRow &row) { out << line(row, format); });
}

} // namespace norvane
