#include "panels/panel.h"

#include "panels/panel_widgets.h"

#include <QBoxLayout>
#include <QFrame>
#include <QLabel>

#include <utility>

Panel::Panel(PanelModel model, QWidget* parent)
    : QWidget(parent)
    , link(std::move(model))
{
}

bool Panel::begin()
{
    if (!link.openDevice())
        return false;
    link.openSettings();
    root = PanelWidgets::rootLayout(this);
    return true;
}

PanelStrip Panel::inputStrip(const QString& heading)
{
    return strip(heading, {10, 10, 20, 10}, {});
}

PanelStrip Panel::outputStrip(const QString& heading, Qt::Alignment alignment)
{
    return strip(heading, {20, 10, 10, 10}, alignment);
}

PanelStrip Panel::strip(const QString& heading, QMargins margins, Qt::Alignment alignment)
{
    auto* layout = new QVBoxLayout;
    layout->setContentsMargins(margins);
    layout->setAlignment(alignment);
    root->addLayout(layout);
    layout->addWidget(PanelWidgets::title(heading));
    return {controls, meters, layout, heading};
}

void Panel::separator()
{
    root->addWidget(PanelWidgets::separator(this));
}

void Panel::start()
{
    PanelWidgets::tabInReadingOrder(root);
    link.presetOutputGains();
    meters.start(this);
    link.bringBack(this, [this] { controls.restore(); });
}
