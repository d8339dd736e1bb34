#include "support/patience.h"
#include "support/test_main.h"
#include "unit/controls/knob_stage.h"

#include <QLineEdit>
#include <QMenu>
#include <QTest>

#include <limits>
#include <memory>

namespace {

constexpr int lowest = std::numeric_limits<int>::min();
constexpr int highest = std::numeric_limits<int>::max();

} // namespace

class KnobEditorTest : public QObject
{
    Q_OBJECT

private slots:
    void opensWithTheDisplayedNumber_data();
    void opensWithTheDisplayedNumber();
    void followsThePaintedText();
    void itsOwnClicksLeaveItOpen();
    void geometry_data();
    void geometry();
    void typedInput_data();
    void typedInput();
    void extremeNumbers_data();
    void extremeNumbers();

private:
    static bool openEditor(KnobStage& stage);
};

bool KnobEditorTest::openEditor(KnobStage& stage)
{
    stage.doubleClick(stage.knob.textRect.center());
    return stage.knob.editor->isVisible() && stage.knob.editor->hasFocus();
}

void KnobEditorTest::opensWithTheDisplayedNumber_data()
{
    QTest::addColumn<int>("value");
    QTest::addColumn<int>("offset");
    QTest::addColumn<QString>("text");

    QTest::newRow("plain") << -20 << 0 << QStringLiteral("-20");
    QTest::newRow("offset") << 1 << 9 << QStringLiteral("10");
    // Printed as 0, but edited as what it stands for.
    QTest::newRow("zero with offset") << 0 << 9 << QStringLiteral("9");
    QTest::newRow("beyond an int") << 6 << highest << QStringLiteral("2147483653");
}

void KnobEditorTest::opensWithTheDisplayedNumber()
{
    QFETCH(const int, value);
    QFETCH(const int, offset);
    QFETCH(const QString, text);

    KnobStage stage;
    stage.knob.value = value;
    stage.knob.displayOffset = offset;
    QVERIFY(stage.show());
    QVERIFY(openEditor(stage));
    QCOMPARE(stage.knob.editor->text(), text);
}

void KnobEditorTest::followsThePaintedText()
{
    KnobStage stage;
    stage.knob.value = 0;
    QVERIFY(stage.show());
    QVERIFY(openEditor(stage));
    const int narrow = stage.knob.editor->width();
    stage.knob.setValue(-80);
    QVERIFY(stage.knob.editor->width() > narrow);
    QVERIFY(stage.knob.textRect.contains(stage.knob.editor->geometry()));
}

void KnobEditorTest::itsOwnClicksLeaveItOpen()
{
    KnobStage stage;
    QVERIFY(stage.show());
    QVERIFY(openEditor(stage));
    QLineEdit& editor = *stage.knob.editor;
    QTest::keyClicks(&editor, QStringLiteral("x"));
    stage.press(editor.geometry().center());
    stage.release(editor.geometry().center());
    stage.doubleClick(editor.geometry().center());
    const std::unique_ptr<QMenu> menu(editor.createStandardContextMenu());
    menu->popup(stage.window.mapToGlobal(QPoint(5, 5)));
    QVERIFY(QTest::qWaitForWindowExposed(menu.get(), patience));
    QTest::mouseClick(menu.get(), Qt::LeftButton, {},
                      menu->actionGeometry(menu->actions().constLast()).center());
    QCOMPARE(stage.announced(), QList<int>{});
    QCOMPARE(editor.text(), QStringLiteral("x"));
    QVERIFY(!editor.isHidden());
}

void KnobEditorTest::geometry_data()
{
    QTest::addColumn<QRect>("text");
    QTest::addColumn<QRect>("editor");

    QTest::newRow("both shrink") << QRect(10, 20, 101, 41) << QRect(12, 21, 97, 39);
    QTest::newRow("exactly one pixel") << QRect(10, 20, 40, 40) << QRect(11, 21, 38, 38);
    QTest::newRow("just too small") << QRect(10, 20, 39, 39) << QRect(10, 20, 39, 39);
    QTest::newRow("two and almost three") << QRect(0, 0, 80, 119) << QRect(2, 2, 76, 115);
}

