#pragma once

#include <QProxyStyle>

namespace norvane {

/// The toolkit's own style with the program's icons in message boxes, no icons on their buttons,
/// and fields that stand out from a dark window. An outline marks the control that has the focus,
/// with a contrast of at least 3 : 1 on every window.
class ConsoleStyle : public QProxyStyle
{
    Q_OBJECT

public:
    ConsoleStyle();

    using QProxyStyle::polish;
    void polish(QWidget *widget) override;
    void unpolish(QWidget *widget) override;
    int styleHint(StyleHint hint, const QStyleOption *option, const QWidget *widget,
                  QStyleHintReturn *returnData) const override;
    int pixelMetric(PixelMetric metric, const QStyleOption *option,
                    const QWidget *widget) const override;
    QIcon standardIcon(StandardPixmap standardIcon, const QStyleOption *option,
                       const QWidget *widget) const override;
    void drawPrimitive(PrimitiveElement element, const QStyleOption *option, QPainter *painter,
                       const QWidget *widget) const override;
    void drawComplexControl(ComplexControl control, const QStyleOptionComplex *option,
                            QPainter *painter, const QWidget *widget) const override;

protected:
    bool eventFilter(QObject *watched, QEvent *event) override;
};

} // namespace norvane
