#include "panel_models.h"

#include "panels/ka1.h"
#include "panels/ka2.h"
#include "panels/ks.h"

std::unique_ptr<QWidget> PanelModels::make(const QString& model)
{
    if (model == QLatin1String("ka1"))
        return std::make_unique<ka1>(nullptr);
    if (model == QLatin1String("ka2"))
        return std::make_unique<ka2>(nullptr);
    if (model == QLatin1String("ks"))
        return std::make_unique<ks>(nullptr);
    qFatal("no model %s", qPrintable(model));
}
