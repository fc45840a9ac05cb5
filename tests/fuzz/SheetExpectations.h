#pragma once

#include "NorvaneSheetReader/SheetTable.h"
#include "common/NumberedFailure.h"
#include "fuzz/FuzzTarget.h"

#include <vector>

namespace norvane {

/// Runs `read`, which gives the sheets of a fuzzed workbook or fails with a numbered failure, and
/// looks at what it gives.
template <typename Read>
void expectSheetsOrAFailure(Read &&read)
{
    try {
        const std::vector<SheetTable> sheets = read();
        for (const SheetTable &sheet : sheets) {
            expectThat(sheet.rows() >= 0 && sheet.rows() <= SheetTable::lastRow,
                       "rows are within the sheet");
            expectThat(sheet.fields().size() <= SheetTable::maxColumn + 1,
                       "fields are within the sheet");
            for (const QString &field : sheet.fields())
                expectThat(sheet.fieldIndex(field).has_value(), "a field is found by its name");
            if (sheet.rows() > 0)
                static_cast<void>(sheet.value(sheet.rows() - 1, 0));
        }
    } catch (const NumberedFailure &failure) {
        expectThat(!failure.description().isEmpty(), "a failure says what is wrong");
    }
}

} // namespace norvane
