#include "support/test_main.h"
#include "unit/controls/knob_stage.h"

#include <QApplication>
#include <QKeyEvent>
#include <QLineEdit>
#include <QTest>

#include <memory>

/// The knob under the keyboard, and who has the keyboard when.
class KnobKeysTest : public QObject
{
    Q_OBJECT

private slots:
    void init();
    void keys_data();
    void keys();
    void keysForOthers_data();
    void keysForOthers();
    void enterOpensTheEditor_data();
    void enterOpensTheEditor();
    void enterWithoutText();
    void typedValueBringsTheFocusBack();
    void escapeBringsTheFocusBack();
    void tabLeavesTheEditorForTheNextControl();
    void keysOfTheEditorStayThere_data();
    void keysOfTheEditorStayThere();
    void mouseNeverMovesTheFocus_data();
    void mouseNeverMovesTheFocus();
    void editingByMouseLeavesTheFocusWhereItWas();
    void editingByMouseWithoutAnyFocus();
    void ringComesWithTheKeyboard();
    void ringGoesWithTheFocus();

private:
    QImage picture() { return stage->knob.grab().toImage(); }
    void key(int key, Qt::KeyboardModifiers modifiers = Qt::NoModifier)
    {
        QTest::keyClick(stage->window.windowHandle(), static_cast<Qt::Key>(key), modifiers);
    }

    std::unique_ptr<KnobStage> stage;
};

void KnobKeysTest::init()
{
    stage.reset();
    stage = std::make_unique<KnobStage>();
    stage->knob.value = -20;
    QVERIFY(stage->show());
    stage->knob.setFocus(Qt::OtherFocusReason);
}

void KnobKeysTest::keys_data()
{
    QTest::addColumn<int>("pressed");
    QTest::addColumn<int>("from");
    QTest::addColumn<int>("to");
    QTest::newRow("up") << int(Qt::Key_Up) << -20 << -19;
    QTest::newRow("right") << int(Qt::Key_Right) << -20 << -19;
    QTest::newRow("down") << int(Qt::Key_Down) << -20 << -21;
    QTest::newRow("left") << int(Qt::Key_Left) << -20 << -21;
    QTest::newRow("page up") << int(Qt::Key_PageUp) << -20 << -15;
    QTest::newRow("page down") << int(Qt::Key_PageDown) << -20 << -25;
    QTest::newRow("home") << int(Qt::Key_Home) << -20 << -80;
    QTest::newRow("end") << int(Qt::Key_End) << -20 << 6;
    QTest::newRow("up at the end") << int(Qt::Key_Up) << 6 << 6;
    QTest::newRow("down at the end") << int(Qt::Key_Down) << -80 << -80;
    QTest::newRow("page up near the end") << int(Qt::Key_PageUp) << 4 << 6;
    QTest::newRow("page down near the end") << int(Qt::Key_PageDown) << -79 << -80;
    QTest::newRow("home at home") << int(Qt::Key_Home) << -80 << -80;
}

void KnobKeysTest::keys()
{
    QFETCH(const int, pressed);
    QFETCH(const int, from);
    QFETCH(const int, to);
    stage->knob.value = from;
    key(pressed);
    QCOMPARE(stage->announced(), QList<int>{to});
    QCOMPARE(stage->knob.value, to);
}

void KnobKeysTest::keysForOthers_data()
{
    QTest::addColumn<int>("pressed");
    QTest::addColumn<Qt::KeyboardModifiers>("modifiers");
    QTest::newRow("letter") << int(Qt::Key_A) << Qt::KeyboardModifiers();
    QTest::newRow("space") << int(Qt::Key_Space) << Qt::KeyboardModifiers();
    QTest::newRow("escape") << int(Qt::Key_Escape) << Qt::KeyboardModifiers();
    QTest::newRow("Ctrl") << int(Qt::Key_Control) << Qt::KeyboardModifiers(Qt::ControlModifier);
    QTest::newRow("Ctrl+Up") << int(Qt::Key_Up) << Qt::KeyboardModifiers(Qt::ControlModifier);
    QTest::newRow("Alt+End") << int(Qt::Key_End) << Qt::KeyboardModifiers(Qt::AltModifier);
}

void KnobKeysTest::keysForOthers()
{
    QFETCH(const int, pressed);
    QFETCH(const Qt::KeyboardModifiers, modifiers);
    const QImage before = picture();
    QKeyEvent event(QEvent::KeyPress, pressed, modifiers);
    QApplication::sendEvent(&stage->knob, &event);
    QVERIFY(!event.isAccepted());
    QCOMPARE(stage->announced(), QList<int>{});
    QCOMPARE(picture(), before);
}

void KnobKeysTest::enterOpensTheEditor_data()
{
    QTest::addColumn<int>("pressed");
    QTest::newRow("Return") << int(Qt::Key_Return);
    QTest::newRow("Enter of the number pad") << int(Qt::Key_Enter);
}

void KnobKeysTest::enterOpensTheEditor()
{
    QFETCH(const int, pressed);
    key(pressed);
    QVERIFY(stage->knob.editor->isVisible());
    QVERIFY(stage->knob.editor->hasFocus());
    QCOMPARE(stage->knob.editor->text(), QString("-20"));
    QCOMPARE(stage->knob.editor->selectedText(), QString("-20"));
    QCOMPARE(stage->announced(), QList<int>{});
}

