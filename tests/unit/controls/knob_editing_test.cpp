#include "controls/button.h"
#include "support/test_main.h"
#include "unit/controls/knob_stage.h"

#include <QApplication>
#include <QLabel>
#include <QLineEdit>
#include <QMenu>
#include <QPointer>
#include <QTest>

#include <functional>
#include <memory>

namespace {

/// A stage whose knob stands at -20 and whose editor is open, untouched.
class EditedStage : public KnobStage
{
public:
    explicit EditedStage(int displayOffset = 0)
    {
        caption.setGeometry(20, 5, 120, 20);
        secondKnob.setGeometry(150, 80, 120, 120);
        toggle.setGeometry(180, 5, 80, 20);
        secondKnob.value = -40;
        knob.value = -20;
        knob.displayOffset = displayOffset;
    }

    bool open()
    {
        if (!show())
            return false;
        doubleClick(knob.textRect.center());
        return isOpen();
    }
    bool isOpen() const { return knob.editor->isVisible() && knob.editor->hasFocus(); }
    QString selected() const { return knob.editor->selectedText(); }
    void type(const char* keys)
    {
        QTest::keyClicks(knob.editor, QString::fromLatin1(keys));
        announced();
    }

    QLabel caption{QStringLiteral("HEADPHONE"), &window};
    Knob secondKnob{&window};
    Button toggle{QStringLiteral("DIM"), &window};
};

/// A press in the middle of the widget, as the window system reports it to its window.
void clickOn(QWidget& widget)
{
    QWidget* window = widget.window();
    QTest::mouseClick(window->windowHandle(), Qt::LeftButton, {},
                      widget.mapTo(window, widget.rect().center()));
}

} // namespace

/// What happens to an open editor, apart from typing: values that change and clicks elsewhere.
class KnobEditingTest : public QObject
{
    Q_OBJECT

private slots:
    void changedValueReplacesTheText_data();
    void changedValueReplacesTheText();
    void changedValueReplacesTypedText();
    void sameValueLeavesTypedText();
    void editorFollowsThePaintedText();
    void resetSurvivesTheUntouchedEditor();
    void clickElsewhereEndsOnce_data();
    void clickElsewhereEndsOnce();
    void clickElsewhereComesAfterTheTypedValue();
    void clickIntoTheEditorStays();
    void contextMenuStays();
    void editorOfAnotherKnobEndsIt();
    void doubleClickBesideTheEditorOpensItAnew();
    void wheelAndMovesElsewhereStay();
    void escapeKeepsTheValue();
    void otherKeysAreTheEditors();
    void hiddenWindowEndsIt();
    void anotherActiveWindowEndsIt();
    void closedEditorWatchesNothing();
    void knobDestroyedWhileEditing();
    void receiverDestroysTheKnob_data();
    void receiverDestroysTheKnob();
};

void KnobEditingTest::changedValueReplacesTheText_data()
{
    QTest::addColumn<std::function<void(EditedStage&)>>("change");
    QTest::addColumn<int>("offset");
    QTest::addColumn<int>("value");
    QTest::addColumn<QString>("text");

    const auto row = [](const char* name, int offset, int value, const char* text,
                        const std::function<void(EditedStage&)>& change) {
        QTest::newRow(name) << change << offset << value << QString::fromLatin1(text);
    };
    row("wheel", 0, -19, "-19", [](EditedStage& stage) { stage.wheel({0, 120}); });
    row("wheel with offset", 9, -21, "-12", [](EditedStage& stage) { stage.wheel({0, -120}); });
    row("set from outside", 0, 6, "6", [](EditedStage& stage) { stage.knob.setValue(50); });
    row("zero with offset", 9, 0, "9", [](EditedStage& stage) { stage.knob.setValue(0); });
}

void KnobEditingTest::changedValueReplacesTheText()
{
    QFETCH(const std::function<void(EditedStage&)>, change);
    QFETCH(const int, offset);
    QFETCH(const int, value);
    QFETCH(const QString, text);

    EditedStage stage(offset);
    QVERIFY(stage.open());
    change(stage);
    QCOMPARE(stage.announced(), QList<int>{value});
    QVERIFY(stage.isOpen());
    QCOMPARE(stage.knob.editor->text(), text);
    QCOMPARE(stage.selected(), text);
    QTest::keyClick(stage.knob.editor, Qt::Key_Return);
    QCOMPARE(stage.announced(), QList<int>{value});
}

void KnobEditingTest::changedValueReplacesTypedText()
{
    EditedStage stage;
    QVERIFY(stage.open());
    stage.type("-5");
    stage.knob.setValue(-30);
    QCOMPARE(stage.selected(), QStringLiteral("-30"));
    stage.type("-7");
    QTest::keyClick(stage.knob.editor, Qt::Key_Return);
    QCOMPARE(stage.announced(), QList<int>{-7});
}

