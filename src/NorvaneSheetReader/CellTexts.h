#pragma once

#include <QString>
#include <QtGlobal>

#include <cstddef>
#include <memory>
#include <vector>

namespace norvane {

/// The texts of a workbook's cells, packed one behind the other: as strings of their own, those of
/// a large workbook would take more memory than the process may have. A text that many cells name
/// is kept once.
class CellTexts
{
public:
    /// Where a text lies.
    using Place = quint64;
    static constexpr Place none = ~Place{0};

    static constexpr qint64 maxCells = 6'000'000;
    static constexpr qint64 maxBytes = 256 << 20;

    /// @return `none` for a null text
    /// @throws NumberedFailure BadFile once the texts take more than `maxBytes`
    Place add(const QString &text);
    /// A null text for `none`.
    QString at(Place place) const;

    /// To be called for each cell, and for each text that cells may name.
    /// @throws NumberedFailure BadFile once there are more than `maxCells`
    static void count(qint64 &counter);
    void countCell() { count(m_cells); }
    void countShared() { count(m_shared); }

private:
    char *room(std::size_t bytes);

    std::vector<std::unique_ptr<char[]>> m_blocks;
    std::size_t m_blockLength = 0; ///< of the last block
    std::size_t m_used = 0;        ///< of the last block
    qint64 m_bytes = 0;
    qint64 m_cells = 0;
    qint64 m_shared = 0;
};

} // namespace norvane
