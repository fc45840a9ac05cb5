#pragma once

#include <QPixmap>
#include <QWidget>

namespace norvane {

/// A drawing that fills its place evenly scaled.
class ImageControl : public QWidget
{
    Q_OBJECT

public:
    explicit ImageControl(const QString &file, QWidget *parent = nullptr);

protected:
    void paintEvent(QPaintEvent *event) override;

private:
    QString m_file;
    QPixmap m_drawn; ///< the drawing at the size and pixel ratio of the last painting
};

} // namespace norvane
