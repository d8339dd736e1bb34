#include "controls/button.h"
#include "controls/knob.h"
#include "support/ini_file.h"
#include "support/screen_picture.h"
#include "support/test_main.h"
#include "window_stage.h"

#include <QComboBox>
#include <QGraphicsEffect>
#include <QLineEdit>
#include <QTest>

/// Both windows at the scale that the environment asks for: what was painted piece by piece must
/// be what painting all of it gives, and nothing may be blurred.
class WindowScaleTest : public QObject, private WindowStage
{
    Q_OBJECT

private slots:
    void init() { begin(); }
    void scaleIsTheOneAskedFor();
    void stepsOfKnobs_data() { addModels(); }
    void stepsOfKnobs();
    void editors_data() { addModels(); }
    void editors();
    void buttons_data() { addModels(); }
    void buttons();
    void focus_data() { addModels(); }
    void focus();
    void dialog();
    void glowLeavesTheTextSharp_data() { addModels(); }
    void glowLeavesTheTextSharp();

private:
    static void addModels();
    void showPanel();
};

namespace {

/// What differs between the window on the screen and the same painted anew.
QString leftOver(QWidget& window)
{
    QTest::qWait(1);
    const QImage pieces = ScreenPicture::of(window);
    const QImage whole = ScreenPicture::paintedAnew(window);
    return ScreenPicture::difference(pieces, whole);
}

/// The inside of a button, without the edge that its glow shines through.
QImage insideOf(const Button& button)
{
    constexpr int edge = 4;
    QWidget& window = *button.window();
    const QImage whole = ScreenPicture::paintedAnew(window);
    const QRectF inside =
        QRectF(button.mapTo(&window, QPoint()), button.size()).adjusted(edge, edge, -edge, -edge);
    const double ratio = whole.devicePixelRatio();
    return whole.copy(QRectF(inside.topLeft() * ratio, inside.size() * ratio).toRect());
}

/// How much neighbouring pixels differ: what is blurred has the same colours, but softer edges.
double sharpness(const QImage& image)
{
    const auto step = [&image](int x, int y, int otherX, int otherY) {
        const int change = qGray(image.pixel(x, y)) - qGray(image.pixel(otherX, otherY));
        return double(change) * change;
    };
    double sum = 0;
    for (int y = 1; y < image.height(); ++y) {
        for (int x = 1; x < image.width(); ++x)
            sum += step(x, y, x - 1, y) + step(x, y, x, y - 1);
    }
    return sum;
}

} // namespace

void WindowScaleTest::addModels()
{
    QTest::addColumn<std::uint32_t>("productId");
    QTest::newRow("ka1") << SimulatorControl::ka1;
    QTest::newRow("ka2") << SimulatorControl::ka2;
    QTest::newRow("ks") << SimulatorControl::ks;
}

void WindowScaleTest::showPanel()
{
    QFETCH(const std::uint32_t, productId);
    QVERIFY(WindowStage::showPanel(productId));
    QTest::qWait(50);
    QCOMPARE(leftOver(*window), QString());
}

void WindowScaleTest::scaleIsTheOneAskedFor()
{
    const double asked = qEnvironmentVariableIsSet("QUORVEL_TEST_SCALE")
                             ? qEnvironmentVariable("QUORVEL_TEST_SCALE").toDouble()
                             : 1.0;
    window->show();
    QVERIFY(QTest::qWaitForWindowExposed(window.get()));
    QCOMPARE(window->devicePixelRatio(), asked);
    const QImage screen = ScreenPicture::of(*window);
    QCOMPARE(screen.devicePixelRatio(), asked);
    QVERIFY(screen.width() >= int(window->width() * asked));
    QVERIFY(screen.height() >= int(window->height() * asked));
}

void WindowScaleTest::stepsOfKnobs()
{
    showPanel();
    for (Knob* knob : window->findChildren<Knob*>()) {
        QList<int> values;
        for (int value = knob->minimum; value <= knob->maximum; value += 11)
            values.append(value);
        values << knob->maximum - 1 << knob->minimum << knob->maximum;
        for (const int value : values) {
            knob->setValue(value);
            const QString left = leftOver(*window);
            QVERIFY2(
                left.isEmpty(),
                qPrintable(
                    QStringLiteral("%1 at %2: %3").arg(knob->objectName()).arg(value).arg(left)));
        }
    }
}

void WindowScaleTest::editors()
{
    showPanel();
    for (Knob* knob : window->findChildren<Knob*>()) {
        QTest::mouseDClick(knob, Qt::LeftButton, {}, knob->textRect.center());
        QVERIFY(knob->editor->isVisible());
        QTest::keyClicks(knob->editor, QStringLiteral("5"));
        QTest::keyClick(knob->editor, Qt::Key_Return);
        QVERIFY(knob->editor->isHidden());
        QCOMPARE(leftOver(*window), QString());
    }
}

void WindowScaleTest::buttons()
{
    showPanel();
    for (Button* button : window->findChildren<Button*>()) {
        for (const bool on : {true, false, true}) {
            button->setOn(on);
            const QString left = leftOver(*window);
            QVERIFY2(left.isEmpty(), qPrintable(QStringLiteral("%1 %2: %3")
                                                    .arg(button->objectName())
                                                    .arg(on ? "on" : "off")
                                                    .arg(left)));
        }
    }
}

void WindowScaleTest::focus()
{
    showPanel();
    window->activateWindow();
    QVERIFY(QTest::qWaitForWindowActive(window.get()));
    const auto controls =
        window->findChildren<Knob*>().size() + window->findChildren<Button*>().size();
    for (qsizetype step = 0; step <= controls; ++step) {
        QTest::keyClick(window.get(), Qt::Key_Tab);
        QCOMPARE(leftOver(*window), QString());
    }
}

void WindowScaleTest::dialog()
{
    simulated.control().plug(SimulatorControl::ka1);
    QVERIFY(settings->connectDevice());
    stopClocks(*settings);
    settings->show();
    QVERIFY(QTest::qWaitForWindowExposed(settings.get()));
    QTest::qWait(50);
    QCOMPARE(leftOver(*settings), QString());
    for (const std::uint32_t count : {3U, 4294967295U, 0U}) {
        simulated.control().setErrorCount(count);
        settings->updateUsbErrorCount();
        QTest::qWait(50);
        QCOMPARE(leftOver(*settings), QString());
    }
    for (QComboBox* combo : settings->findChildren<QComboBox*>()) {
        combo->showPopup();
        QTest::qWait(20);
        combo->hidePopup();
        combo->setCurrentIndex(combo->count() - 1);
        QTest::qWait(50);
        QCOMPARE(leftOver(*settings), QString());
    }
}

/// A button that is on is painted by way of a picture.
void WindowScaleTest::glowLeavesTheTextSharp()
{
    showPanel();
    for (Button* button : window->findChildren<Button*>()) {
        button->setOn(true);
        QVERIFY(button->glow->isEnabled());
        const double glowing = sharpness(insideOf(*button));
        button->glow->setEnabled(false);
        const double plain = sharpness(insideOf(*button));
        QVERIFY(plain > 0);
        // The letters may stand a part of a pixel elsewhere: 0.9 to 1.13 were measured. Of what was
        // made a fifth smaller and larger again, 0.54 at the most is left.
        QVERIFY2(
            glowing > 0.8 * plain,
            qPrintable(
                QStringLiteral("%1: %2 of %3").arg(button->objectName()).arg(glowing).arg(plain)));
    }
}

QUORVEL_TEST_MAIN(WindowScaleTest)
#include "window_scale_test.moc"
