#include "TovekSMService/bus/QueueSnapshots.h"
#include "TovekSMService/modem/at/PortParameter.h"
#include "TovekSMService/modem/codec/SubmitPdu.h"
#include "TovekSMService/store/Store.h"
#include "contract/BusTypes.h"

#include "fuzz/FuzzTarget.h"

#include <algorithm>

namespace norvane {

using namespace Qt::StringLiterals;

// What a caller on the bus can send, any texts as phones, messages, dates and settings, through the
// store and back.

namespace {

/// A text that the bus lets through: no NUL, no half of a pair.
QString takeBusText(FuzzInput &input, qsizetype max)
{
    return QString::fromUtf8(Bus::withoutNul(input.takeText(max)).toUtf8());
}

/// The database has no place for the two units that are no characters.
QString asStored(QString text)
{
    return text.replace(QChar(0xFFFE), QChar(0xFFFD)).replace(QChar(0xFFFF), QChar(0xFFFD));
}

int number(QStringView text, qsizetype at, qsizetype digits)
{
    int value = 0;
    for (const QChar digit : text.mid(at, digits))
        value = value * 10 + digit.unicode() - u'0';
    return value;
}

/// Whether `text` is "yyyy-MM-ddTHH:mm:ss" of a moment from year 1 on.
bool isMoment(const QString &text)
{
    static const QString form = u"0000-00-00T00:00:00"_s;
    if (text.size() != form.size())
        return false;
    for (qsizetype i = 0; i < form.size(); ++i) {
        const bool isDigit = text.at(i) >= u'0' && text.at(i) <= u'9';
        if (form.at(i) == u'0' ? !isDigit : text.at(i) != form.at(i))
            return false;
    }
    const int year = number(text, 0, 4);
    const int month = number(text, 5, 2);
    const int day = number(text, 8, 2);
    const bool leap = year % 4 == 0 && (year % 100 != 0 || year % 400 == 0);
    static constexpr int lengths[] = {31, 28, 31, 30, 31, 30, 31, 31, 30, 31, 30, 31};
    return year >= 1 && month >= 1 && month <= 12 && day >= 1 &&
           day <= lengths[month - 1] + (month == 2 && leap ? 1 : 0) && number(text, 11, 2) < 24 &&
           number(text, 14, 2) < 60 && number(text, 17, 2) < 60;
}

template <typename Value>
void done(const StoreResult<Value> &result)
{
    expectThat(result.has_value(), "the store does what it is asked");
}

template <typename Value>
Value given(const StoreResult<Value> &result)
{
    done(result);
    return *result;
}

/// Open from its construction on, so that the database library outlives it.
class OpenStore : public Store
{
public:
    OpenStore() : Store(fuzzFolder() + u"/queue.sqlite"_s) { done(open()); }
};

Store &store()
{
    static OpenStore kept;
    return kept;
}

struct Expected
{
    QString deliveryDate;
    QString phone;
    QString message;
};

/// The rows that the store should give: odd dates first, then by date, then by order of queueing.
void sort(QList<Expected> &rows)
{
    const auto due = [](const Expected &row) {
        return isMoment(row.deliveryDate) ? row.deliveryDate : QString();
    };
    std::stable_sort(rows.begin(), rows.end(),
                     [&due](const Expected &a, const Expected &b) { return due(a) < due(b); });
}

QList<Expected> addRows(FuzzInput &input)
{
    QList<Expected> expected;
    for (int lists = 1 + input.takeNumber(3); lists > 0; --lists) {
        QString date = takeBusText(input, 40);
        if (input.takeByte() % 2 == 0)
            date = u"2026-0%1-2%2T0%3:00:00"_s.arg(1 + input.takeNumber(9))
                       .arg(input.takeNumber(10))
                       .arg(input.takeNumber(10));
        BusSMSList list;
        for (int entries = input.takeNumber(4); entries > 0; --entries) {
            list.append({takeBusText(input, 40), takeBusText(input, 3000)});
            expected.append({date, list.last().phone, list.last().message});
        }
        done(store().queue().add(list, date));
    }
    sort(expected);
    return expected;
}

/// The rows as a caller gets them, page by page.
BusQueueRows pagedRows(FuzzInput &input)
{
    QueueSnapshots snapshots;
    const QString caller = u":1.7"_s;
    const quint64 snapshot = snapshots.begin(caller, given(store().queue().rows()));
    const quint32 wild = static_cast<quint32>(input.takeNumber(65536)) << 16;
    expectThat(snapshots.page(caller, snapshot + 1, wild).snapshot == 0,
               "a snapshot that isn't there is told so");
    const QueueSnapshots::Page page = snapshots.page(caller, snapshot, 0);
    expectThat(page.isLast && page.total == page.rows.size(), "a few rows are one page");
    return page.rows;
}

void checkRows(const BusQueueRows &rows, const QList<Expected> &expected)
{
    expectThat(store().queue().size() == expected.size(), "the queue's size is told rightly");
    expectThat(rows.size() == expected.size(), "every message is there");
    for (qsizetype i = 0; i < rows.size(); ++i) {
        expectThat(rows.at(i).deliveryDate == asStored(expected.at(i).deliveryDate),
                   "a date stays");
        expectThat(rows.at(i).phone == asStored(expected.at(i).phone), "a phone stays");
        expectThat(rows.at(i).message == asStored(expected.at(i).message), "a message stays");
    }
    const std::optional<StoredMessage> first = given(store().queue().first());
    expectThat(first.has_value() == !rows.isEmpty(), "the first message is there");
    if (!first)
        return;
    expectThat(first->id == rows.first().id, "the first row goes first");
    expectThat(first->dateIsOdd == !isMoment(first->deliveryDate), "an odd date is told");
    const auto encoded = encodeSubmit({first->phone, first->text, 1, {}});
    if (!encoded)
        expectThat(errorCode(encoded.error()) < 0, "what can't be sent has a code");
}

void changeRows(FuzzInput &input, BusQueueRows rows, QList<Expected> expected)
{
    BusQueueRows changed;
    QList<qint64> deleted;
    for (qsizetype i = rows.size() - 1; i >= 0; --i) {
        const int what = input.takeNumber(3);
        if (what == 0) {
            deleted.append(rows.at(i).id);
            expected.removeAt(i);
        } else if (what == 1) {
            expected[i].phone = takeBusText(input, 40);
            expected[i].message = takeBusText(input, 300);
            // The date of a row isn't the operator's to change.
            changed.append(
                {takeBusText(input, 20), expected[i].phone, expected[i].message, rows.at(i).id});
        }
    }
    expectThat(given(store().queue().update(changed, deleted)),
               "changes of waiting messages are in time");
    checkRows(given(store().queue().rows()), expected);

    const qint64 nobody = -1 - input.takeNumber(65536);
    expectThat(!given(store().queue().update({{{}, {}, {}, nobody}}, {})),
               "a change of nothing is too late");
    done(store().queue().update({}, {nobody, nobody}));
    checkRows(given(store().queue().rows()), expected);
}

void keepSettings(FuzzInput &input)
{
    DeviceSettings settings;
    settings.DeviceType = input.takeNumber(65536) * (input.takeNumber(65536) - 32768);
    settings.PINCode = takeBusText(input, 40);
    settings.ConnectionMode = input.takeNumber(65536) - 32768;
    settings.Protocol = -input.takeNumber(256);
    settings.Parameter = takeBusText(input, 200);
    done(store().settings().setDeviceSettings(settings));
    const DeviceSettings kept = given(store().settings().deviceSettings());
    expectThat(
        kept.DeviceType == settings.DeviceType && kept.PINCode == asStored(settings.PINCode) &&
            kept.ConnectionMode == settings.ConnectionMode && kept.Protocol == settings.Protocol &&
            kept.Parameter == asStored(settings.Parameter),
        "settings are given back as they came");
    parsePortParameter(kept.Parameter);
}

} // namespace

int LLVMFuzzerTestOneInput(const quint8 *data, std::size_t size)
{
    FuzzInput input(data, size);
    const QList<Expected> expected = addRows(input);
    const BusQueueRows rows = pagedRows(input);
    checkRows(rows, expected);
    changeRows(input, rows, expected);
    keepSettings(input);
    done(store().queue().clear());
    checkRows(given(store().queue().rows()), {});
    return 0;
}

} // namespace norvane
