#include "controls/button.h"
#include "controls/knob.h"
#include "panel_fixture.h"
#include "panels/panel.h"
#include "support/lock_file.h"
#include "support/test_main.h"

#include <QElapsedTimer>
#include <QFile>
#include <QLockFile>
#include <QTest>

using namespace TraceText;

/// Saving while something is in its way, and saveState().
class PanelStorageTest : public QObject
{
    Q_OBJECT

private slots:
    void leftoverLock_data() { LockFiles::addLeftoverRows(); }
    void leftoverLock();
    void heldLock();
    void leftoversOfAKill_data() { addModelRows(); }
    void leftoversOfAKill();
    void saveState_data();
    void saveState();
    void saveStateSavesWhatWaits();
    void saveStateOfAnEmptyPanel_data() { addModelRows(); }
    void saveStateOfAnEmptyPanel();

private:
    Panel& panel() { return dynamic_cast<Panel&>(*fixture.panel); }

    PanelFixture fixture;
};

namespace {

const QMap<QString, std::uint32_t> models{
    {"ka1", SimulatorControl::ka1}, {"ka2", SimulatorControl::ka2}, {"ks", SimulatorControl::ks}};

QStringList complaints(const QStringList& lines)
{
    return lines.filter(QStringLiteral("Cannot save the settings yet"));
}

} // namespace

/// What a process that was killed has left does not keep a panel from starting.
void PanelStorageTest::leftoverLock()
{
    for (const QString& model : models.keys()) {
        const QString ini = model + ".ini";
        fixture.plug(models.value(model));
        LockFiles::plant(ini);
        QElapsedTimer clock;
        clock.start();
        fixture.start(model);
        QVERIFY2(clock.elapsed() < LockFiles::patience,
                 qPrintable(QString::number(clock.elapsed())));
        QCOMPARE(fixture.log().lines().constLast(), QString("已从配置文件加载控件状态"));
        QCOMPARE(complaints(fixture.log().lines()), QStringList());
        QCOMPARE(IniFile::read(ini).value("Dial/HeadphoneValue"), QString("-80"));
        QVERIFY(!QFile::exists(LockFiles::path(ini)));

        LockFiles::plant(ini);
        clock.start();
        fixture.wheel("Dial/HeadphoneValue", true);
        QVERIFY2(clock.elapsed() < LockFiles::patience,
                 qPrintable(QString::number(clock.elapsed())));
        QCOMPARE(IniFile::read(ini).value("Dial/HeadphoneValue"), QString("-79"));
    }
}

/// The panel works on, the next panel takes up what waits, and the file gets it in the end.
void PanelStorageTest::heldLock()
{
    fixture.plug(SimulatorControl::ka2);
    IniFile::write("ka2.ini", {{"Dial/Mic1Value", "5"}, {"Button/Mic148VIsChecked", "true"}});
    fixture.start("ka2");
    QLockFile holder(LockFiles::path("ka2.ini"));
    QVERIFY(holder.tryLock(0));
    fixture.takeTrace();
    fixture.log().clear();
    fixture.wheel("Dial/Mic1Value", true);
    QCOMPARE(fixture.takeTrace(), QStringList{command(1, "01 07 00 02 01 0C")});
    const QStringList lines = fixture.log().take();
    QCOMPARE(lines.size(), 3);
    QCOMPARE(lines.constFirst(), QString("Mic volume set to: 6"));
    QCOMPARE(complaints(lines), lines.mid(1, 1));
    QCOMPARE(lines.constLast(), QString("控件状态已保存到配置文件"));
    fixture.click("Button/Mic148VIsChecked");

    QElapsedTimer clock;
    clock.start();
    fixture.start("ka2");
    QVERIFY2(clock.elapsed() < LockFiles::patience, qPrintable(QString::number(clock.elapsed())));
    QCOMPARE(fixture.knob("Dial/Mic1Value")->value, 6);
    QVERIFY(!fixture.button("Button/Mic148VIsChecked")->on);
    QCOMPARE(complaints(fixture.log().lines()), QStringList());
    QCOMPARE(IniFile::read("ka2.ini").value("Dial/Mic1Value"), QString("5"));
    fixture.panel.reset();
    holder.unlock();
    QTRY_COMPARE(IniFile::read("ka2.ini").value("Dial/Mic1Value"), QString("6"));
    QCOMPARE(IniFile::read("ka2.ini").value("Button/Mic148VIsChecked"), QString("false"));
}

void PanelStorageTest::leftoversOfAKill()
{
    QFETCH(const std::uint32_t, productId);
    const QString model = QTest::currentDataTag();
    fixture.plug(productId);
    IniFile::writeRaw(model + ".ini.qRsTuv", "[Dial]\n");
    fixture.start(model);
    QVERIFY(!QFile::exists(IniFile::path(model + ".ini.qRsTuv")));
}

void PanelStorageTest::saveState_data()
{
    QTest::addColumn<QStringList>("lines");
    QTest::newRow("ka1") << QStringList();
    QTest::newRow("ka2") << QStringList{"控件状态已保存到配置文件"};
    QTest::newRow("ks") << QStringList();
}

void PanelStorageTest::saveState()
{
    QFETCH(const QStringList, lines);
    const QString model = QTest::currentDataTag();
    fixture.plug(models.value(model));
    fixture.start(model);
    fixture.takeTrace();
    fixture.log().clear();
    const QMap<QString, QString> before = IniFile::read(model + ".ini");
    panel().saveState();
    QCOMPARE(fixture.log().take(), lines);
    QCOMPARE(fixture.takeTrace(), QStringList());
    QCOMPARE(IniFile::read(model + ".ini"), before);
}

void PanelStorageTest::saveStateSavesWhatWaits()
{
    for (const QString& model : models.keys()) {
        const QString ini = model + ".ini";
        fixture.plug(models.value(model));
        fixture.start(model);
        {
            QLockFile holder(LockFiles::path(ini));
            QVERIFY(holder.tryLock(0));
            fixture.wheel("Dial/HeadphoneValue", true);
            QCOMPARE(IniFile::read(ini).value("Dial/HeadphoneValue"), QString("-80"));
        }
        panel().saveState();
        QCOMPARE(IniFile::read(ini).value("Dial/HeadphoneValue"), QString("-79"));
    }
}

void PanelStorageTest::saveStateOfAnEmptyPanel()
{
    QFETCH(const std::uint32_t, productId);
    const QString model = QTest::currentDataTag();
    fixture.plug(productId);
    fixture.simulated.control().unplug();
    fixture.start(model);
    fixture.log().clear();
    panel().saveState();
    QCOMPARE(fixture.log().take(), QStringList());
    QVERIFY(!QFile::exists(IniFile::path(model + ".ini")));
}

QUORVEL_TEST_MAIN(PanelStorageTest)
#include "panel_storage_test.moc"
