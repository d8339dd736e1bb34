#include "controls/button.h"
#include "controls/knob.h"
#include "support/patience.h"
#include "support/test_main.h"
#include "support/window_activation.h"
#include "window_stage.h"

#include <QApplication>
#include <QComboBox>
#include <QLabel>
#include <QLineEdit>
#include <QMenu>
#include <QPushButton>
#include <QTest>
#include <QWheelEvent>
#include <qpa/qplatforminputcontext.h>

#include <functional>
#include <utility>

namespace {

/// The gain has the display offset 9 and a range from 0 to 56.
constexpr const char* gain = "Dial/Mic1Value";
constexpr const char* pad = "Button/Mic120dBIsChecked";
constexpr const char* phantom = "Button/Mic148VIsChecked";
constexpr const char* last = "Dial/OtgToHpValue";
constexpr int start = 20;

const QList<Qt::Key> allButTab{Qt::Key_End,   Qt::Key_Home,   Qt::Key_Up,       Qt::Key_Down,
                               Qt::Key_Left,  Qt::Key_Right,  Qt::Key_PageUp,   Qt::Key_PageDown,
                               Qt::Key_Space, Qt::Key_Return, Qt::Key_Enter,    Qt::Key_5,
                               Qt::Key_Minus, Qt::Key_Select, Qt::Key_Backspace};

bool activate(QWidget& window)
{
    requestActivation(window);
    return QTest::qWaitFor(
        [&] { return window.isActiveWindow() && window.windowHandle()->isActive(); }, patience);
}

} // namespace

/// The ten lines of the keyboard policy, but for the wheel's, in the real windows with the panel
/// of a KA2: one test for each.
class KeyboardPolicyTest : public QObject, private WindowStage
{
    Q_OBJECT

private slots:
    void initTestCase();
    void init();
    void windowComesUpOnNoControl_data();
    void windowComesUpOnNoControl();
    void dialogComesUpOnNoControl();
    void focusComesByTabAlone();
    void arrowsTurnOnlyTheFocusedKnob();
    void repeatsNeedTheirFirstPress();
    void ringIsWhereTheFocusIs();
    void editingEndsWhereItBegan();
    void heldEnterOpensOrClosesOnce();
    void aKeyCountsAlone();
    void typedTextStays();
    void onlyNumbersAreTaken_data();
    void onlyNumbersAreTaken();
    void enterCommitsWhatIsThere();
    void fullWidthDigitsAreDigits();

private:
    void makePanel();
    Knob& knob(const char* key) { return *window->findChild<Knob*>(QLatin1String(key)); }
    Button& button(const char* key) { return *window->findChild<Button*>(QLatin1String(key)); }
    QWidgetList controls() const;
    QString focused() const;
    QString editing() const;
    QStringList ringed() const;
    QStringList takeHeard() { return std::exchange(heard, {}); }

    void key(Qt::Key key, Qt::KeyboardModifiers modifiers = Qt::NoModifier)
    {
        QTest::keyClick(window->windowHandle(), key, modifiers);
    }
    void repeat(Qt::Key key);
    void type(const QString& text);
    void tabTo(const char* name);
    void click(QWidget& target, QPoint position);
    void click(QWidget& target) { click(target, target.rect().center()); }
    void clickGround() { click(*window, {2, 2}); }
    void editByMouse();

    QStringList heard; ///< what the controls have announced
};

void KeyboardPolicyTest::initTestCase()
{
    begin();
    makePanel();
}

/// Comes up anew, with everything at its start.
void KeyboardPolicyTest::init()
{
    settings->hide();
    window->hide();
    window->show();
    QVERIFY(activate(*window));
    QVERIFY(QTest::qWaitFor([&] { return !knob(gain).textRect.isNull(); }, patience));
    knob(gain).setValue(start);
    button(phantom).setOn(false);
    takeHeard();
}

/// Detects a KA2, again if there is one.
void KeyboardPolicyTest::makePanel()
{
    simulated.control().plug(SimulatorControl::ka2);
    window->detectDevice();
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    for (QWidget* control : controls()) {
        const QString name = control->objectName();
        if (auto* changed = qobject_cast<Knob*>(control)) {
            connect(changed, &Knob::valueChangedSig, this,
                    [this, name](int value) { heard.append(name + ' ' + QString::number(value)); });
        } else {
            connect(qobject_cast<Button*>(control), &Button::pressed, this,
                    [this, name](bool on) { heard.append(name + (on ? " on" : " off")); });
        }
    }
    takeHeard();
}

QWidgetList KeyboardPolicyTest::controls() const
{
    QWidgetList found;
    for (Knob* knob : window->findChildren<Knob*>())
        found.append(knob);
    for (Button* button : window->findChildren<Button*>())
        found.append(button);
    return found;
}

