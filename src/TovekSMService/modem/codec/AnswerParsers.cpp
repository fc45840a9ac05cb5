#include "TovekSMService/modem/codec/AnswerParsers.h"

#include <QRegularExpression>

#include <algorithm>
#include <array>

namespace norvane {

using namespace Qt::StringLiterals;

namespace {

QByteArray withoutQuotes(const QByteArray &text)
{
    const QByteArray trimmed = text.trimmed();
    if (trimmed.size() >= 2 && trimmed.startsWith('"') && trimmed.endsWith('"'))
        return trimmed.mid(1, trimmed.size() - 2);
    return trimmed;
}

int number(const QList<QByteArray> &fields, qsizetype index)
{
    bool isNumber = false;
    const int value = fields.value(index).toInt(&isNumber);
    return isNumber ? value : -1;
}

QString firstMatch(const QList<QByteArray> &lines, const QRegularExpression &expression)
{
    for (const QByteArray &line : lines) {
        const QRegularExpressionMatch match = expression.match(QString::fromLatin1(line));
        if (match.hasMatch())
            return match.captured(1);
    }
    return {};
}

} // namespace

namespace AnswerParsers {

std::optional<QByteArray> behindTag(const Lines &lines, QByteArrayView tag)
{
    for (const QByteArray &line : lines) {
        const qsizetype colon = line.indexOf(':');
        if (colon >= 0 && line.left(colon).trimmed().compare(tag, Qt::CaseInsensitive) == 0)
            return line.mid(colon + 1).trimmed();
    }
    return std::nullopt;
}

QList<QByteArray> fields(const Lines &lines, QByteArrayView tag)
{
    const std::optional<QByteArray> rest = behindTag(lines, tag);
    if (!rest)
        return {};
    QList<QByteArray> result;
    QByteArray field;
    bool quoted = false;
    for (const char c : *rest) {
        if (c == '"')
            quoted = !quoted;
        if (c == ',' && !quoted) {
            result.append(withoutQuotes(field));
            field.clear();
        } else {
            field.append(c);
        }
    }
    result.append(withoutQuotes(field));
    return result;
}

QList<QList<QByteArray>> textLists(const Lines &lines, QByteArrayView tag)
{
    const QByteArray rest = behindTag(lines, tag).value_or(QByteArray());
    QList<QList<QByteArray>> lists;
    for (qsizetype open = rest.indexOf('('); open >= 0; open = rest.indexOf('(', open + 1)) {
        const qsizetype close = rest.indexOf(')', open);
        if (close < 0)
            break;
        QList<QByteArray> values;
        for (const QByteArray &value : rest.mid(open + 1, close - open - 1).split(','))
            values.append(withoutQuotes(value));
        lists.append(values);
    }
    return lists;
}

QList<QList<int>> valueLists(const Lines &lines, QByteArrayView tag)
{
    constexpr int maxRange = 256;
    QList<QList<int>> lists;
    for (const QList<QByteArray> &texts : textLists(lines, tag)) {
        QList<int> values;
        for (const QByteArray &text : texts) {
            const QList<QByteArray> ends = text.split('-');
            const int first = number(ends, 0);
            const int last = ends.size() == 2 ? number(ends, 1) : first;
            for (int value = first; first >= 0 && value <= last && value < first + maxRange;
                 ++value)
                values.append(value);
        }
        lists.append(values);
    }
    return lists;
}

QString freeText(const Lines &lines)
{
    if (lines.isEmpty())
        return {};
    static const QRegularExpression tag(u"\\A[+^*$%#][A-Za-z]+:"_s);
    const QByteArray text = lines.constFirst().trimmed();
    const qsizetype tagged = tag.match(QString::fromLatin1(text)).capturedLength(); // 0 without
    return QString::fromLatin1(withoutQuotes(text.mid(tagged)));
}

QString imei(const Lines &lines)
{
    static const QRegularExpression digits(u"(?<![0-9])([0-9]{14,17})(?![0-9])"_s);
    return firstMatch(lines, digits);
}

QString iccid(const Lines &lines)
{
    static const QRegularExpression digits(
        u"(?<![0-9A-Fa-f])([0-9]{17}[0-9A-Fa-f]{1,5})(?![0-9A-Fa-f])"_s);
    QString id = firstMatch(lines, digits).toUpper();
    // "89" begins every ICCID; with its halves swapped it reads "98".
    if (id.startsWith("98"_L1))
        for (qsizetype i = 0; i + 1 < id.size(); i += 2)
            std::swap(id[i], id[i + 1]);
    while (id.endsWith(u'F'))
        id.chop(1);
    return id.size() >= 18 ? id : QString();
}

QString operatorName(const Lines &lines)
{
    return QString::fromLatin1(fields(lines, "+COPS").value(2));
}

int registration(const Lines &lines, QByteArrayView tag)
{
    return number(fields(lines, tag), 1);
}

bool isRegistered(int state)
{
    return state == 1 || state == 5 || state == 6 || state == 7 || state == 9 || state == 10;
}

QString networkInfo(const QString &operatorName, int registration)
{
    static constexpr std::array<QLatin1String, 11> states = {"not registered"_L1,
                                                             "home"_L1,
                                                             "searching"_L1,
                                                             "denied"_L1,
                                                             "unknown"_L1,
                                                             "roaming"_L1,
                                                             "home, SMS only"_L1,
                                                             "roaming, SMS only"_L1,
                                                             "emergency calls only"_L1,
                                                             "home"_L1,
                                                             "roaming"_L1};
    if (registration < 0 || registration >= static_cast<int>(states.size()))
        return operatorName;
    const QString state = states[static_cast<std::size_t>(registration)];
    return operatorName.isEmpty() ? state : u"%1 (%2)"_s.arg(operatorName, state);
}

int functionality(const Lines &lines)
{
    return number(fields(lines, "+CFUN"), 0);
}

int signal(const Lines &lines)
{
    constexpr int strongest = 31;
    const int level = number(fields(lines, "+CSQ"), 0);
    if (level < 0 || level > strongest)
        return -1;
    return (level * 100 + strongest / 2) / strongest;
}

int battery(const Lines &lines)
{
    const int level = number(fields(lines, "+CBC"), 1);
    return level >= 0 && level <= 100 ? level : -1;
}

QByteArray pinState(const Lines &lines)
{
    const QByteArray state = behindTag(lines, "+CPIN").value_or(QByteArray());
    return withoutQuotes(state).simplified().toUpper();
}

std::optional<int> pinTries(const Lines &lines)
{
    const QList<QByteArray> standard = fields(lines, "+CPINR");
    const QList<QByteArray> other = fields(lines, "^CPIN");
    int tries = -1;
    if (standard.value(0).toUpper() == "SIM PIN")
        tries = number(standard, 1);
    else if (other.value(0).toUpper() == "SIM PIN")
        tries = number(other, 1) >= 0 ? number(other, 1) : number(other, 3);
    return tries >= 0 ? std::optional(tries) : std::nullopt;
}

std::optional<int> messageReference(const Lines &lines)
{
    const int reference = number(fields(lines, "+CMGS"), 0);
    return reference >= 0 && reference <= 255 ? std::optional(reference) : std::nullopt;
}

} // namespace AnswerParsers

} // namespace norvane
