#include "TovekSMService/history/HistoryCursor.h"

#include <QList>
#include <QStringList>

namespace norvane {

using namespace Qt::StringLiterals;

namespace {

constexpr qsizetype maxLength = 64;

/// The numbers behind a kind, or nothing where there aren't that many, each in its one spelling.
std::optional<QList<qint64>> numbersOf(const QString &text, QLatin1String kind, qsizetype count)
{
    if (text.size() > maxLength)
        return std::nullopt;
    const QStringList fields = text.split(u'.');
    if (fields.size() != count + 1 || fields.constFirst() != kind)
        return std::nullopt;
    QList<qint64> numbers;
    for (const QString &field : fields.sliced(1)) {
        const qint64 number = field.toLongLong();
        if (number < 0 || QString::number(number) != field)
            return std::nullopt;
        numbers.append(number);
    }
    return numbers;
}

} // namespace

std::optional<HistoryCursor> HistoryCursor::of(const QString &text)
{
    if (text.isEmpty())
        return HistoryCursor();
    const std::optional<QList<qint64>> numbers = numbersOf(text, "h"_L1, 2);
    return numbers ? std::optional(HistoryCursor{numbers->at(0), numbers->at(1)}) : std::nullopt;
}

QString HistoryCursor::text() const
{
    return u"h.%1.%2"_s.arg(queue).arg(outcomes);
}

std::optional<InboxCursor> InboxCursor::of(const QString &text)
{
    if (text.isEmpty())
        return InboxCursor();
    const std::optional<QList<qint64>> numbers = numbersOf(text, "i"_L1, 1);
    return numbers ? std::optional(InboxCursor{numbers->at(0)}) : std::nullopt;
}

QString InboxCursor::text() const
{
    return u"i.%1"_s.arg(received);
}

} // namespace norvane
