#pragma once

#include "NorvaneHistory/HistorySource.h"

#include <QAbstractTableModel>

namespace norvane {

/// A table of messages: its captions, the columns with which each begins, and how its fetching
/// went.
class MessageTableModel : public QAbstractTableModel
{
    Q_OBJECT

public:
    /// A table may have others behind them.
    enum CommonColumn { Moment, Phone, Message, commonColumns };

    /// @param captions  text ids, one for each column
    explicit MessageTableModel(QList<qint32> captions, QObject *parent = nullptr);

    int columnCount(const QModelIndex &parent = {}) const override;
    QVariant headerData(int section, Qt::Orientation orientation, int role) const override;

Q_SIGNALS:
    /// The list was fetched from its beginning.
    void reloaded();
    /// It couldn't be; the rows are those of before.
    void reloadFailed(const SourceFailure &failure);
    /// The rows are those of another filter than before.
    void searched();
    /// Rows behind, between or above those that are there couldn't be fetched. Whoever asks for
    /// them again causes another attempt.
    void fetchFailed(const SourceFailure &failure);
    /// Rows were fetched again after a failure.
    void recovered();
    /// A row couldn't be changed in the engine, and is as before.
    void changeFailed(const SourceFailure &failure);

protected:
    /// What one of the common columns shows of a message; empty for another column.
    /// @param at  as the store has it
    static QString commonText(int column, const QString &at, const QString &phone,
                              const QString &text);
    /// What a column shows of a row that is still being fetched.
    static QVariant dataOfUnfetched(int column, int role);

private:
    QList<qint32> m_captions;
};

} // namespace norvane
