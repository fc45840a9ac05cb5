#include "NorvaneHistory/FailingPrinter.h"

#include <QPaintEngine>
#include <QPrintEngine>

namespace norvane {

class FailingPrinter::Engine : public QPaintEngine, public QPrintEngine
{
public:
    explicit Engine(Failing failing) : QPaintEngine(AllFeatures), m_failing(failing) {}

    // QPaintEngine
    bool begin(QPaintDevice *) override { return true; }
    bool end() override { return m_failing != Failing::End; }
    void updateState(const QPaintEngineState &) override {}
    void drawPixmap(const QRectF &, const QPixmap &, const QRectF &) override {}
    void drawPath(const QPainterPath &) override {}
    void drawLines(const QLineF *, int) override {}
    void drawTextItem(const QPointF &, const QTextItem &) override {}
    Type type() const override { return User; }

    // QPrintEngine
    void setProperty(PrintEnginePropertyKey, const QVariant &) override {}
    QVariant property(PrintEnginePropertyKey) const override { return {}; }
    bool newPage() override { return m_failing != Failing::NewPage; }
    bool abort() override { return true; }
    int metric(QPaintDevice::PaintDeviceMetric metric) const override
    {
        constexpr int size = 1000;
        constexpr int resolution = 72;
        switch (metric) {
        case QPaintDevice::PdmWidth:
        case QPaintDevice::PdmHeight:
            return size;
        case QPaintDevice::PdmDpiX:
        case QPaintDevice::PdmDpiY:
        case QPaintDevice::PdmPhysicalDpiX:
        case QPaintDevice::PdmPhysicalDpiY:
            return resolution;
        default:
            return 1;
        }
    }
    QPrinter::PrinterState printerState() const override { return QPrinter::Active; }

private:
    Failing m_failing;
};

FailingPrinter::FailingPrinter(Failing failing) : m_engine(std::make_unique<Engine>(failing))
{
    setEngines(m_engine.get(), m_engine.get());
}

FailingPrinter::~FailingPrinter() = default;

} // namespace norvane
