#pragma once

#include "NorvaneSheetReader/CellTexts.h"

#include <QHash>
#include <QString>
#include <QStringList>

#include <deque>
#include <memory>
#include <optional>
#include <utility>

namespace norvane {

/// The cells of one sheet as a table. The first row that holds anything gives the names of the
/// fields; the rows behind it, up to the last one that holds anything, are the records.
class SheetTable
{
public:
    // What a sheet can hold, counted from 0.
    static constexpr qint32 lastRow = 1048575;
    static constexpr qint32 maxColumn = 16383;

    /// @param texts  those of the whole workbook
    SheetTable(QString name, std::shared_ptr<CellTexts> texts)
        : m_name(std::move(name)), m_texts(std::move(texts))
    {}

    const QString &name() const { return m_name; }

    /// Puts a text in a cell; a null text is no value. Of several for one cell the last counts.
    /// @throws NumberedFailure BadFile for a place beyond the sheet, or as CellTexts
    void set(qint32 row, qint32 column, const QString &text);
    /// The same with a text that lies in the workbook's texts already.
    void set(qint32 row, qint32 column, CellTexts::Place text);
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
        CellTexts::Place text;
    };

    const Cell *find(qint32 row, qint32 column) const;
    void nameFields(qint32 lastColumn);

    QString m_name;
    std::shared_ptr<CellTexts> m_texts;
    // Grows without being copied, which would take as much again.
    std::deque<Cell> m_cells; ///< once finished, by row and column
    QStringList m_fields;
    QHash<QString, qint32> m_fieldIndexes; ///< by folded name
    qint32 m_headerRow = 0;
    qint32 m_rows = 0;
};

} // namespace norvane