void KnobKeysTest::enterWithoutText()
{
    stage->knob.showText = false;
    key(Qt::Key_Return);
    QVERIFY(!stage->knob.editor->isVisible());
}

void KnobKeysTest::typedValueBringsTheFocusBack()
{
    key(Qt::Key_Return);
    QTest::keyClicks(stage->knob.editor, QStringLiteral("-3"));
    key(Qt::Key_Return);
    QCOMPARE(stage->announced(), QList<int>{-3});
    QVERIFY(!stage->knob.editor->isVisible());
    QVERIFY(stage->knob.hasFocus());
    key(Qt::Key_Up);
    QCOMPARE(stage->announced(), QList<int>{-2});
}

void KnobKeysTest::escapeBringsTheFocusBack()
{
    key(Qt::Key_Return);
    QTest::keyClicks(stage->knob.editor, QStringLiteral("-3"));
    key(Qt::Key_Escape);
    QCOMPARE(stage->announced(), QList<int>{});
    QCOMPARE(stage->knob.value, -20);
    QVERIFY(!stage->knob.editor->isVisible());
    QVERIFY(stage->knob.hasFocus());
}

void KnobKeysTest::tabLeavesTheEditorForTheNextControl()
{
    key(Qt::Key_Return);
    QTest::keyClicks(stage->knob.editor, QStringLiteral("-3"));
    key(Qt::Key_Tab);
    QCOMPARE(stage->announced(), QList<int>{-3});
    QVERIFY(stage->neighbour.hasFocus());
}

void KnobKeysTest::keysOfTheEditorStayThere_data()
{
    QTest::addColumn<int>("pressed");
    QTest::newRow("up") << int(Qt::Key_Up);
    QTest::newRow("page down") << int(Qt::Key_PageDown);
    QTest::newRow("home") << int(Qt::Key_Home);
    QTest::newRow("left") << int(Qt::Key_Left);
}

void KnobKeysTest::keysOfTheEditorStayThere()
{
    QFETCH(const int, pressed);
    key(Qt::Key_Return);
    key(pressed);
    QCOMPARE(stage->announced(), QList<int>{});
    QVERIFY(stage->knob.editor->isVisible());
}

void KnobKeysTest::mouseNeverMovesTheFocus_data()
{
    QTest::addColumn<bool>("held");
    QTest::newRow("by another control") << true;
    QTest::newRow("by none") << false;
}

void KnobKeysTest::mouseNeverMovesTheFocus()
{
    QFETCH(const bool, held);
    if (held)
        stage->neighbour.setFocus();
    else
        stage->knob.clearFocus();
    QWidget* const before = stage->window.focusWidget();
    QCOMPARE(before != nullptr, held);
    // One down and one to the right of where no drag has been yet.
    stage->press({5, 60});
    stage->move({5, 50});
    stage->release({5, 50});
    stage->press({5, 60}, Qt::ControlModifier);
    stage->release({5, 60});
    QVERIFY(stage->wheel({0, 120}));
    QCOMPARE(stage->announced(), (QList<int>{-20, -80, -79}));
    QCOMPARE(stage->window.focusWidget(), before);
}

void KnobKeysTest::editingByMouseLeavesTheFocusWhereItWas()
{
    stage->neighbour.setFocus();
    stage->doubleClick({60, 60});
    QVERIFY(stage->knob.editor->hasFocus());
    // A second time, while it is open.
    QTest::mouseDClick(&stage->knob, Qt::LeftButton, {}, {60, 60});
    QTest::keyClicks(stage->knob.editor, QStringLiteral("-3"));
    key(Qt::Key_Return);
    QCOMPARE(stage->knob.value, -3);
    QVERIFY(stage->neighbour.hasFocus());
}

void KnobKeysTest::editingByMouseWithoutAnyFocus()
{
    stage->knob.clearFocus();
    stage->doubleClick({60, 60});
    key(Qt::Key_Return);
    QCOMPARE(stage->window.focusWidget(), nullptr);
}

void KnobKeysTest::ringComesWithTheKeyboard()
{
    stage->knob.clearFocus();
    const QImage without = picture();
    stage->knob.setFocus(Qt::OtherFocusReason);
    QCOMPARE(picture(), without);
    key(Qt::Key_End);
    QCOMPARE(stage->knob.value, 6);
    stage->knob.setValue(-20);
    const QImage with = picture();
    QVERIFY(with != without);
    QCOMPARE(with.pixelColor(60, 0), QColor(Qt::white));
    QCOMPARE(with.pixelColor(60, 1), QColor(Qt::white));
    QCOMPARE(with.pixelColor(60, 2), without.pixelColor(60, 2));
}

void KnobKeysTest::ringGoesWithTheFocus()
{
    stage->knob.clearFocus();
    const QImage without = picture();
    stage->knob.setFocus(Qt::OtherFocusReason);
    key(Qt::Key_Tab);
    QVERIFY(stage->neighbour.hasFocus());
    QCOMPARE(picture(), without);
    key(Qt::Key_Backtab);
    QVERIFY(stage->knob.hasFocus());
    QVERIFY(picture() != without);
}

QUORVEL_TEST_MAIN(KnobKeysTest)

#include "knob_keys_test.moc"
