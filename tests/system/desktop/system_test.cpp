#include "system/desktop/system_test.h"

void SystemTest::init()
{
    current = std::make_unique<PanelSession>();
}

void SystemTest::cleanup()
{
    if (QTest::currentTestFailed())
        current->printPanelLines();
    current.reset();
}

std::optional<DesktopWindow> SystemTest::arrive(const QString& model)
{
    // The last step that an arrival sets off.
    const QString settled = QStringLiteral("设置初始化完成");
    if (!session().startSimulator() || !simulator().plug(model) || !session().startPanel() ||
        !panel().waitForLine(settled) || !session().openMainWindow())
        return std::nullopt;
    return Desktop::waitForWindow(QStringLiteral("^Quorvel %1 - FW: ").arg(model.toUpper()));
}