/// The name of the control that has the focus.
QString KeyboardPolicyTest::focused() const
{
    QWidget* const widget = QApplication::focusWidget();
    return controls().contains(widget) ? widget->objectName() : QString();
}

/// What stands in the editor that has the focus.
QString KeyboardPolicyTest::editing() const
{
    const auto* editor = qobject_cast<QLineEdit*>(QApplication::focusWidget());
    return editor != nullptr ? editor->text() : QString();
}

QStringList KeyboardPolicyTest::ringed() const
{
    QStringList names;
    for (QWidget* control : controls()) {
        if (control->grab().toImage().pixelColor(control->width() / 2, 0) == QColor(Qt::white))
            names.append(control->objectName());
    }
    return names;
}

void KeyboardPolicyTest::repeat(Qt::Key key)
{
    QKeyEvent event(QEvent::KeyPress, key, Qt::NoModifier, QString(), true);
    QCoreApplication::sendEvent(window->windowHandle(), &event);
}

void KeyboardPolicyTest::type(const QString& text)
{
    for (const QChar letter : text) {
        QTest::sendKeyEvent(QTest::Click, window->windowHandle(), Qt::Key_unknown, QString(letter),
                            Qt::NoModifier);
    }
}

void KeyboardPolicyTest::tabTo(const char* name)
{
    for (qsizetype i = 0; i < controls().size() && focused() != QLatin1String(name); ++i)
        key(Qt::Key_Tab);
    QCOMPARE(focused(), QLatin1String(name));
}

void KeyboardPolicyTest::click(QWidget& target, QPoint position)
{
    QWidget& top = *target.window();
    QTest::mouseClick(top.windowHandle(), Qt::LeftButton, {}, target.mapTo(&top, position));
}

void KeyboardPolicyTest::editByMouse()
{
    QTest::mouseDClick(window->windowHandle(), Qt::LeftButton, {},
                       knob(gain).mapTo(window.get(), knob(gain).textRect.center()));
    QCOMPARE(editing(), QString("29"));
}

void KeyboardPolicyTest::windowComesUpOnNoControl_data()
{
    QTest::addColumn<std::function<void()>>("comeUp");
    QTest::newRow("for the first time") << std::function<void()>([] {});
    QTest::newRow("again") << std::function<void()>([this] {
        tabTo(phantom);
        window->hide();
        window->show();
        QVERIFY(activate(*window));
    });
    QTest::newRow("with another panel") << std::function<void()>([this] {
        tabTo(phantom);
        QWidget other;
        other.show();
        QVERIFY(activate(other));
        makePanel();
        QVERIFY(activate(*window));
    });
}

void KeyboardPolicyTest::windowComesUpOnNoControl()
{
    QFETCH(const std::function<void()>, comeUp);
    comeUp();
    for (const Qt::Key any : allButTab)
        key(any);
    QCOMPARE(takeHeard(), QStringList());
    QCOMPARE(focused(), QString());
    QCOMPARE(ringed(), QStringList());
    key(Qt::Key_Tab);
    QCOMPARE(focused(), QLatin1String(gain));
    window->setFocus();
    key(Qt::Key_Backtab, Qt::ShiftModifier);
    QCOMPARE(focused(), QLatin1String(last));
}

void KeyboardPolicyTest::dialogComesUpOnNoControl()
{
    const auto lists = settings->findChildren<QComboBox*>();
    const auto shown = [&] {
        QStringList texts;
        for (const QComboBox* list : lists)
            texts.append(list->currentText());
        return texts;
    };
    const QStringList before = shown();
    settings->show();
    QVERIFY(activate(*settings));
    QWindow* const dialog = settings->windowHandle();
    for (const Qt::Key any : allButTab)
        QTest::keyClick(dialog, any);
    QVERIFY(settings->isVisible());
    QCOMPARE(shown(), before);
    QVERIFY(!lists.contains(QApplication::focusWidget()));

    QTest::keyClick(dialog, Qt::Key_Tab);
    QCOMPARE(QApplication::focusWidget(), lists.constFirst());
    QTest::keyClick(dialog, Qt::Key_Return);
    QVERIFY(settings->isVisible());
    QTest::keyClick(dialog, Qt::Key_Home);
    QCOMPARE(lists.constFirst()->currentText(), QString("48"));

    // Arrows do not walk from the button into a list.
    const QStringList chosen = shown();
    QTest::keyClick(dialog, Qt::Key_Backtab, Qt::ShiftModifier);
    QCOMPARE(QApplication::focusWidget(), settings->findChild<QPushButton*>());
    QTest::keyClick(dialog, Qt::Key_Down);
    QTest::keyClick(dialog, Qt::Key_Down);
    QCOMPARE(shown(), chosen);
    QTest::keyClick(dialog, Qt::Key_Escape);
    QVERIFY(!settings->isVisible());
}

