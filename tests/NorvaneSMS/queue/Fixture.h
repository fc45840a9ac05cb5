#pragma once

#include <QByteArray>
#include <QFile>
#include <QString>

#include <gtest/gtest.h>

namespace norvane {

/// The bytes of a file of tests/data/queue. Each was laid out by hand from the table of the
/// record's fields.
inline QByteArray fixture(const QString &name)
{
    QFile file(QStringLiteral(NORVANE_TEST_DATA "/queue/") + name);
    EXPECT_TRUE(file.open(QIODevice::ReadOnly)) << name.toStdString();
    return file.readAll();
}

inline QByteArray bytesOf(const QString &path)
{
    QFile file(path);
    EXPECT_TRUE(file.open(QIODevice::ReadOnly)) << path.toStdString();
    return file.readAll();
}

inline void writeFile(const QString &path, const QByteArray &bytes = {})
{
    QFile file(path);
    ASSERT_TRUE(file.open(QIODevice::WriteOnly)) << path.toStdString();
    ASSERT_EQ(file.write(bytes), bytes.size());
}

} // namespace norvane