void KnobEditingTest::sameValueLeavesTypedText()
{
    // Somebody outside repeats what is known: no reason to disturb the typing.
    EditedStage stage;
    QVERIFY(stage.open());
    stage.type("-5");
    stage.knob.setValue(-20);
    QCOMPARE(stage.announced(), QList<int>{-20});
    QCOMPARE(stage.knob.editor->text(), QStringLiteral("-5"));
    // Compared with what the editor shows, not with the text of an earlier visit.
    QTest::keyClick(stage.knob.editor, Qt::Key_Return);
    stage.doubleClick(stage.knob.textRect.center());
    stage.knob.setValue(-20);
    QCOMPARE(stage.selected(), QStringLiteral("-20"));
}

void KnobEditingTest::editorFollowsThePaintedText()
{
    EditedStage stage;
    stage.knob.value = 0;
    QVERIFY(stage.open());
    const QRect narrow = stage.knob.editor->geometry();
    stage.knob.setValue(-80);
    QVERIFY(stage.knob.editor->width() > narrow.width());
    QVERIFY(stage.knob.textRect.contains(stage.knob.editor->geometry()));
    QVERIFY(stage.knob.editor->width() >= stage.knob.textRect.width() * 9 / 10);
}

void KnobEditingTest::resetSurvivesTheUntouchedEditor()
{
    EditedStage stage;
    QVERIFY(stage.open());
    stage.doubleClick({60, 20});
    QCOMPARE(stage.knob.value, -80);
    clickOn(stage.neighbour);
    QCOMPARE(stage.knob.value, -80);
    QCOMPARE(stage.announced().constLast(), -80);

    stage.knob.value = -20;
    QVERIFY(stage.open());
    stage.press({60, 20}, Qt::ControlModifier);
    stage.release({60, 20});
    clickOn(stage.neighbour);
    QCOMPARE(stage.knob.value, -80);
}

void KnobEditingTest::clickElsewhereEndsOnce_data()
{
    QTest::addColumn<std::function<void(EditedStage&)>>("click");

    const auto row = [](const char* name, const std::function<void(EditedStage&)>& click) {
        QTest::newRow(name) << click;
    };
    row("the knob's rim", [](EditedStage& stage) {
        stage.press({60, 20});
        stage.release({60, 20});
    });
    row("background", [](EditedStage& stage) {
        QTest::mouseClick(stage.window.windowHandle(), Qt::RightButton, {}, QPoint(3, 190));
    });
    row("label", [](EditedStage& stage) { clickOn(stage.caption); });
    row("button", [](EditedStage& stage) { clickOn(stage.neighbour); });
    row("toggle button", [](EditedStage& stage) { clickOn(stage.toggle); });
    row("another knob", [](EditedStage& stage) { clickOn(stage.secondKnob); });
    row("disabled button", [](EditedStage& stage) {
        stage.neighbour.setEnabled(false);
        clickOn(stage.neighbour);
    });
    row("another window", [](EditedStage& stage) {
        QLabel other(QStringLiteral("Settings"));
        other.setAttribute(Qt::WA_ShowWithoutActivating);
        other.show();
        QVERIFY(QTest::qWaitForWindowExposed(&other));
        clickOn(other);
        other.hide();
        stage.window.activateWindow();
    });
}

void KnobEditingTest::clickElsewhereEndsOnce()
{
    QFETCH(const std::function<void(EditedStage&)>, click);

    EditedStage stage(9);
    QVERIFY(stage.open());
    stage.type("-5");
    click(stage);
    QCOMPARE(stage.announced(), QList<int>{-14});
    QVERIFY(stage.knob.editor->isHidden());

    // What does not parse is lowered by the offset, once.
    stage.doubleClick(stage.knob.textRect.center());
    QVERIFY(stage.isOpen());
    stage.type("x");
    click(stage);
    QCOMPARE(stage.announced(), QList<int>{-23});
    QVERIFY(stage.knob.editor->isHidden());
}

void KnobEditingTest::clickElsewhereComesAfterTheTypedValue()
{
    EditedStage stage;
    QVERIFY(stage.open());
    stage.type("-5");
    QStringList order;
    connect(&stage.knob, &Knob::valueChangedSig, this,
            [&](int value) { order.append(QString::number(value)); });
    connect(&stage.toggle, &Button::pressed, this, [&] { order.append("DIM"); });
    clickOn(stage.toggle);
    QCOMPARE(order, (QStringList{"-5", "DIM", "DIM"}));

    order.clear();
    stage.doubleClick(stage.knob.textRect.center());
    stage.type("-9");
    order.clear();
    stage.press({60, 20}, Qt::ControlModifier);
    QCOMPARE(order, (QStringList{"-9", "-80"}));
}

