#include "NorvaneSheetReader/SheetTable.h"

#include "common/SpreadsheetConnection.h"

#include <algorithm>
#include <tuple>

namespace norvane {

using namespace Qt::StringLiterals;

namespace {

/// A name as a list shows it: on one line, without blanks around it.
QString shownName(QString text)
{
    for (QChar &character : text) {
        if (character == u'\r' || character == u'\n' || character == u'\t')
            character = u' ';
    }
    return text.trimmed();
}

} // namespace

void SheetTable::set(qint32 row, qint32 column, const QString &text)
{
    set(row, column, m_texts->add(text));
}

void SheetTable::set(qint32 row, qint32 column, CellTexts::Place text)
{
    if (row < 0 || row > lastRow || column < 0 || column > maxColumn)
        SheetFailure::raise(SheetFailure::BadFile, u"The workbook names a cell that can't be."_s);
    m_texts->countCell();
    m_cells.push_back({row, column, text});
}

void SheetTable::finish()
{
    const auto place = [](const Cell &cell) { return std::tie(cell.row, cell.column); };
    if (!std::ranges::is_sorted(m_cells, {}, place))
        std::ranges::stable_sort(m_cells, {}, place);
    // Of equal places the last one stays.
    const auto kept =
        std::unique(m_cells.rbegin(), m_cells.rend(),
                    [&](const Cell &a, const Cell &b) { return place(a) == place(b); });
    m_cells.erase(m_cells.begin(), kept.base());
    std::erase_if(m_cells, [](const Cell &cell) { return cell.text == CellTexts::none; });
    if (m_cells.empty())
        return;
    m_headerRow = m_cells.front().row;
    m_rows = m_cells.back().row - m_headerRow;
    nameFields(std::ranges::max_element(m_cells, {}, &Cell::column)->column);
}

void SheetTable::nameFields(qint32 lastColumn)
{
    QHash<QString, int> lastNumbers; // behind each name, folded, that was there before
    for (qint32 column = 0; column <= lastColumn; ++column) {
        const Cell *const header = find(m_headerRow, column);
        QString name = header != nullptr ? shownName(m_texts->at(header->text)) : QString();
        if (name.isEmpty())
            name = u"F%1"_s.arg(column + 1);
        QString unique = name;
        while (m_fieldIndexes.contains(unique.toCaseFolded()))
            unique = name + QString::number(++lastNumbers[name.toCaseFolded()]);
        m_fieldIndexes.insert(unique.toCaseFolded(), column);
        m_fields.append(unique);
    }
}

std::optional<qint32> SheetTable::fieldIndex(const QString &field) const
{
    const auto found = m_fieldIndexes.constFind(field.toCaseFolded());
    return found != m_fieldIndexes.constEnd() ? std::optional(*found) : std::nullopt;
}

std::optional<QString> SheetTable::value(qint32 record, qint32 field) const
{
    const Cell *const cell = find(m_headerRow + 1 + record, field);
    return cell != nullptr ? std::optional(m_texts->at(cell->text)) : std::nullopt;
}

const SheetTable::Cell *SheetTable::find(qint32 row, qint32 column) const
{
    const auto found =
        std::ranges::lower_bound(m_cells, std::tie(row, column), {},
                                 [](const Cell &cell) { return std::tie(cell.row, cell.column); });
    return found != m_cells.end() && found->row == row && found->column == column ? &*found
                                                                                  : nullptr;
}

} // namespace norvane