void KeyboardPolicyTest::focusComesByTabAlone()
{
    click(button(phantom));
    click(knob(gain));
    clickGround();
    QCOMPARE(focused(), QString());
    takeHeard();
    // It would switch the phantom power back.
    key(Qt::Key_Space);
    QCOMPARE(takeHeard(), QStringList());

    tabTo(pad);
    click(button(phantom));
    click(knob(gain));
    clickGround();
    QCOMPARE(focused(), QLatin1String(pad));
}

void KeyboardPolicyTest::arrowsTurnOnlyTheFocusedKnob()
{
    tabTo(pad);
    for (const Qt::Key any : allButTab) {
        if (any != Qt::Key_Space)
            key(any);
    }
    QCOMPARE(takeHeard(), QStringList());
    QCOMPARE(focused(), QLatin1String(pad));

    tabTo(gain);
    const QList<std::pair<Qt::Key, int>> steps{
        {Qt::Key_Up, 21},     {Qt::Key_Right, 22},    {Qt::Key_Down, 21}, {Qt::Key_Left, 20},
        {Qt::Key_PageUp, 25}, {Qt::Key_PageDown, 20}, {Qt::Key_End, 56},  {Qt::Key_Up, 56},
        {Qt::Key_Home, 0},    {Qt::Key_PageDown, 0}};
    for (const auto& [pressed, value] : steps) {
        key(pressed);
        QCOMPARE(takeHeard(), QStringList(QString("%1 %2").arg(gain).arg(value)));
    }
    // Those that an editor has no use for are not the knob's below it.
    key(Qt::Key_Return);
    for (const Qt::Key unused : {Qt::Key_Up, Qt::Key_PageUp, Qt::Key_End})
        key(unused);
    QCOMPARE(takeHeard(), QStringList());
}

void KeyboardPolicyTest::repeatsNeedTheirFirstPress()
{
    tabTo(gain);
    repeat(Qt::Key_Up);
    QCOMPARE(takeHeard(), QStringList());
    key(Qt::Key_Up);
    repeat(Qt::Key_Up);
    QCOMPARE(takeHeard(), (QStringList{"Dial/Mic1Value 21", "Dial/Mic1Value 22"}));
    key(Qt::Key_Tab);
    key(Qt::Key_Backtab, Qt::ShiftModifier);
    repeat(Qt::Key_Up);
    QCOMPARE(takeHeard(), QStringList());

    tabTo(phantom);
    repeat(Qt::Key_Space);
    QCOMPARE(takeHeard(), QStringList());
    key(Qt::Key_Space);
    repeat(Qt::Key_Space);
    QCOMPARE(takeHeard(),
             (QStringList{"Button/Mic148VIsChecked on", "Button/Mic148VIsChecked on"}));
}

void KeyboardPolicyTest::ringIsWhereTheFocusIs()
{
    QStringList walked;
    for (qsizetype i = 0; i < controls().size(); ++i) {
        // Held, it goes on.
        i < 2 ? key(Qt::Key_Tab) : repeat(Qt::Key_Tab);
        QCOMPARE(ringed(), QStringList(focused()));
        walked.append(focused());
    }
    QCOMPARE(walked.removeDuplicates(), 0);

    // Also after a look elsewhere.
    QWidget other;
    other.show();
    QVERIFY(activate(other));
    QCOMPARE(ringed(), QStringList());
    QVERIFY(activate(*window));
    QCOMPARE(focused(), QLatin1String(last));
    QCOMPARE(ringed(), QStringList(last));
}

void KeyboardPolicyTest::editingEndsWhereItBegan()
{
    for (const Qt::Key end : {Qt::Key_Return, Qt::Key_Escape}) {
        tabTo(pad);
        editByMouse();
        key(end);
        QCOMPARE(QApplication::focusWidget(), window.get());
        tabTo(gain);
        key(Qt::Key_Return);
        QCOMPARE(editing(), QString("29"));
        key(end);
        QCOMPARE(focused(), QLatin1String(gain));
    }
    key(Qt::Key_Enter);
    clickGround();
    QCOMPARE(focused(), QLatin1String(gain));
    key(Qt::Key_Enter);
    key(Qt::Key_Tab);
    QCOMPARE(focused(), QLatin1String(pad));
}

void KeyboardPolicyTest::heldEnterOpensOrClosesOnce()
{
    tabTo(gain);
    key(Qt::Key_Return);
    repeat(Qt::Key_Return);
    repeat(Qt::Key_Return);
    QCOMPARE(editing(), QString("29"));
    repeat(Qt::Key_Escape);
    QCOMPARE(editing(), QString("29"));
    QCOMPARE(takeHeard(), QStringList());
    key(Qt::Key_Return);
    repeat(Qt::Key_Return);
    repeat(Qt::Key_Return);
    QCOMPARE(focused(), QLatin1String(gain));
    QCOMPARE(takeHeard(), QStringList("Dial/Mic1Value 20"));
}

