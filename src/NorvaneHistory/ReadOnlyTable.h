#pragma once

#include <QStringList>
#include <QTableWidget>

namespace norvane {

/// A short table to read, whose columns are as wide as what stands in them.
class ReadOnlyTable : public QTableWidget
{
    Q_OBJECT

public:
    explicit ReadOnlyTable(QWidget *parent = nullptr);

    /// @param rows  as many fields each as there are captions
    void showRows(const QStringList &captions, const QList<QStringList> &rows);

protected:
    void resizeEvent(QResizeEvent *event) override;

private:
    /// The last column takes what room is left.
    void stretchLastColumn();

    int m_lastWidth = 0; ///< which the last column needs, in pixels
};

} // namespace norvane
