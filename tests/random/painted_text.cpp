#include "random/painted_text.h"

#include <QPaintDevice>
#include <QPaintEngine>

namespace {

/// Takes note of texts and paints nothing.
class TextEngine : public QPaintEngine
{
public:
    TextEngine()
        : QPaintEngine(AllFeatures)
    {
    }

    bool begin(QPaintDevice*) override { return true; }
    bool end() override { return true; }
    void updateState(const QPaintEngineState&) override {}
    void drawPixmap(const QRectF&, const QPixmap&, const QRectF&) override {}
    void drawPath(const QPainterPath&) override {}
    void drawTextItem(const QPointF&, const QTextItem& item) override { text += item.text(); }
    Type type() const override { return User; }

    QString text;
};

/// A sheet of the size and resolution of a widget.
class TextSheet : public QPaintDevice
{
public:
    explicit TextSheet(QWidget& painted)
        : widget(painted)
    {
    }

    QPaintEngine* paintEngine() const override { return &engine; }
    const QString& text() const { return engine.text; }

protected:
    int metric(PaintDeviceMetric metric) const override
    {
        switch (metric) {
        case PdmWidth:
            return widget.width();
        case PdmHeight:
            return widget.height();
        case PdmDpiX:
        case PdmPhysicalDpiX:
            return widget.logicalDpiX();
        case PdmDpiY:
        case PdmPhysicalDpiY:
            return widget.logicalDpiY();
        case PdmDevicePixelRatio:
            return 1;
        default:
            return QPaintDevice::metric(metric);
        }
    }

private:
    QWidget& widget;
    mutable TextEngine engine;
};

} // namespace

QString paintedText(QWidget& widget)
{
    TextSheet sheet(widget);
    widget.render(&sheet, {}, {}, QWidget::RenderFlags());
    return sheet.text();
}
