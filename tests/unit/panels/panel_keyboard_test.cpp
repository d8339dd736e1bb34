#include "panel_fixture.h"
#include "support/test_main.h"

#include <QApplication>
#include <QTest>

#include <algorithm>

/// All of a panel without a mouse.
class PanelKeyboardTest : public QObject
{
    Q_OBJECT

private slots:
    void tabWalksInReadingOrder_data();
    void tabWalksInReadingOrder();
    void stepIsThatOfTheWheel();
    void spaceIsAClick();

private:
    void show(const QString& model, std::uint32_t productId);
    void key(Qt::Key key) { QTest::keyClick(QApplication::focusWidget(), key); }

    PanelFixture fixture;
};

void PanelKeyboardTest::show(const QString& model, std::uint32_t productId)
{
    fixture.plug(productId);
    fixture.start(model);
    fixture.settle();
    fixture.panel->activateWindow();
    QVERIFY(QTest::qWaitForWindowActive(fixture.panel.get()));
}

void PanelKeyboardTest::tabWalksInReadingOrder_data()
{
    QTest::addColumn<std::uint32_t>("productId");
    QTest::addColumn<QStringList>("order");
    QTest::newRow("ka1") << std::uint32_t{1}
                         << QStringList{"Dial/MicValue",
                                        "Button/MicInstrIsChecked",
                                        "Button/Mic20dBIsChecked",
                                        "Button/Mic48VIsChecked",
                                        "Button/MonitorMicIsChecked",
                                        "Dial/HeadphoneValue",
                                        "Button/HeadphoneMuteIsChecked",
                                        "Button/HeadphoneDimIsChecked",
                                        "Dial/OtgToHpValue"};
    QTest::newRow("ka2") << std::uint32_t{2}
                         << QStringList{"Dial/Mic1Value",
                                        "Button/Mic120dBIsChecked",
                                        "Button/Mic148VIsChecked",
                                        "Button/MonitorMic1IsChecked",
                                        "Dial/Mic2Value",
                                        "Button/Mic220dBIsChecked",
                                        "Button/Mic248VIsChecked",
                                        "Button/MonitorMic2IsChecked",
                                        "Dial/SpeakerValue",
                                        "Button/SpeakerMuteIsChecked",
                                        "Button/SpeakerDimIsChecked",
                                        "Dial/OtgToSPValue",
                                        "Dial/HeadphoneValue",
                                        "Button/HeadphoneMuteIsChecked",
                                        "Button/HeadphoneDimIsChecked",
                                        "Dial/OtgToHpValue"};
    QTest::newRow("ks") << std::uint32_t{15}
                        << QStringList{"Dial/MicValue", "Button/MonitorMicIsChecked",
                                       "Dial/HeadphoneValue", "Button/HeadphoneMuteIsChecked",
                                       "Button/HeadphoneDimIsChecked"};
}

void PanelKeyboardTest::tabWalksInReadingOrder()
{
    QFETCH(const std::uint32_t, productId);
    QFETCH(const QStringList, order);
    show(QString::fromLatin1(QTest::currentDataTag()), productId);
    fixture.panel->findChild<QWidget*>(order.constLast())->setFocus(Qt::OtherFocusReason);
    for (const bool forwards : {true, false}) {
        QStringList walked;
        for (qsizetype i = 0; i < order.size(); ++i) {
            key(forwards ? Qt::Key_Tab : Qt::Key_Backtab);
            walked.append(QApplication::focusWidget()->objectName());
        }
        QStringList expected = order;
        if (!forwards) {
            std::reverse(expected.begin(), expected.end());
            expected.append(expected.takeFirst());
        }
        QCOMPARE(walked, expected);
    }
    // Out of an open editor the way is the same.
    key(Qt::Key_Tab);
    QCOMPARE(QApplication::focusWidget()->objectName(), order.constFirst());
    key(Qt::Key_Return);
    key(Qt::Key_Tab);
    QCOMPARE(QApplication::focusWidget()->objectName(), order.at(1));
}

void PanelKeyboardTest::stepIsThatOfTheWheel()
{
    show("ka1", 1);
    fixture.wheel("Dial/MicValue", true);
    const QStringList byWheel = fixture.takeTrace();
    fixture.wheel("Dial/MicValue", false);
    fixture.takeTrace();
    fixture.panel->findChild<QWidget*>("Dial/MicValue")->setFocus(Qt::TabFocusReason);
    key(Qt::Key_Up);
    QVERIFY(!byWheel.isEmpty());
    QCOMPARE(fixture.takeTrace(), byWheel);
}

void PanelKeyboardTest::spaceIsAClick()
{
    show("ka1", 1);
    fixture.click("Button/Mic48VIsChecked");
    const QStringList byMouse = fixture.takeTrace();
    fixture.click("Button/Mic48VIsChecked");
    fixture.takeTrace();
    fixture.panel->findChild<QWidget*>("Button/Mic48VIsChecked")->setFocus(Qt::TabFocusReason);
    key(Qt::Key_Space);
    QVERIFY(!byMouse.isEmpty());
    QCOMPARE(fixture.takeTrace(), byMouse);
}

QUORVEL_TEST_MAIN(PanelKeyboardTest)

#include "panel_keyboard_test.moc"