void KnobEditorTest::geometry()
{
    QFETCH(const QRect, text);
    QFETCH(const QRect, editor);

    KnobStage stage;
    QVERIFY(stage.show());
    stage.knob.textRect = text;
    stage.doubleClick(text.center());
    QCOMPARE(stage.knob.editor->geometry(), editor);
}

void KnobEditorTest::typedInput_data()
{
    QTest::addColumn<int>("offset");
    QTest::addColumn<QString>("suffix");
    QTest::addColumn<QString>("text");
    QTest::addColumn<int>("expected");

    const auto row = [](const char* name, const char* text, int expected, int offset = 0,
                        const char* suffix = "dB") {
        QTest::newRow(name) << offset << QString(suffix) << QString(text) << expected;
    };
    row("number and unit", "-12dB", -12);
    row("blank before the unit", "5 dB", 5);
    row("plus sign", "+5", 5);
    row("above the maximum", "999", 6);
    row("below the minimum", "-5000", -80);
    row("wrong case", "5 db", -20);
    row("unit twice", "5dBdB", -20);
    row("unit alone", "dB", -20);
    row("empty", "", -20);
    row("fraction", "5.5", -20);
    row("hexadecimal", "0x5", -20);
    row("leading zero is decimal", "-010", -10);
    row("group separator", "1,000", -20);
    row("past the highest int", "2147483648", -20);
    row("past the lowest int", "-2147483649", -20);
    row("offset and unit", "10dB", 1, 9);
    row("offset, rejected", "loud", -29, 9);
    row("offset, lowest int", "-2147483648", -80, 9);
    row("negative offset, highest int", "2147483647", 6, -9);
    row("longer unit", "5 deg", 5, 0, " deg");
    row("another unit", "5dB", -20, 0, "%");
    row("no unit", "5", 5, 0, "");
}

void KnobEditorTest::typedInput()
{
    QFETCH(const int, offset);
    QFETCH(const QString, suffix);
    QFETCH(const QString, text);
    QFETCH(const int, expected);

    KnobStage stage;
    stage.knob.value = -20;
    stage.knob.displayOffset = offset;
    stage.knob.suffix = suffix;
    stage.knob.editor->setText(text);
    stage.knob.finishEdit();
    QCOMPARE(stage.announced(), QList<int>{expected});
}

void KnobEditorTest::extremeNumbers_data()
{
    QTest::addColumn<int>("minimum");
    QTest::addColumn<int>("maximum");
    QTest::addColumn<int>("offset");
    QTest::addColumn<QString>("text");
    QTest::addColumn<int>("expected");

    QTest::newRow("lowest minus highest")
        << lowest << highest << highest << QString::number(lowest) << lowest;
    QTest::newRow("highest minus lowest")
        << lowest << highest << lowest << QString::number(highest) << highest;
    QTest::newRow("zero minus lowest")
        << lowest << highest << lowest << QStringLiteral("0") << highest;
    QTest::newRow("lowest minus lowest")
        << lowest << highest << lowest << QString::number(lowest) << 0;
}

void KnobEditorTest::extremeNumbers()
{
    QFETCH(const int, minimum);
    QFETCH(const int, maximum);
    QFETCH(const int, offset);
    QFETCH(const QString, text);
    QFETCH(const int, expected);

    KnobStage stage;
    stage.knob.minimum = minimum;
    stage.knob.maximum = maximum;
    stage.knob.displayOffset = offset;
    stage.knob.editor->setText(text);
    stage.knob.finishEdit();
    QCOMPARE(stage.announced(), QList<int>{expected});
}

QUORVEL_TEST_MAIN(KnobEditorTest)

#include "knob_editor_test.moc"
