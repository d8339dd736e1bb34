#include "support/test_main.h"
#include "unit/controls/knob_stage.h"

#include <QImage>
#include <QLineEdit>
#include <QMenu>
#include <QSet>
#include <QTest>

#include <limits>
#include <memory>

namespace {

constexpr int lowest = std::numeric_limits<int>::min();
constexpr int highest = std::numeric_limits<int>::max();

QSet<QRgb> colorsOf(QWidget& widget)
{
    const QImage image = widget.grab().toImage();
    QSet<QRgb> colors;
    for (int y = 0; y < image.height(); ++y)
        for (int x = 0; x < image.width(); ++x)
            colors.insert(image.pixel(x, y));
    return colors;
}

} // namespace

class KnobEditorTest : public QObject
{
    Q_OBJECT

private slots:
    void opensWithTheDisplayedNumber_data();
    void opensWithTheDisplayedNumber();
    void opensFocusedAndSelected();
    void followsThePaintedText();
    void itsOwnClicksLeaveItOpen();
    void geometry_data();
    void geometry();
    void readableOnTheCap();
    void typedInput_data();
    void typedInput();
    void suffixOfItsOwn_data();
    void suffixOfItsOwn();
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

void KnobEditorTest::opensFocusedAndSelected()
{
    KnobStage stage;
    QVERIFY(stage.show());
    stage.neighbour.setFocus();
    QVERIFY(openEditor(stage));
    QCOMPARE(stage.window.focusWidget(), stage.knob.editor);
    QCOMPARE(stage.knob.editor->selectedText(), QStringLiteral("-80"));
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
    QVERIFY(QTest::qWaitForWindowExposed(menu.get()));
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

void KnobEditorTest::readableOnTheCap()
{
    // As in the main window, whose style sheet replaces the style of all that is in it.
    KnobStage stage;
    stage.window.setStyleSheet(QStringLiteral("QMainWindow { background-color: #2c313c; }"));
    stage.knob.textColor = QColor(0x00, 0xff, 0x7f);
    stage.knob.trackColor = QColor(0x12, 0x34, 0x56);
    stage.knob.fontFamily = QStringLiteral("Some Family");
    stage.knob.fontPointSize = 17;
    QVERIFY(stage.show());
    QVERIFY(openEditor(stage));
    // Selected, in the text's own colours; then unselected on the colour of the cap's shade.
    QLineEdit& editor = *stage.knob.editor;
    QCOMPARE(editor.grab().toImage().pixelColor(0, 0), QColor(0x1b, 0x1e, 0x23));
    QVERIFY(colorsOf(editor).contains(0xff123456));
    QVERIFY(colorsOf(editor).contains(0xff00ff7f));
    editor.deselect();
    QVERIFY(!colorsOf(editor).contains(0xff123456));
    QVERIFY(colorsOf(editor).contains(0xff00ff7f));
    QVERIFY(!colorsOf(editor).contains(0xffffffff));
    QCOMPARE(stage.knob.editor->font().family(), QStringLiteral("Some Family"));
    QCOMPARE(stage.knob.editor->font().pointSize(), 17);
    QCOMPARE(stage.knob.editor->alignment(), Qt::AlignCenter);
    QVERIFY(!stage.knob.editor->hasFrame());
    QVERIFY(stage.knob.editor->height() >= stage.knob.editor->fontMetrics().height() - 2);
}

void KnobEditorTest::typedInput_data()
{
    QTest::addColumn<int>("start");
    QTest::addColumn<int>("offset");
    QTest::addColumn<QString>("text");
    QTest::addColumn<int>("expected");

    const auto row = [](const char* name, int start, int offset, const char* text, int expected) {
        QTest::newRow(name) << start << offset << QString::fromLatin1(text) << expected;
    };
    row("number", -20, 0, "-12", -12);
    row("number and unit", -20, 0, "-12dB", -12);
    row("positive", -20, 0, "5", 5);
    row("positive and unit", -20, 0, "5dB", 5);
    row("blank before the unit", -20, 0, "5 dB", 5);
    row("plus sign", -20, 0, "+5", 5);
    row("above the maximum", -20, 0, "999", 6);
    row("below the minimum", -20, 0, "-5000", -80);
    row("wrong case", -20, 0, "5 db", -20);
    row("unit twice", -20, 0, "5dBdB", -20);
    row("unit alone", -20, 0, "dB", -20);
    row("unit first", -20, 0, "dB5", -20);
    row("empty", -20, 0, "", -20);
    row("words", -20, 0, "loud", -20);
    row("fraction", -20, 0, "5.5", -20);
    row("hexadecimal", -20, 0, "0x5", -20);
    row("leading zero is decimal", -80, 0, "-010", -10);
    row("group separator", -20, 0, "1,000", -20);
    row("highest int", -20, 0, "2147483647", 6);
    row("past the highest int", -20, 0, "2147483648", -20);
    row("lowest int", -20, 0, "-2147483648", -80);
    row("past the lowest int", -20, 0, "-2147483649", -20);
    row("very long", -20, 0, "99999999999999999999999999", -20);
    row("offset", -20, 9, "10", 1);
    row("offset and unit", -20, 9, "10dB", 1);
    row("offset, rejected", -20, 9, "loud", -29);
    row("offset, rejected near the minimum", -75, 9, "", -80);
    row("offset, lowest int", -20, 9, "-2147483648", -80);
    row("negative offset, highest int", -20, -9, "2147483647", 6);
}

void KnobEditorTest::typedInput()
{
    QFETCH(const int, start);
    QFETCH(const int, offset);
    QFETCH(const QString, text);
    QFETCH(const int, expected);

    KnobStage stage;
    QVERIFY(stage.show());
    stage.knob.value = start;
    stage.knob.displayOffset = offset;
    QVERIFY(openEditor(stage));
    stage.knob.editor->setText(text);
    QTest::keyClick(stage.knob.editor, Qt::Key_Return);
    QCOMPARE(stage.knob.value, expected);
    QCOMPARE(stage.announced(), QList<int>{expected});
    QVERIFY(stage.knob.editor->isHidden());
}

void KnobEditorTest::suffixOfItsOwn_data()
{
    QTest::addColumn<QString>("suffix");
    QTest::addColumn<QString>("text");
    QTest::addColumn<int>("expected");

    QTest::newRow("with it") << QStringLiteral("%") << QStringLiteral("5%") << 5;
    QTest::newRow("longer") << QStringLiteral(" deg") << QStringLiteral("5 deg") << 5;
    QTest::newRow("without it") << QStringLiteral("%") << QStringLiteral("5") << 5;
    QTest::newRow("the usual one") << QStringLiteral("%") << QStringLiteral("5dB") << -20;
    QTest::newRow("none") << QString() << QStringLiteral("5") << 5;
    QTest::newRow("none, the usual one") << QString() << QStringLiteral("5dB") << -20;
}

void KnobEditorTest::suffixOfItsOwn()
{
    QFETCH(const QString, suffix);
    QFETCH(const QString, text);
    QFETCH(const int, expected);

    KnobStage stage;
    stage.knob.value = -20;
    stage.knob.suffix = suffix;
    QVERIFY(stage.show());
    QVERIFY(openEditor(stage));
    stage.knob.editor->setText(text);
    QTest::keyClick(stage.knob.editor, Qt::Key_Return);
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
