#include "NorvaneSMS/import/readers/RecipientReaders.h"

namespace norvane {

using namespace Qt::StringLiterals;

namespace {

void add(clsCollection &recipients, const QString &item, const QString &number, qint32 row,
         Duplicates duplicates)
{
    const QString key = duplicates == Duplicates::Remove ? number : u"K"_s + QString::number(row);
    recipients.add(item, key, true, true);
}

} // namespace

QString CleanNumber(QString text)
{
    return text.remove(u' ').remove(u'-');
}

QString FieldText(const std::optional<QString> &field)
{
    return field.value_or(QString());
}

void readTextRecipients(NumberedFiles &files, const QString &path, Duplicates duplicates,
                        clsCollection &recipients)
{
    files.openForInput(textFileNumber, path);
    for (qint32 row = 1; !files.isAtEnd(textFileNumber); ++row) {
        const QString line = files.lineInput(textFileNumber);
        const QString number = CleanNumber(line.left(line.indexOf(u'|')));
        if (!number.isEmpty())
            add(recipients, line, number, row, duplicates);
    }
    files.close(textFileNumber);
}

void readSheetRecipients(SpreadsheetConnection &connection, const QString &sheet,
                         const QString &field, Duplicates duplicates, clsCollection &recipients)
{
    const std::unique_ptr<SheetRows> rows = connection.rows(sheet);
    for (qint32 row = 1; !rows->isAtEnd(); ++row) {
        const QString number = CleanNumber(FieldText(rows->value(field)));
        if (!number.isEmpty())
            add(recipients, number, number, row, duplicates);
        rows->moveNext();
    }
}

} // namespace norvane