void KnobEditingTest::clickIntoTheEditorStays()
{
    EditedStage stage;
    QVERIFY(stage.open());
    clickOn(*stage.knob.editor);
    QVERIFY(stage.isOpen());
    QCOMPARE(stage.selected(), QString());
    stage.doubleClick(stage.knob.editor->geometry().center());
    QVERIFY(stage.isOpen());
    QTest::mouseClick(stage.knob.editor, Qt::LeftButton, Qt::ControlModifier);
    QVERIFY(stage.isOpen());
    QCOMPARE(stage.knob.value, -20);
    QCOMPARE(stage.announced(), QList<int>{});
}

void KnobEditingTest::contextMenuStays()
{
    EditedStage stage;
    QVERIFY(stage.open());
    stage.type("-5");
    std::unique_ptr<QMenu> menu(stage.knob.editor->createStandardContextMenu());
    menu->popup(stage.window.mapToGlobal(QPoint(5, 5)));
    QVERIFY(QTest::qWaitForWindowExposed(menu.get()));
    QTest::mouseClick(menu.get(), Qt::LeftButton, {},
                      menu->actionGeometry(menu->actions().constLast()).center());
    menu.reset();
    QCOMPARE(stage.announced(), QList<int>{});
    QVERIFY(!stage.knob.editor->isHidden());
    QCOMPARE(stage.selected(), QStringLiteral("-5"));
}

void KnobEditingTest::editorOfAnotherKnobEndsIt()
{
    EditedStage stage;
    QVERIFY(stage.open());
    stage.type("-5");
    QTest::mouseDClick(stage.window.windowHandle(), Qt::LeftButton, {},
                       stage.secondKnob.mapTo(&stage.window, stage.secondKnob.textRect.center()));
    QCOMPARE(stage.announced(), QList<int>{-5});
    QVERIFY(stage.knob.editor->isHidden());
    QVERIFY(stage.secondKnob.editor->hasFocus());
    QCOMPARE(stage.secondKnob.editor->selectedText(), QStringLiteral("-40"));
    clickOn(stage.caption);
    QVERIFY(stage.secondKnob.editor->isHidden());
    QCOMPARE(stage.secondKnob.value, -40);
    QCOMPARE(stage.announced(), QList<int>{});
}

void KnobEditingTest::doubleClickBesideTheEditorOpensItAnew()
{
    // The editor is a little smaller than the text that it covers.
    EditedStage stage;
    stage.knob.fontPointSize = 30;
    QVERIFY(stage.open());
    stage.type("-5");
    const QPoint corner = stage.knob.textRect.topLeft();
    QVERIFY(!stage.knob.editor->geometry().contains(corner));
    stage.doubleClick(corner);
    QCOMPARE(stage.announced(), QList<int>{-5});
    QVERIFY(stage.isOpen());
    QCOMPARE(stage.selected(), QStringLiteral("-5"));
}

void KnobEditingTest::wheelAndMovesElsewhereStay()
{
    EditedStage stage;
    QVERIFY(stage.open());
    QTest::mouseMove(stage.window.windowHandle(), QPoint(3, 190));
    QTest::mouseMove(stage.window.windowHandle(), QPoint(200, 100));
    stage.secondKnob.setValue(-41);
    QVERIFY(stage.isOpen());
    QCOMPARE(stage.selected(), QStringLiteral("-20"));
    QCOMPARE(stage.announced(), QList<int>{});
}

void KnobEditingTest::escapeKeepsTheValue()
{
    EditedStage stage(9);
    QVERIFY(stage.open());
    stage.type("-5");
    QTest::keyClick(stage.knob.editor, Qt::Key_Escape);
    QVERIFY(stage.knob.editor->isHidden());
    QCOMPARE(stage.knob.value, -20);
    QCOMPARE(stage.announced(), QList<int>{});
    clickOn(stage.caption);
    QCOMPARE(stage.announced(), QList<int>{});

    stage.doubleClick(stage.knob.textRect.center());
    QCOMPARE(stage.selected(), QStringLiteral("-11"));
}

void KnobEditingTest::otherKeysAreTheEditors()
{
    EditedStage stage;
    QVERIFY(stage.open());
    QTest::keyClick(stage.knob.editor, Qt::Key_Home);
    QTest::keyClick(stage.knob.editor, Qt::Key_Delete);
    QCOMPARE(stage.knob.editor->text(), QStringLiteral("20"));
    // Escape is the editor's own only while the editor has the keyboard.
    QTest::keyClick(&stage.neighbour, Qt::Key_Escape);
    QVERIFY(!stage.knob.editor->isHidden());
    QTest::keyClick(stage.knob.editor, Qt::Key_Tab);
    QCOMPARE(stage.announced(), QList<int>{6});
    QVERIFY(stage.knob.editor->isHidden());
}

