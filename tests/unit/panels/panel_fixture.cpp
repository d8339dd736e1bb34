#include "panel_fixture.h"

#include "controls/read_out.h"
#include "support/patience.h"
#include "support/settings_files.h"

#include <QApplication>
#include <QDir>
#include <QStandardPaths>
#include <QTest>
#include <QWheelEvent>

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
    QVERIFY(QTest::qWaitForWindowExposed(panel.get(), patience));
    simulated.control().clearTrace();
    log().clear();
}

QStringList PanelFixture::readOuts() const
{
    QStringList texts;
    for (const ReadOut* readOut : panel->findChildren<ReadOut*>())
        texts.append(readOut->text());
    return texts;
}

void PanelFixture::wheel(const char* key, bool up)
{
    auto* const target = panel->findChild<QWidget*>(QLatin1String(key));
    const QPointF centre = target->rect().center();
    QWheelEvent event(centre, target->mapToGlobal(centre), QPoint(), QPoint(0, up ? 120 : -120),
                      Qt::NoButton, Qt::NoModifier, Qt::NoScrollPhase, false);
    QApplication::sendEvent(target, &event);
}

QStringList PanelFixture::takeTrace()
{
    QStringList lines = simulated.takeTrace();
    lines.removeAll(TraceText::request(1, 0xFFDC2074, 768));
    return lines;
}

void addModelRows()
{
    QTest::addColumn<PanelTable::Model>("model");
    for (const PanelTable::Model& model : PanelTable::models)
        QTest::newRow(model.name) << model;
}
