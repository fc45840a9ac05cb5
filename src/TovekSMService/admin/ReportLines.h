#pragma once

#include <QList>
#include <QString>

#include <optional>

namespace norvane {

/// Lists of the store as an administrator reads them, or a spreadsheet.
namespace ReportLines {

enum class Format { Text, Csv };

/// A field of a line.
struct Field
{
    QString text;
    bool isOurs = false; ///< nobody outside had a hand in it, so that it is no formula
};

std::optional<Format> formatNamed(const QString &name);

/// A day or a moment, "yyyy-MM-dd" or "yyyy-MM-ddTHH:mm:ss", as the store writes it.
std::optional<QString> moment(const QString &text);

/// One line with its end.
QString line(const QList<Field> &fields, Format format);

} // namespace ReportLines

} // namespace norvane