void KnobEditingTest::hiddenWindowEndsIt()
{
    EditedStage stage(9);
    QVERIFY(stage.open());
    stage.type("x");
    stage.window.hide();
    QCoreApplication::processEvents();
    QCOMPARE(stage.announced(), QList<int>{-29});
    QVERIFY(stage.knob.editor->isHidden());
    QVERIFY(stage.show());
    QVERIFY(stage.knob.editor->isHidden());
    QCOMPARE(stage.announced(), QList<int>{});
}

void KnobEditingTest::anotherActiveWindowEndsIt()
{
    // What a minimised window meets as well.
    EditedStage stage(9);
    QVERIFY(stage.open());
    stage.type("-5");
    QWidget other;
    other.show();
    other.activateWindow();
    QVERIFY(QTest::qWaitForWindowActive(&other));
    QVERIFY(stage.knob.editor->isHidden());
    QCOMPARE(stage.announced(), QList<int>{-14});
}

void KnobEditingTest::closedEditorWatchesNothing()
{
    EditedStage stage;
    QVERIFY(stage.open());
    QTest::keyClick(stage.knob.editor, Qt::Key_Return);
    QCOMPARE(stage.announced(), QList<int>{-20});
    clickOn(stage.caption);
    stage.press({60, 20});
    stage.release({60, 20});
    stage.window.hide();
    QCOMPARE(stage.announced(), QList<int>{});
}

void KnobEditingTest::knobDestroyedWhileEditing()
{
    // The device was unplugged: the panel goes with all that is in it.
    QWidget window;
    window.resize(200, 200);
    auto* panel = new QWidget(&window);
    panel->setGeometry(0, 0, 200, 150);
    auto* knob = new Knob(panel);
    knob->setGeometry(0, 0, 120, 120);
    window.show();
    window.activateWindow();
    QVERIFY(QTest::qWaitForWindowActive(&window));
    QTRY_VERIFY(!knob->textRect.isNull());
    int announced = 0;
    connect(knob, &Knob::valueChangedSig, this, [&announced] { ++announced; });
    QTest::mouseDClick(window.windowHandle(), Qt::LeftButton, {}, knob->textRect.center());
    QVERIFY(knob->editor->hasFocus());
    panel->deleteLater();
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    QTest::mouseClick(window.windowHandle(), Qt::LeftButton, {}, {60, 20});
    QTest::mouseClick(window.windowHandle(), Qt::LeftButton, {}, {190, 190});
    QCOMPARE(announced, 0);
}

void KnobEditingTest::receiverDestroysTheKnob_data()
{
    QTest::addColumn<std::function<void(QWidget&, Knob&)>>("end");

    const auto row = [](const char* name, const std::function<void(QWidget&, Knob&)>& end) {
        QTest::newRow(name) << end;
    };
    row("enter", [](QWidget&, Knob& knob) { QTest::keyClick(knob.editor, Qt::Key_Return); });
    row("click on the knob", [](QWidget& window, Knob&) {
        QTest::mouseClick(window.windowHandle(), Qt::LeftButton, {}, {60, 20});
    });
    row("Ctrl+click on the knob", [](QWidget& window, Knob&) {
        QTest::mouseClick(window.windowHandle(), Qt::LeftButton, Qt::ControlModifier, {60, 20});
    });
    row("click on the background", [](QWidget& window, Knob&) {
        QTest::mouseClick(window.windowHandle(), Qt::LeftButton, {}, {190, 190});
    });
    row("loss of the focus", [](QWidget& window, Knob&) { window.setFocus(); });
    row("hidden window", [](QWidget& window, Knob&) { window.hide(); });
}

void KnobEditingTest::receiverDestroysTheKnob()
{
    QFETCH(const std::function<void(QWidget&, Knob&)>, end);

    QWidget window;
    window.resize(200, 200);
    auto* knob = new Knob(&window);
    knob->setGeometry(0, 0, 120, 120);
    window.show();
    window.activateWindow();
    QVERIFY(QTest::qWaitForWindowActive(&window));
    QTRY_VERIFY(!knob->textRect.isNull());
    QTest::mouseDClick(window.windowHandle(), Qt::LeftButton, {}, knob->textRect.center());
    const QPointer<QLineEdit> editor(knob->editor);
    QVERIFY(editor->hasFocus());
    const QPointer<Knob> alive(knob);
    connect(knob, &Knob::valueChangedSig, this, [alive, editor] {
        delete alive.data();
        QVERIFY2(!editor.isNull(), "it has to return from its own signal first");
    });
    end(window, *knob);
    QVERIFY(alive.isNull());
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    QVERIFY(editor.isNull());
}

QUORVEL_TEST_MAIN(KnobEditingTest)

#include "knob_editing_test.moc"
