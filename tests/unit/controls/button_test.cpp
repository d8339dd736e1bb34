#include "controls/button.h"
#include "support/patience.h"
#include "support/test_main.h"

#include <QApplication>
#include <QGraphicsDropShadowEffect>
#include <QMetaMethod>
#include <QSignalSpy>
#include <QTest>

namespace {

QList<bool> states(QSignalSpy& spy)
{
    QList<bool> announced;
    for (const QList<QVariant>& arguments : std::as_const(spy))
        announced.append(arguments.at(0).toBool());
    spy.clear();
    return announced;
}

/// Notes each style that a button takes on: its text colour, and whether it glows by then.
class StyleWatch : public QObject
{
public:
    explicit StyleWatch(Button& watched)
        : button(watched)
    {
        button.installEventFilter(this);
    }

    QStringList seen;

protected:
    bool eventFilter(QObject*, QEvent* event) override
    {
        if (event->type() == QEvent::StyleChange) {
            seen.append(button.styleSheet().section(u' ', 5, 5).chopped(1) +
                        (button.glow->isEnabled() ? " lit" : " unlit"));
        }
        return false;
    }

private:
    Button& button;
};

void dressForPanel(Button& button, const QString& accent)
{
    button.onTextColor = accent;
    button.offTextColor = QStringLiteral("#8a95aa");
    button.onBackground = QStringLiteral("#1b1e23");
    button.offBackground = QStringLiteral("#1b1e23");
    button.glowColor = accent;
    button.setFixedWidth(80);
    button.applyStyle();
}

} // namespace

class ButtonTest : public QObject
{
    Q_OBJECT

private slots:
    void defaults();
    void glowAtConstruction();
    void metaObjectNames();
    void styleSheet();
    void applyStyleFollowsTheMembers();
    void bothAnnouncementsAreOfOneState();
    void styleBeforeAndAfterTheToggle();
    void ctrlClickIgnored();
    void silentOnEverythingElse();
    void ringStaysClearOfTheText();
    void leavingClearsHovered();
    void setShadow();
};

void ButtonTest::defaults()
{
    const Button button(QStringLiteral("48V"), nullptr);
    QCOMPARE(button.label, QStringLiteral("48V"));
    QCOMPARE(button.text(), QStringLiteral("48V"));
    QCOMPARE(button.styleInt, 10);
    QCOMPARE(button.borderRadius, 3);
    QCOMPARE(button.onTextColor, QStringLiteral("#000000"));
    QCOMPARE(button.offTextColor, QStringLiteral("#00ff7f"));
    QCOMPARE(button.glowColor, QStringLiteral("#00ff7f"));
    QCOMPARE(button.onBackground, QStringLiteral("#00ff7f"));
    QCOMPARE(button.offBackground, QStringLiteral("#1b1e23"));
    QCOMPARE(button.spareColor, QStringLiteral("#1b1e23"));
    QCOMPARE(button.secondSpareColor, QStringLiteral("#1b1e23"));
    QCOMPARE(button.ignoreCtrlClick, false);
    QCOMPARE(button.hovered, false);
    QCOMPARE(button.on, false);
    QVERIFY(button.glow != nullptr);
    QVERIFY(button.spare == nullptr);
    QCOMPARE(button.cursor().shape(), Qt::PointingHandCursor);
    QVERIFY(!button.isCheckable());
    QCOMPARE(button.styleSheet(), QString());
}

void ButtonTest::glowAtConstruction()
{
    QWidget panel;
    const Button button(QStringLiteral("48V"), &panel);
    QCOMPARE(button.parentWidget(), &panel);
    QCOMPARE(button.glow->parent(), &button);
    QCOMPARE(button.graphicsEffect(), button.glow);
    QVERIFY(!button.glow->isEnabled());
    QCOMPARE(button.glow->blurRadius(), button.width() * 0.01);
    QCOMPARE(button.glow->offset(), QPointF(0, 0));
    QCOMPARE(button.glow->color(), QColor(0x00, 0xff, 0x7f));

    // Before it has a parent a button has the size of a window, hence a wider glow.
    const Button alone(QStringLiteral("48V"));
    QVERIFY(alone.width() > button.width());
    QCOMPARE(alone.glow->blurRadius(), alone.width() * 0.01);
}

