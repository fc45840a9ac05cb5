#pragma once

#include "import/readers/SpreadsheetConnection.h"

#include <QHash>
#include <QString>

#include <optional>
#include <utility>
#include <vector>

/// How many cells the sheets of a workbook may still hold.
class CellBudget
{
public:
    /// @throws NumberedFailure BadFile once there are too many
    void takeOne();

private:
    qint64 m_left = 6'000'000;
};

/// The cells of one sheet as a table. The first row that holds anything gives the names of the
/// fields; the rows behind it, up to the last one that holds anything, are the records.
class SheetTable
{
public:
    // What a sheet can hold, counted from 0.
    static constexpr qint32 LastRow = 1048575;
    static constexpr qint32 LastColumn = 16383;

    SheetTable(QString name, CellBudget &budget) : m_name(std::move(name)), m_budget(&budget) {}

    const QString &name() const { return m_name; }

    /// Puts a text in a cell; a null text is no value. Of several for one cell the last counts.
    /// @throws NumberedFailure BadFile for a place beyond the sheet, or with the budget used up
    void set(qint32 row, qint32 column, const QString &text);
    /// To be called once, behind the last `set`.
    void finish();

    const QStringList &fields() const { return m_fields; }
    qint32 rows() const { return m_rows; }

    /// The number of the field in `fields`, without regard to case.
    std::optional<qint32> fieldIndex(const QString &field) const;
    /// The value of a field in a record, counted from 0; nothing for null.
    std::optional<QString> value(qint32 record, qint32 field) const;

private:
    struct Cell
    {
        qint32 row;
        qint32 column;
        QString text;
    };

    const Cell *find(qint32 row, qint32 column) const;
    void nameFields(qint32 lastColumn);

    QString m_name;
    CellBudget *m_budget;
    std::vector<Cell> m_cells; ///< once finished, by row and column
    QStringList m_fields;
    QHash<QString, qint32> m_fieldIndexes; ///< by folded name
    qint32 m_headerRow = 0;
    qint32 m_rows = 0;
};
