#pragma once

#include "common/NumberedFailure.h"

#include <QString>
#include <QStringList>

#include <memory>
#include <optional>

namespace norvane {

/// The failures of a spreadsheet or of a query to it, under the numbers that data sources use.
/// Numbers below 0 come from the source, those above from the program's side.
namespace SheetFailure {

enum Number : qint32 {
    NoCurrentRecord = 3021,
    NoSuchField = 3265,
    BadFile = -2147467259,
    NoSuchSheet = -2147217865,
};

[[noreturn]] void raise(Number number, const QString &description);
[[noreturn]] void raiseNoCurrentRecord();

[[nodiscard]] NumberedFailure badFile(const QString &description);
[[nodiscard]] NumberedFailure noSuchField();
[[nodiscard]] NumberedFailure noSuchSheet(const QString &sheet);

} // namespace SheetFailure

/// The rows of a sheet, from the first one on.
class SheetRows
{
public:
    SheetRows() = default;
    SheetRows(const SheetRows &) = delete;
    SheetRows &operator=(const SheetRows &) = delete;
    virtual ~SheetRows() = default;

    virtual bool isAtEnd() const = 0;
    /// The field of the present row as text; nothing for null.
    /// @throws NumberedFailure NoSuchField, or as the connection's operations
    virtual std::optional<QString> value(const QString &field) = 0;
    virtual void moveNext() = 0;
};

/// A spreadsheet seen as a database: its sheets are tables, whose columns are fields.
class SpreadsheetConnection
{
public:
    struct Table
    {
        QStringList fields;
        qint32 rows = 0;

        bool operator==(const Table &) const = default;
    };

    SpreadsheetConnection() = default;
    SpreadsheetConnection(const SpreadsheetConnection &) = delete;
    SpreadsheetConnection &operator=(const SpreadsheetConnection &) = delete;
    virtual ~SpreadsheetConnection() = default;

    /// Opens the workbook at `path`.
    /// @throws NumberedFailure by the platform's error, or BadFile, which `errors` then explains
    virtual void open(const QString &path) = 0;
    virtual void close() = 0;

    /// Descriptions of what the source found wrong at the last `open`.
    virtual QStringList errors() const = 0;

    // Each of these raises 3704 while no workbook is open, NoSuchSheet for a sheet that isn't
    // there, and BadFile when the reading breaks off. Sheets and fields are found without regard to
    // case.

    /// The names of the sheets, in order.
    virtual QStringList sheets() = 0;
    virtual Table describe(const QString &sheet) = 0;
    virtual std::unique_ptr<SheetRows> rows(const QString &sheet) = 0;
};

} // namespace norvane
