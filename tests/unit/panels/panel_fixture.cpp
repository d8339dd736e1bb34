#include "panel_fixture.h"

#include "controls/button.h"
#include "controls/knob.h"
#include "support/settings_files.h"

#include <QApplication>
#include <QDir>
#include <QLabel>
#include <QStandardPaths>
#include <QTest>
#include <QWheelEvent>

namespace {

QList<QLabel*> readOutLabels(const QWidget& panel)
{
    QList<QLabel*> found;
    const auto labels = panel.findChildren<QLabel*>();
    for (QLabel* candidate : labels) {
        if (candidate->styleSheet().contains(QLatin1String("8px")))
            found.append(candidate);
    }
    return found;
}

} // namespace

void PanelFixture::plug(std::uint32_t productId)
{
    panel.reset();
    forgetSettingsFiles();
    // Made anew with each test: the test framework puts its own handler in place before the first.
    debugLog.reset();
    debugLog.emplace();
    QDir(QStandardPaths::writableLocation(QStandardPaths::AppDataLocation)).removeRecursively();
    simulated.control().reset();
    simulated.control().plug(productId, 0);
}

void PanelFixture::start(const QString& model)
{
    panel.reset();
    simulated.control().clearTrace();
    log().clear();
    panel = PanelModels::make(model);
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
    return readOutLabels(*panel).value(index);
}

QStringList PanelFixture::readOuts() const
{
    QStringList texts;
    const auto labels = readOutLabels(*panel);
    for (const QLabel* readOut : labels)
        texts.append(readOut->text());
    return texts;
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

void addModelRows()
{
    QTest::addColumn<std::uint32_t>("productId");
    QTest::newRow("ka1") << SimulatorControl::ka1;
    QTest::newRow("ka2") << SimulatorControl::ka2;
    QTest::newRow("ks") << SimulatorControl::ks;
}
