#pragma once

#include "NorvaneHistory/HistorySource.h"

#include <QObject>
#include <QStringList>

#include <functional>

class QIODevice;
class QPrinter;

namespace norvane {

/// How the fields of a row are given.
enum class OutputForm {
    Stored, ///< as the store has them, for other programs
    Shown,  ///< as the window shows them
};

/// A list as it is written or printed: every row that its filter lets through, shown or not.
struct OutputList
{
    QString title;
    QStringList captions;
    /// Which columns take the room that the others leave, as a share of 100.
    QList<int> widths;
    /// Numbers and words of our own, which are never a formula.
    QList<bool> areOurs;
    std::function<void(QObject *context, const PageRequest &request,
                       const SourceAnswer<Page<QStringList>> &answer)>
        fetch;
};

/// Takes a page of rows for who wants it as fields.
template <typename Row>
SourceAnswer<Page<Row>> asFields(const SourceAnswer<Page<QStringList>> &answer,
                                 QStringList (*fieldsOf)(const Row &))
{
    return [answer, fieldsOf](const SourceResult<Page<Row>> &page) {
        answer(page.map([fieldsOf](const Page<Row> &rows) {
            Page<QStringList> fields{{}, rows.next};
            for (const Row &row : rows.rows)
                fields.rows.append(fieldsOf(row));
            return fields;
        }));
    };
}

/// Walks through a list from its beginning, page by page.
class ListWalk : public QObject
{
    Q_OBJECT

public:
    using Rows = QList<QStringList>;
    /// Takes rows; gives false to end the walk.
    using Take = std::function<bool(const Rows &rows)>;

    ListWalk(OutputList list, Take take, QObject *parent = nullptr);

    void start();
    /// Ends the walk; no signal follows.
    void cancel();

    qsizetype rowsTaken() const { return m_rows; }

Q_SIGNALS:
    void advanced(qsizetype rows);
    /// All rows were taken, or `take` wanted no more.
    void finished();
    void failed(const SourceFailure &failure);

private:
    void fetch(const QString &after);
    void take(const Page<QStringList> &page);

    OutputList m_list;
    Take m_take;
    qsizetype m_rows = 0;
    bool m_isCancelled = false;
};

namespace ListOutput {

/// One record of CSV in UTF-8, with its end.
QByteArray csvRecord(const QStringList &fields, const QList<bool> &areOurs = {});
/// What a CSV file begins with: the mark of UTF-8, by which spreadsheets know it, and the captions.
QByteArray csvHead(const OutputList &list);

/// Rows that are printed at most.
inline constexpr qsizetype maxPrintedRows = 10'000;

/// Prints rows as a table with the captions on each page.
/// @return false if the printer didn't take all of it
bool print(const OutputList &list, const QList<QStringList> &rows, QPrinter &printer);

} // namespace ListOutput

} // namespace norvane
