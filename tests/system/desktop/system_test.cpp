#include "system/desktop/system_test.h"

#include "system/desktop/wait_until.h"

#include <algorithm>

namespace {

constexpr quint32 readProductId = 0xFFDC2084;

} // namespace

void SystemTest::init()
{
    current = std::make_unique<PanelSession>();
}

void SystemTest::endPanel()
{
    // In order, and not by a kill: what it has left undone or leaked is told by its exit code.
    if (current->panelRuns()) {
        QVERIFY(current->askToEnd(panel()));
        QCOMPARE(panel().waitForExit(), std::optional(0));
    }
}

void SystemTest::cleanup()
{
    endPanel();
    if (QTest::currentTestFailed())
        current->printPanelLines();
    current.reset();
}

std::optional<DesktopWindow> SystemTest::arrive(const QString& model)
{
    const QString settled = QStringLiteral("设置初始化完成");
    if (!session().startSimulator() || !simulator().plug(model) || !session().startPanel() ||
        !panel().waitForLine(settled) || !session().openMainWindow())
        return std::nullopt;
    const auto window =
        Desktop::waitForWindow(QStringLiteral("^Quorvel %1 - FW: ").arg(model.toUpper()));
    // The watch starts when all else is done.
    return waitForWatch(1) ? window : std::nullopt;
}

bool SystemTest::waitForLooks(int count)
{
    const QString look = QStringLiteral("Device PID: 0");
    return panel().waitForLine(look, static_cast<int>(panel().debugLines().count(look)) + count);
}

bool SystemTest::waitForWatch(int count)
{
    const int before = watches();
    return before >= 0 && waitUntil([&] { return watches() >= before + count; });
}

int SystemTest::watches() const
{
    const auto requests = current->simulator().requests();
    if (!requests)
        return -1;
    return static_cast<int>(
        std::count_if(requests->begin(), requests->end(),
                      [](const TracedRequest& request) { return request.code == readProductId; }));
}

int SystemTest::handles(int expected)
{
    return awaited(expected, [&] { return simulator().openHandles().value_or(-1); });
}

QStringList SystemTest::packets(const QStringList& expected)
{
    return awaited(expected, [&] {
        return simulator().packets().value_or(QStringList(QStringLiteral("no answer")));
    });
}

QString SystemTest::stored(const QString& fileName, const QString& key, const QString& expected)
{
    return awaited(expected, [&] { return session().storedValue(fileName, key); });
}
