#pragma once

#include "NorvaneSMS/import/readers/HelperConnection.h"

#include "NorvaneSMS/queue/Fixture.h"

#include <QTemporaryDir>

namespace norvane {

using namespace Qt::StringLiterals;

/// Spreadsheets through the reader's process.
class Spreadsheets : public ::testing::Test
{
protected:
    void openBytes(const QByteArray &bytes)
    {
        const QString path = folder.filePath(u"book"_s);
        writeFile(path, bytes);
        connection.open(path);
    }
    void openReal(const char *name)
    {
        connection.open(QStringLiteral(NORVANE_TEST_DATA "/import/") + QLatin1String(name));
    }
    /// The values of a field; "(null)" where there is none.
    QStringList values(const QString &sheet, const QString &field)
    {
        QStringList found;
        for (const auto rows = connection.rows(sheet); !rows->isAtEnd(); rows->moveNext())
            found.append(rows->value(field).value_or(u"(null)"_s));
        return found;
    }
    QStringList values(const QString &field) { return values(connection.sheets().first(), field); }

    const QTemporaryDir folder;
    HelperConnection connection{QStringLiteral(NORVANE_SHEET_READER)};
};

} // namespace norvane