void ButtonTest::metaObjectNames()
{
    const QMetaObject& meta = Button::staticMetaObject;
    QCOMPARE(meta.className(), "Button");
    QCOMPARE(meta.superClass()->className(), "QPushButton");
    const QMetaMethod selected = meta.method(meta.methodOffset());
    QCOMPARE(selected.methodSignature(), QByteArray("selected(QString)"));
    QCOMPARE(selected.methodType(), QMetaMethod::Signal);
    const QMetaMethod pressed = meta.method(meta.methodOffset() + 1);
    QCOMPARE(pressed.methodSignature(), QByteArray("pressed(bool)"));
    QCOMPARE(pressed.methodType(), QMetaMethod::Signal);
    QCOMPARE(meta.methodCount() - meta.methodOffset(), 2);
}

void ButtonTest::styleSheet()
{
    Button button(QStringLiteral("MIC"));
    button.applyStyle();
    QCOMPARE(button.styleSheet(),
             QStringLiteral("QPushButton {   color: #00ff7f;   background-color: #1b1e23;   "
                            "border-radius: 3px;}QPushButton:pressed {   "
                            "background-color: #1b1e23;}"));
    QVERIFY(!button.glow->isEnabled());

    button.on = true;
    button.applyStyle();
    QCOMPARE(button.styleSheet(),
             QStringLiteral("QPushButton {   color: #000000;   background-color: #00ff7f;   "
                            "border-radius: 3px;}QPushButton:pressed {   "
                            "background-color: #00ff7f;}"));
    QVERIFY(button.glow->isEnabled());
}

void ButtonTest::applyStyleFollowsTheMembers()
{
    Button button(QStringLiteral("MIC"));
    button.borderRadius = 12;
    button.offTextColor = QStringLiteral("red");
    button.offBackground = QStringLiteral("rgb(1, 2, 3)");
    button.glowColor = QStringLiteral("#123456");
    button.applyStyle();
    QCOMPARE(button.styleSheet(),
             QStringLiteral("QPushButton {   color: red;   background-color: rgb(1, 2, 3);   "
                            "border-radius: 12px;}QPushButton:pressed {   "
                            "background-color: rgb(1, 2, 3);}"));
    QCOMPARE(button.glow->color(), QColor(0x12, 0x34, 0x56));
}

void ButtonTest::bothAnnouncementsAreOfOneState()
{
    Button button(QStringLiteral("20dB"));
    QList<bool> seen;
    connect(&button, &Button::pressed, &button, [&](bool status) {
        seen.append(status);
        button.on = false;
    });
    QTest::mousePress(&button, Qt::LeftButton);
    QCOMPARE(seen, (QList<bool>{true, true}));
}

void ButtonTest::styleBeforeAndAfterTheToggle()
{
    // Colours that were changed meanwhile come into force with the old state first.
    Button button(QStringLiteral("20dB"));
    dressForPanel(button, QStringLiteral("#ff7f00"));
    button.offTextColor = QStringLiteral("#111111");
    button.onTextColor = QStringLiteral("#222222");
    button.ensurePolished();
    StyleWatch watch(button);
    QTest::mousePress(&button, Qt::LeftButton);
    QCOMPARE(watch.seen, (QStringList{"#111111 unlit", "#222222 lit"}));
    watch.seen.clear();
    button.offTextColor = QStringLiteral("#333333");
    button.setOn(false);
    QCOMPARE(watch.seen, QStringList{"#333333 unlit"});
}

