#include "controls/knob.h"
#include "panel_fixture.h"
#include "support/test_main.h"

#include <QLineEdit>
#include <QTest>

/// How each panel comes and goes with its device.
class PanelDeviceTest : public QObject
{
    Q_OBJECT

private slots:
    void noDevice_data() { addModelRows(); }
    void noDevice();
    void destructionClosesTheDevice_data() { addModelRows(); }
    void destructionClosesTheDevice();
    void destructionWhileTheEditorIsOpen();

private:
    PanelFixture fixture;
};

void PanelDeviceTest::noDevice()
{
    QFETCH(std::uint32_t, productId);
    const QString model = QTest::currentDataTag();
    fixture.plug(productId);
    fixture.simulated.control().unplug();
    fixture.start(model);
    QCOMPARE(fixture.log().take(),
             QStringList{QStringLiteral("Failed to create device in %1.").arg(model)});
    QVERIFY(fixture.panel->children().isEmpty());
    QVERIFY(fixture.panel->layout() == nullptr);
    QVERIFY(IniFile::read(model + ".ini").isEmpty());
}

void PanelDeviceTest::destructionClosesTheDevice()
{
    QFETCH(std::uint32_t, productId);
    fixture.plug(productId);
    fixture.start(QString(QTest::currentDataTag()));
    QCOMPARE(fixture.simulated.openHandles(), 1);
    fixture.panel.reset();
    QCOMPARE(fixture.simulated.settledHandles(0), 0);
}

void PanelDeviceTest::destructionWhileTheEditorIsOpen()
{
    const char* const key = "Dial/MicValue";
    fixture.plug(SimulatorControl::ka1);
    fixture.start(QStringLiteral("ka1"));
    fixture.settle();
    Knob* const knob = fixture.knob(key);
    QTest::mouseDClick(knob, Qt::LeftButton, {}, knob->textRect.center());
    QTest::keyClicks(knob->editor, "7");
    fixture.panel.reset();
    QCOMPARE(IniFile::read("ka1.ini").value(key), QString("0"));
}

QUORVEL_TEST_MAIN(PanelDeviceTest)
#include "panel_device_test.moc"
