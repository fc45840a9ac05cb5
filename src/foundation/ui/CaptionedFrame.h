#pragma once

#include <QWidget>

namespace norvane {

/// A container with a thin rounded border that its caption interrupts at the top left. Its controls
/// stand relative to its outer corner, the strip of the caption included.
class CaptionedFrame : public QWidget
{
    Q_OBJECT
    Q_PROPERTY(QString caption READ caption WRITE setCaption)
    Q_PROPERTY(bool frameEnabled READ isFrameEnabled WRITE setFrameEnabled)

public:
    explicit CaptionedFrame(QWidget *parent = nullptr);

    const QString &caption() const { return m_caption; }
    void setCaption(const QString &caption);

    /// The frame's own enabled flag. It greys the caption and leaves the controls inside alone,
    /// each of which has its own.
    bool isFrameEnabled() const { return m_enabled; }
    void setFrameEnabled(bool enabled);

protected:
    void paintEvent(QPaintEvent *event) override;

private:
    QString m_caption;
    bool m_enabled = true;
};

} // namespace norvane