void ButtonTest::ctrlClickIgnored()
{
    Button button(QStringLiteral("MUTE"));
    button.ignoreCtrlClick = true;
    QSignalSpy spy(&button, &Button::pressed);
    QTest::mouseClick(&button, Qt::LeftButton, Qt::ControlModifier);
    QTest::mouseClick(&button, Qt::LeftButton, Qt::ControlModifier | Qt::AltModifier);
    QCOMPARE(states(spy), QList<bool>{});
    QVERIFY(!button.on);
    QCOMPARE(button.styleSheet(), QString());

    QTest::mouseClick(&button, Qt::LeftButton, Qt::ShiftModifier);
    QTest::mouseClick(&button, Qt::RightButton);
    button.ignoreCtrlClick = false;
    QTest::mouseClick(&button, Qt::LeftButton, Qt::ControlModifier);
    QCOMPARE(states(spy), (QList<bool>{true, true, false, false, true, true}));
    QVERIFY(!button.isDown());
}

void ButtonTest::silentOnEverythingElse()
{
    Button button(QStringLiteral("MUTE"));
    const QSignalSpy selected(&button, &Button::selected);
    const QSignalSpy clicked(&button, &QAbstractButton::clicked);
    const QSignalSpy toggled(&button, &QAbstractButton::toggled);
    const QSignalSpy pressedByQt(&button, &QAbstractButton::pressed);
    const QSignalSpy released(&button, &QAbstractButton::released);
    QVERIFY(selected.isValid() && clicked.isValid() && toggled.isValid());
    QVERIFY(pressedByQt.isValid() && released.isValid());

    QTest::mouseClick(&button, Qt::LeftButton);
    QTest::mouseDClick(&button, Qt::LeftButton);
    button.setOn(true);
    button.setOn(false);
    QCOMPARE(selected.count(), 0);
    QCOMPARE(clicked.count(), 0);
    QCOMPARE(toggled.count(), 0);
    QCOMPARE(pressedByQt.count(), 0);
    QCOMPARE(released.count(), 0);
}

void ButtonTest::ringStaysClearOfTheText()
{
    QWidget window;
    Button button(QStringLiteral("MUTE"), &window);
    dressForPanel(button, QStringLiteral("#00FFFF"));
    button.setGeometry(10, 10, 80, 40);
    window.resize(100, 60);
    window.show();
    window.activateWindow();
    QVERIFY(QTest::qWaitForWindowActive(&window, patience));
    button.clearFocus();
    const auto picture = [&] { return button.grab().toImage(); };
    const QImage without = picture();
    button.setFocus(Qt::TabFocusReason);
    const QImage with = picture();
    for (const QPoint edge : {QPoint(40, 1), QPoint(40, 38), QPoint(1, 20), QPoint(78, 20)})
        QCOMPARE(with.pixelColor(edge), QColor(Qt::white));
    QCOMPARE(with.copy(4, 4, 72, 32), without.copy(4, 4, 72, 32));
    button.setGeometry(10, 10, 80, 14);
    const QImage low = picture();
    QCOMPARE(low.pixelColor(40, 0), QColor(Qt::white));
    QVERIFY(low.pixelColor(20, 1) != QColor(Qt::white));
}

void ButtonTest::leavingClearsHovered()
{
    Button button(QStringLiteral("MUTE"));
    button.hovered = true;
    QEvent leave(QEvent::Leave);
    QApplication::sendEvent(&button, &leave);
    QVERIFY(!button.hovered);
}

void ButtonTest::setShadow()
{
    Button button(QStringLiteral("MUTE"));
    const double radius = button.glow->blurRadius();
    button.resize(80, 40);
    button.glowColor = QStringLiteral("#ff1111");
    button.setShadow(false, 0.5);
    QCOMPARE(button.glow->blurRadius(), radius);
    QCOMPARE(button.glow->color(), QColor(0x00, 0xff, 0x7f));
    button.setShadow(true, 0.5);
    QCOMPARE(button.glow->blurRadius(), 40.0);
    QCOMPARE(button.glow->offset(), QPointF(0, 0));
    QCOMPARE(button.glow->color(), QColor(0xff, 0x11, 0x11));
    QCOMPARE(button.graphicsEffect(), button.glow);
    QVERIFY(!button.glow->isEnabled());
}

QUORVEL_TEST_MAIN(ButtonTest)

#include "button_test.moc"