void KeyboardPolicyTest::aKeyCountsAlone()
{
    for (const Qt::KeyboardModifier modifier :
         {Qt::ControlModifier, Qt::AltModifier, Qt::ShiftModifier, Qt::MetaModifier}) {
        tabTo(phantom);
        key(Qt::Key_Space, modifier);
        tabTo(gain);
        key(Qt::Key_End, modifier);
        key(Qt::Key_Return, modifier);
        QCOMPARE(takeHeard(), QStringList());
        QCOMPARE(focused(), QLatin1String(gain));
    }
    key(Qt::Key_End, Qt::KeypadModifier);
    QCOMPARE(takeHeard(), QStringList("Dial/Mic1Value 56"));
}

void KeyboardPolicyTest::typedTextStays()
{
    editByMouse();
    knob(gain).setValue(21);
    QCOMPARE(editing(), QString("30"));
    QCOMPARE(knob(gain).editor->selectedText(), QString("30"));
    type("4");
    QWheelEvent notch({60, 60}, knob(gain).mapToGlobal(QPointF(60, 60)), {}, {0, 120}, Qt::NoButton,
                      Qt::NoModifier, Qt::NoScrollPhase, false);
    QCoreApplication::sendEvent(&knob(gain), &notch);
    knob(gain).setValue(30);
    QCOMPARE(editing(), QString("4"));
    type("0");
    takeHeard();
    key(Qt::Key_Return);
    QCOMPARE(takeHeard(), QStringList("Dial/Mic1Value 31"));
    // A reset of an untouched editor's knob is not taken back.
    QTest::mouseDClick(&knob(gain), Qt::LeftButton, {}, knob(gain).textRect.center());
    QTest::mouseClick(&knob(gain), Qt::LeftButton, Qt::ControlModifier, {5, 60});
    QCOMPARE(knob(gain).value, 0);
}

void KeyboardPolicyTest::onlyNumbersAreTaken_data()
{
    QTest::addColumn<std::function<void()>>("leave");
    const auto row = [](const char* name, const std::function<void()>& leave) {
        QTest::newRow(name) << leave;
    };
    row("bare ground", [this] { clickGround(); });
    row("the knob's rim", [this] { click(knob(gain), {5, 60}); });
    row("another knob", [this] { click(knob(last)); });
    row("a heading", [this] { click(*window->findChild<QLabel*>(), {2, 2}); });
    row("Tab", [this] { key(Qt::Key_Tab); });
    row("another window", [] {
        QWidget other;
        other.show();
        QVERIFY(activate(other));
    });
    row("a menu", [] {
        QMenu menu;
        menu.addAction("Quit");
        menu.popup({0, 0});
        QVERIFY(QTest::qWaitForWindowExposed(&menu, patience));
    });
    row("out of sight", [this] {
        window->hide();
        QCoreApplication::processEvents();
    });
}

void KeyboardPolicyTest::onlyNumbersAreTaken()
{
    QFETCH(const std::function<void()>, leave);
    for (const auto& [text, value] : {std::pair("19", 10), std::pair("x", 20), std::pair("", 20)}) {
        window->show();
        QVERIFY(activate(*window));
        knob(gain).setValue(start);
        editByMouse();
        takeHeard();
        key(Qt::Key_Backspace);
        type(text);
        leave();
        QCOMPARE(takeHeard(), QStringList(QString("%1 %2").arg(gain).arg(value)));
        QVERIFY(knob(gain).editor->isHidden());
    }
}

void KeyboardPolicyTest::enterCommitsWhatIsThere()
{
    editByMouse();
    type("x");
    key(Qt::Key_Return);
    QCOMPARE(takeHeard(), QStringList("Dial/Mic1Value 11"));
    tabTo(gain);
    key(Qt::Key_Return);
    type("50");
    key(Qt::Key_Escape);
    QCOMPARE(takeHeard(), QStringList());
    QCOMPARE(knob(gain).value, 11);
}

void KeyboardPolicyTest::fullWidthDigitsAreDigits()
{
    editByMouse();
    QVERIFY(!QPlatformInputContext().inputMethodAccepted());
    type(QStringLiteral("４０ｄＢ"));
    key(Qt::Key_Return);
    QCOMPARE(takeHeard(), QStringList("Dial/Mic1Value 31"));
}

QUORVEL_TEST_MAIN(KeyboardPolicyTest)
#include "keyboard_policy_test.moc"
