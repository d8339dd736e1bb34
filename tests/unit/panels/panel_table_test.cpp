#include "controls/control_accessibility.h"
#include "controls/knob.h"
#include "controls/read_out.h"
#include "marking_translator.h"
#include "panel_fixture.h"
#include "panel_text.h"
#include "panels/panel.h"
#include "support/panel_table.h"
#include "support/test_main.h"

#include <QAccessible>
#include <QLineEdit>
#include <QTest>

#include <algorithm>
#include <utility>

/// What stands on each panel, in words: that all of the table is there and nothing else, which
/// texts ask for their translation, and that everything has its place. What the controls do is the
/// oracle's matter, how they look that of the pictures.
class PanelTableTest : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase() { ControlAccessibility::install(); }
    void names_data() { addModelRows(); }
    void names();
    void texts_data() { addModelRows(); }
    void texts();
    void nothingIsMisplaced_data() { addModelRows(); }
    void nothingIsMisplaced();
    void stepsOfScreenReaders();
    void openEditor_data() { addModelRows(); }
    void openEditor();
    void saveState_data() { addModelRows(); }
    void saveState();

private:
    PanelTable::Model start();
    QStringList named() const;

    PanelFixture fixture;
};

PanelTable::Model PanelTableTest::start()
{
    QFETCH(const PanelTable::Model, model);
    fixture.plug(model.productId);
    fixture.start(model.name);
    return model;
}

/// "key: name" of everything that can be worked or read, in the order of the keyboard, read-outs
/// last.
QStringList PanelTableTest::named() const
{
    QStringList list;
    const auto add = [&](QWidget* widget) {
        list.append(widget->objectName() + ": " +
                    QAccessible::queryAccessibleInterface(widget)->text(QAccessible::Name));
    };
    QWidget* const panel = fixture.panel.get();
    for (QWidget* next = panel->nextInFocusChain(); next != panel;
         next = next->nextInFocusChain()) {
        if (next->parentWidget() == panel && next->focusPolicy() != Qt::NoFocus)
            add(next);
    }
    for (ReadOut* readOut : panel->findChildren<ReadOut*>())
        add(readOut);
    return list;
}

void PanelTableTest::names()
{
    const MarkingTranslator translator;
    QStringList expected;
    const PanelTable::Model model = start();
    for (const PanelTable::Control& control : model.controls)
        expected.append(QStringLiteral("%1: %2").arg(control.key, control.name));
    QCOMPARE(named(), expected);
}

/// All texts are those of the controls and the headings, which the controls' names begin with.
void PanelTableTest::texts()
{
    const MarkingTranslator translator;
    const PanelTable::Model model = start();
    QStringList texts = PanelText::texts(*fixture.panel);
    for (const PanelTable::Control& control : model.controls)
        QVERIFY2(texts.removeOne(QString(control.text)), control.text);
    const auto isHeadingOf = [&](const QString& text, const PanelTable::Control& control) {
        return QString(control.name).startsWith(text + ' ');
    };
    for (const QString& heading : std::as_const(texts)) {
        QCOMPARE(texts.count(heading), 1);
        QVERIFY2(
            std::ranges::any_of(model.controls,
                                [&](const auto& control) { return isHeadingOf(heading, control); }),
            qPrintable(heading));
    }
}

void PanelTableTest::nothingIsMisplaced()
{
    start();
    fixture.settle();
    QCOMPARE(PanelText::misplaced(*fixture.panel), QStringList());
}

/// They go the way of the wheel.
void PanelTableTest::stepsOfScreenReaders()
{
    const PanelTable::Model& model = PanelTable::models[0];
    const char* const key = std::ranges::find_if(model.controls, &PanelTable::Control::isKnob)->key;
    fixture.plug(model.productId);
    fixture.start(model.name);
    fixture.settle();
    fixture.wheel(key, true);
    const QStringList byWheel = fixture.takeTrace();
    fixture.wheel(key, false);
    fixture.takeTrace();
    auto* const knob = fixture.panel->findChild<QWidget*>(key);
    auto* const value = QAccessible::queryAccessibleInterface(knob)->valueInterface();
    value->setCurrentValue(value->currentValue().toInt() + 1);
    QVERIFY(!byWheel.isEmpty());
    QCOMPARE(fixture.takeTrace(), byWheel);
}

/// It loses the focus while its panel goes, and nothing may come of what was typed.
void PanelTableTest::openEditor()
{
    const PanelTable::Model model = start();
    const char* const key = std::ranges::find_if(model.controls, &PanelTable::Control::isKnob)->key;
    fixture.settle();
    auto* const knob = fixture.panel->findChild<Knob*>(key);
    QTest::mouseDClick(knob, Qt::LeftButton, {}, knob->textRect.center());
    QTest::keyClicks(knob->editor, "7");
    fixture.panel.reset();
    QCOMPARE(IniFile::read(QString(model.name) + ".ini").value(key), QString("0"));
}

/// Nothing waits, so there is nothing to send or to write; an empty panel has no file either.
void PanelTableTest::saveState()
{
    const PanelTable::Model model = start();
    const QString file = QString(model.name) + ".ini";
    const auto before = IniFile::read(file);
    fixture.takeTrace();
    fixture.log().clear();
    dynamic_cast<Panel&>(*fixture.panel).saveState();
    const QStringList saved{"控件状态已保存到配置文件"};
    QCOMPARE(fixture.log().take(), model.name == std::string_view("ka2") ? saved : QStringList());
    QCOMPARE(fixture.takeTrace(), QStringList());
    QCOMPARE(IniFile::read(file), before);

    fixture.plug(model.productId);
    fixture.simulated.control().unplug();
    fixture.start(model.name);
    fixture.log().clear();
    dynamic_cast<Panel&>(*fixture.panel).saveState();
    QCOMPARE(fixture.log().take(), QStringList());
    QVERIFY(!QFile::exists(IniFile::path(file)));
}

QUORVEL_TEST_MAIN(PanelTableTest)
#include "panel_table_test.moc"
