#include "panel_fixture.h"

#include "controls/button.h"
#include "controls/knob.h"

#include <QApplication>
#include <QDir>
#include <QLabel>
#include <QStandardPaths>
#include <QTest>
#include <QWheelEvent>

void PanelFixture::plug(std::uint32_t productId)
{
    panel.reset();
    // Made anew with each test: the test framework puts its own handler in place before the first.
    debugLog.reset();
    debugLog.emplace();
    QDir(QStandardPaths::writableLocation(QStandardPaths::AppDataLocation)).removeRecursively();
    simulated.control().reset();
    simulated.control().plug(productId, 0);
}

void PanelFixture::settle()
{
    panel->show();
    QVERIFY(QTest::qWaitForWindowExposed(panel.get()));
    simulated.control().clearTrace();
    log().clear();
}

Knob* PanelFixture::knob(const char* key) const
{
    auto* found = panel->findChild<Knob*>(QLatin1String(key));
    if (found == nullptr)
        qFatal("no knob %s", key);
    return found;
}

Button* PanelFixture::button(const char* key) const
{
    auto* found = panel->findChild<Button*>(QLatin1String(key));
    if (found == nullptr)
        qFatal("no button %s", key);
    return found;
}

QLabel* PanelFixture::label(int index) const
{
    QList<QLabel*> readOuts;
    const auto labels = panel->findChildren<QLabel*>();
    for (QLabel* candidate : labels) {
        if (candidate->styleSheet().contains(QLatin1String("8px")))
            readOuts.append(candidate);
    }
    return readOuts.value(index);
}

void PanelFixture::wheel(const char* key, bool up)
{
    Knob* target = knob(key);
    const QPointF centre = target->rect().center();
    QWheelEvent event(centre, target->mapToGlobal(centre), QPoint(), QPoint(0, up ? 120 : -120),
                      Qt::NoButton, Qt::NoModifier, Qt::NoScrollPhase, false);
    QApplication::sendEvent(target, &event);
}

void PanelFixture::click(const char* key)
{
    QTest::mouseClick(button(key), Qt::LeftButton);
}

QStringList PanelFixture::takeTrace()
{
    QStringList lines = simulated.takeTrace();
    lines.removeAll(TraceText::request(1, 0xFFDC2074, 768));
    return lines;
}

QString cellsAt(const QList<int>& cells, const char* gain)
{
    QStringList texts;
    for (const int cell : cells)
        texts.append(QStringLiteral("%1=%2").arg(cell).arg(QLatin1String(gain)));
    return texts.join(u' ');
}

QString unityOutputs()
{
    QList<int> cells;
    for (int cell = 8192; cell < 8288; ++cell)
        cells.append(cell);
    return cellsAt(cells, "1");
}
