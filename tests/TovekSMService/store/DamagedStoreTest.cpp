#include "TovekSMService/store/DamagedStore.h"

#include <QDateTime>
#include <QDir>
#include <QFile>
#include <QTemporaryDir>

#include <gtest/gtest.h>

namespace norvane {

using namespace Qt::StringLiterals;

namespace {

class DamagedStoreFiles : public testing::Test
{
protected:
    QString path(const char *name) const { return m_folder.filePath(QLatin1String(name)); }
    void write(const char *name, const QByteArray &bytes) const
    {
        QFile file(path(name));
        ASSERT_TRUE(file.open(QIODevice::WriteOnly));
        file.write(bytes);
    }
    QByteArray read(const char *name) const
    {
        QFile file(path(name));
        return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray("none");
    }
    bool setAside(const char *reason = "malformed") const
    {
        return DamagedStore::setAside(path("queue.sqlite"),
                                      {QDate(2026, 5, 1), QTime(9, 8, 7), Qt::UTC},
                                      QLatin1String(reason));
    }
    QStringList names() const { return QDir(m_folder.path()).entryList(QDir::Files, QDir::Name); }

    QTemporaryDir m_folder;
};

TEST_F(DamagedStoreFiles, theFileAndItsLogGetANewNameAndKeepTheirBytes)
{
    write("queue.sqlite", "main");
    write("queue.sqlite-wal", "log");
    write("queue.sqlite-shm", "index");
    EXPECT_TRUE(setAside());
    EXPECT_EQ(read("queue.sqlite.damaged-20260501T090807"), "main");
    EXPECT_EQ(read("queue.sqlite.damaged-20260501T090807-wal"), "log");
    EXPECT_EQ(read("queue.sqlite.damaged-20260501T090807-shm"), "index");
    EXPECT_FALSE(QFile::exists(path("queue.sqlite")));
    EXPECT_FALSE(QFile::exists(path("queue.sqlite-wal")));
    EXPECT_FALSE(QFile::exists(path("queue.sqlite-shm")));
}

TEST_F(DamagedStoreFiles, aSecondOneInTheSameSecondTakesNothingsPlace)
{
    write("queue.sqlite", "first");
    EXPECT_TRUE(setAside());
    write("queue.sqlite", "second");
    EXPECT_TRUE(setAside());
    EXPECT_EQ(read("queue.sqlite.damaged-20260501T090807"), "first");
    EXPECT_EQ(read("queue.sqlite.damaged-20260501T090807.2"), "second");
}

TEST_F(DamagedStoreFiles, itIsToldUntilItWasHeard)
{
    EXPECT_FALSE(DamagedStore::unacknowledged(m_folder.path()));
    write("queue.sqlite", "main");
    EXPECT_TRUE(setAside("page 7"));
    const QString told = DamagedStore::unacknowledged(m_folder.path()).value_or(QString());
    EXPECT_TRUE(told.contains("page 7"_L1));
    EXPECT_TRUE(told.contains("queue.sqlite.damaged-20260501T090807"_L1));
    EXPECT_EQ(DamagedStore::unacknowledged(m_folder.path()), told);
    DamagedStore::markAcknowledged(m_folder.path());
    EXPECT_FALSE(DamagedStore::unacknowledged(m_folder.path()));
}

TEST_F(DamagedStoreFiles, aSecondOneDoesNotHideTheFirst)
{
    write("queue.sqlite", "first");
    EXPECT_TRUE(setAside("page 7"));
    write("queue.sqlite", "second");
    EXPECT_TRUE(setAside("page 9"));
    const QString told = DamagedStore::unacknowledged(m_folder.path()).value_or(QString());
    EXPECT_TRUE(told.contains("page 7"_L1));
    EXPECT_TRUE(told.contains("page 9"_L1));
}

TEST_F(DamagedStoreFiles, aMoveThatWasCutShortIsFinishedBeforeTheStoreIsOpened)
{
    for (const int moved : {1, 2, 3}) {
        const QString kept = path("queue.sqlite.damaged-20260501T090807");
        write("queue.sqlite", "main");
        write("queue.sqlite-wal", "log");
        write("queue.sqlite-shm", "index");
        ASSERT_TRUE(setAside());
        // As it was when so many of the three had their new name.
        if (moved < 3) {
            ASSERT_TRUE(QFile::rename(kept, path("queue.sqlite")));
        }
        if (moved < 2) {
            ASSERT_TRUE(QFile::rename(kept + u"-shm"_s, path("queue.sqlite-shm")));
        }
        DamagedStore::finishMove(path("queue.sqlite"));
        EXPECT_FALSE(QFile::exists(path("queue.sqlite"))) << moved;
        EXPECT_FALSE(QFile::exists(path("queue.sqlite-shm"))) << moved;
        EXPECT_EQ(read("queue.sqlite.damaged-20260501T090807"), "main") << moved;
        EXPECT_EQ(read("queue.sqlite.damaged-20260501T090807-wal"), "log") << moved;
        EXPECT_EQ(read("queue.sqlite.damaged-20260501T090807-shm"), "index") << moved;
        // A store that was begun since is left alone.
        write("queue.sqlite", "new");
        DamagedStore::finishMove(path("queue.sqlite"));
        EXPECT_EQ(read("queue.sqlite"), "new") << moved;
        for (const QString &name : names())
            QFile::remove(m_folder.filePath(name));
    }
}

TEST_F(DamagedStoreFiles, nothingMovesWhereTheLossCannotBeNoted)
{
    write("queue.sqlite", "main");
    ASSERT_TRUE(QDir(m_folder.path()).mkdir(u"damaged.note"_s));
    EXPECT_FALSE(setAside());
    EXPECT_EQ(names(), QStringList{u"queue.sqlite"_s});
}

} // namespace

} // namespace norvane
