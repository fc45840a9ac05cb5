#pragma once

#include "TovekSMService/Noon.h"
#include "TovekSMService/store/Store.h"

#include "TovekSMService/store/OtherConnection.h"
#include "TovekSMService/store/StoreResults.h"
#include "TovekSMService/store/TestStore.h"

#include <QTemporaryDir>

#include <gtest/gtest.h>

#include <memory>

namespace norvane {

using namespace Qt::StringLiterals;

/// A store in a folder of its own.
class StoreFixture : public testing::Test
{
protected:
    StoreFixture() { reopen(); }

    QString file() const { return m_folder.filePath(u"queue.sqlite"_s); }

    void reopen()
    {
        m_store.reset();
        m_store = openTestStore(file());
    }

    /// Queues one message.
    /// @return its id
    qint64 add(const QString &date, const QString &phone = u"600"_s,
               const QString &text = u"text"_s)
    {
        done(m_store->queue().add({{phone, text}}, date));
        OtherConnection other(file());
        return other.value(u"SELECT MAX(id) FROM message"_s).toLongLong();
    }

    QStringList phones() const
    {
        QStringList phones;
        for (const QueueRow &row : given(m_store->queue().rows()))
            phones.append(row.phone);
        return phones;
    }

    /// What `column` of the message holds on disk.
    QVariant stored(qint64 id, const char *column) const
    {
        OtherConnection other(file());
        return other.value(
            u"SELECT %1 FROM message WHERE id = %2"_s.arg(QLatin1String(column)).arg(id));
    }

    QTemporaryDir m_folder;
    std::unique_ptr<Store> m_store;
};

} // namespace norvane
