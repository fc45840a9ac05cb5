#include "TovekSMService/reports/Inbox.h"
#include "TovekSMService/store/Store.h"

#include "TovekSMService/store/StoreResults.h"

#include <QFile>
#include <QTemporaryDir>

#include <gtest/gtest.h>

#include <sys/resource.h>

namespace norvane {

using namespace Qt::StringLiterals;

namespace {

void forgetPeakOfMemory()
{
    QFile references(u"/proc/self/clear_refs"_s);
    ASSERT_TRUE(references.open(QIODevice::WriteOnly | QIODevice::Unbuffered));
    ASSERT_EQ(references.write("5"), 1);
}

long peakKibibytes()
{
    rusage usage = {};
    ::getrusage(RUSAGE_SELF, &usage);
    return usage.ru_maxrss;
}

DeliverPdu receivedMessage(int number)
{
    DeliverPdu message;
    message.sender = u"+346%1"_s.arg(number % 1000, 8, 10, QChar(u'0'));
    message.sentAt = QDateTime(QDate(2026, 11, 22), QTime(9, 59), Qt::OffsetFromUTC, 3600);
    message.text = QString::number(number).rightJustified(160, u'x');
    return message;
}

void receive(Store &store, int first, int count)
{
    constexpr int batch = 1000; // messages to one transaction
    Inbox inbox(store);
    for (int number = first; number < first + count; number += batch) {
        done(store.database().together([&]() -> StoreResult<> {
            for (int i = number; i < number + batch; ++i) {
                const QByteArray pdu = QByteArray::number(i).rightJustified(320, '0');
                EXPECT_TRUE(
                    given(inbox.take(pdu, receivedMessage(i), u"sim"_s, u"2026-11-22T10:00:00"_s)));
            }
            return {};
        }));
    }
}

TEST(InboxMemory, aHundredThousandMessagesTakeTheDiskAndNotTheMemory)
{
    constexpr int all = 100'000;
    constexpr int first = 10'000; // until caches are full
    // A third of what the texts alone would take. What is freed is kept for a while by a checker of
    // memory.
#ifdef __SANITIZE_ADDRESS__
    constexpr long maxRise = 384 * 1024;
#else
    constexpr long maxRise = 10 * 1024;
#endif
    const QTemporaryDir folder;
    Store store(folder.filePath(u"queue.sqlite"_s));
    done(store.open());
    receive(store, 0, first);
    forgetPeakOfMemory();
    const long before = peakKibibytes();
    receive(store, first, all - first);
    EXPECT_LT(peakKibibytes() - before, maxRise) << "kibibytes";
    EXPECT_EQ(given(store.received().unread()), all);
    EXPECT_EQ(given(store.received().list({}, all - 1, 10)).size(), 1);
}

} // namespace

} // namespace norvane
