#include "NorvaneSMS/queue/QueueDropFile.h"

#include "NorvaneSMS/queue/IntegerConversion.h"
#include "common/CodePages.h"
#include "common/FailureNumbers.h"
#include "foundation/PlatformHelpers.h"

namespace norvane {

using namespace Qt::StringLiterals;

namespace {

constexpr char16_t fill = u' ';

[[noreturn]] void raiseNoDate()
{
    Failure::raise(Failure::InvalidProcedureCall, u"QueueDropFile::decode"_s);
}

int fullYear(qint16 year)
{
    if (year < 0)
        raiseNoDate();
    if (year < 30)
        return 2000 + year;
    return year < 100 ? 1900 + year : year;
}

/// The date and time of these parts, whatever carries over from one to the next.
QDateTime moment(qint16 year, qint16 month, qint16 day, qint16 hour, qint16 minute, qint16 second)
{
    const QDateTime newYear(QDate(fullYear(year), 1, 1), QTime(0, 0), Qt::UTC);
    const int seconds = hour * 3600 + minute * 60 + second;
    const QDateTime result = newYear.addMonths(month - 1).addDays(day - 1).addSecs(seconds);
    if (result.date().year() < 100 || result.date().year() > 9999)
        raiseNoDate();
    return result;
}

/// Takes the fields of a record one after the other.
class Fields
{
public:
    explicit Fields(QByteArrayView bytes) : m_bytes(bytes) {}

    QString text(qsizetype length)
    {
        const QString taken = CodePages::fromAnsi(m_bytes.first(length));
        m_bytes = m_bytes.sliced(length);
        return taken;
    }
    qint16 number(qsizetype length) { return toInteger16(text(length)); }

private:
    QByteArrayView m_bytes;
};

} // namespace

namespace QueueDropFile {

QString fileName(qint16 number)
{
    return u"sms."_s + QString::number(number);
}

QByteArray encode(const Record &record)
{
    return CodePages::toAnsi(PadField(record.phone, phoneLength, fill) +
                             record.deliveryDate.toString(u"ddMMyyyyHHmmss"_s) +
                             PadField(record.message, messageLength, fill));
}

Record decode(QByteArrayView bytes)
{
    Q_ASSERT(bytes.size() == recordLength);
    Fields fields(bytes);
    Record record;
    record.phone = fields.text(phoneLength);
    record.phone.removeIf([](QChar character) { return character == u' ' || character == u'-'; });
    const qint16 day = fields.number(2);
    const qint16 month = fields.number(2);
    const qint16 year = fields.number(4);
    const qint16 hour = fields.number(2);
    const qint16 minute = fields.number(2);
    const qint16 second = fields.number(2);
    record.deliveryDate = moment(year, month, day, hour, minute, second);
    record.message = withoutBlanks(fields.text(messageLength));
    return record;
}

} // namespace QueueDropFile

QString PadField(const QString &text, qint16 width, char16_t padChar)
{
    return text.leftJustified(qMax<qint16>(width, 0), QChar(padChar), true);
}

} // namespace norvane
