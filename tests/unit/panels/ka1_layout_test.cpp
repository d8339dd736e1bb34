#include "controls/button.h"
#include "controls/knob.h"
#include "panel_fixture.h"
#include "panels/ka1.h"
#include "support/test_main.h"

#include <QFrame>
#include <QLabel>
#include <QLayout>
#include <QTest>

/// Where the KA1's controls stand and how they look.
class Ka1LayoutTest : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();
    void rootLayout();
    void labels_data();
    void labels();
    void knobs();
    void buttons_data();
    void buttons();
    void separator();
    void order();

private:
    QLabel* text(const char* caption) const;
    QRect place(const QWidget* widget) const;

    PanelFixture fixture;
};

void Ka1LayoutTest::initTestCase()
{
    fixture.plug(1);
    fixture.start<ka1>();
    fixture.settle();
}

QLabel* Ka1LayoutTest::text(const char* caption) const
{
    const auto labels = fixture.panel->findChildren<QLabel*>();
    for (QLabel* label : labels) {
        if (label->text() == QLatin1String(caption))
            return label;
    }
    qFatal("no label %s", caption);
}

QRect Ka1LayoutTest::place(const QWidget* widget) const
{
    return {widget->mapTo(fixture.panel.get(), QPoint()), widget->size()};
}

void Ka1LayoutTest::rootLayout()
{
    const QLayout* root = fixture.panel->layout();
    QVERIFY(qobject_cast<const QHBoxLayout*>(root) != nullptr);
    QCOMPARE(root->alignment(), Qt::AlignCenter);
    QCOMPARE(root->contentsMargins(), QMargins());
    QCOMPARE(root->count(), 3);
    QCOMPARE(root->itemAt(0)->layout()->contentsMargins(), QMargins(10, 10, 20, 10));
    QCOMPARE(root->itemAt(2)->layout()->contentsMargins(), QMargins(20, 10, 10, 10));
}

void Ka1LayoutTest::labels_data()
{
    QTest::addColumn<QString>("style");
    const QString title = "font-weight: bold; font-size: 12px; color: white;";
    QTest::newRow("INPUT") << title;
    QTest::newRow("HEADPHONE") << title;
    QTest::newRow("Gain") << "font-size: 12px; color: white;";
    QTest::newRow("Volume") << "font-size: 12px; color: white;";
    QTest::newRow("Phone To HP Volume") << "font-size: 10px; color: white;";
}

void Ka1LayoutTest::labels()
{
    QFETCH(QString, style);
    const QLabel* label = text(QTest::currentDataTag());
    QCOMPARE(label->styleSheet(), style);
    QCOMPARE(label->alignment(), Qt::AlignCenter);
    QVERIFY(label->width() >= label->sizeHint().width());
}

void Ka1LayoutTest::knobs()
{
    const Knob* gain = fixture.knob("Dial/MicValue");
    QCOMPARE(gain->size(), QSize(120, 120));
    QCOMPARE(gain->minimum, 0);
    QCOMPARE(gain->maximum, 42);
    QCOMPARE(gain->displayOffset, 0);
    QCOMPARE(gain->arcColor, QColor("#f1fa8c"));
    QCOMPARE(gain->textColor, QColor("#00ff7f"));
    QCOMPARE(gain->shadowColor, QColor("#00ff7f"));
    const Knob* volume = fixture.knob("Dial/HeadphoneValue");
    QCOMPARE(volume->size(), QSize(120, 120));
    QCOMPARE(volume->minimum, -80);
    QCOMPARE(volume->maximum, 6);
    QCOMPARE(volume->arcColor, QColor("#00ffff"));
    QCOMPARE(volume->textColor, QColor("#00ff7f"));
    const Knob* phone = fixture.knob("Dial/OtgToHpValue");
    QCOMPARE(phone->size(), QSize(70, 70));
    QCOMPARE(phone->minimum, -80);
    QCOMPARE(phone->maximum, 6);
    QCOMPARE(phone->arcWidth, 3);
    QCOMPARE(phone->fontPointSize, 10);
    QCOMPARE(phone->shadowColor, QColor("#00ff7f"));
}

void Ka1LayoutTest::buttons_data()
{
    QTest::addColumn<QString>("caption");
    QTest::addColumn<QString>("accent");
    QTest::addColumn<int>("minimumHeight");
    QTest::newRow("Button/MicInstrIsChecked") << "MIC"
                                              << "#00ff7f" << 0;
    QTest::newRow("Button/Mic20dBIsChecked") << "20dB"
                                             << "#ff7f00" << 0;
    QTest::newRow("Button/Mic48VIsChecked") << "48V"
                                            << "#ff1111" << 0;
    QTest::newRow("Button/MonitorMicIsChecked") << "DIRECT"
                                                << "#00FFFF" << 0;
    QTest::newRow("Button/HeadphoneMuteIsChecked") << "MUTE"
                                                   << "#00FFFF" << 40;
    QTest::newRow("Button/HeadphoneDimIsChecked") << "DIM"
                                                  << "#00FFFF" << 40;
}

void Ka1LayoutTest::buttons()
{
    QFETCH(QString, caption);
    QFETCH(QString, accent);
    QFETCH(int, minimumHeight);
    const Button* button = fixture.button(QTest::currentDataTag());
    QCOMPARE(button->text(), caption);
    QCOMPARE(button->onTextColor, accent);
    QCOMPARE(button->glowColor, accent);
    QCOMPARE(button->offTextColor, QString("#8a95aa"));
    QCOMPARE(button->onBackground, QString("#1b1e23"));
    QCOMPARE(button->offBackground, QString("#1b1e23"));
    QCOMPARE(button->borderRadius, 3);
    QCOMPARE(button->styleInt, 10);
    QCOMPARE(button->minimumWidth(), 80);
    QCOMPARE(button->maximumWidth(), 80);
    QCOMPARE(button->minimumHeight(), minimumHeight);
    QVERIFY(button->styleSheet().contains("#8a95aa"));
}

void Ka1LayoutTest::separator()
{
    const auto frames = fixture.panel->findChildren<QFrame*>(QString(), Qt::FindDirectChildrenOnly);
    QList<const QFrame*> lines;
    for (const QFrame* frame : frames) {
        if (frame->frameShape() == QFrame::VLine)
            lines.append(frame);
    }
    QCOMPARE(lines.size(), 1);
    QCOMPARE(lines[0]->frameShadow(), QFrame::Sunken);
    QCOMPARE(lines[0]->width(), 1);
    QCOMPARE(lines[0]->styleSheet(), QString("background-color: #555555;"));
    QVERIFY(place(lines[0]).left() > place(text("INPUT")).right());
    QVERIFY(place(lines[0]).right() < place(text("HEADPHONE")).left());
}

void Ka1LayoutTest::order()
{
    const auto below = [this](const QWidget* upper, const QWidget* lower) {
        return place(upper).bottom() < place(lower).top();
    };
    const QList<const QWidget*> input{text("INPUT"),
                                      fixture.knob("Dial/MicValue"),
                                      fixture.label(0),
                                      text("Gain"),
                                      fixture.button("Button/MicInstrIsChecked"),
                                      fixture.button("Button/Mic20dBIsChecked"),
                                      fixture.button("Button/Mic48VIsChecked"),
                                      fixture.button("Button/MonitorMicIsChecked")};
    for (qsizetype i = 1; i < input.size(); ++i)
        QVERIFY2(below(input[i - 1], input[i]), qPrintable(QString::number(i)));
    const QWidget* mute = fixture.button("Button/HeadphoneMuteIsChecked");
    const QWidget* dim = fixture.button("Button/HeadphoneDimIsChecked");
    const QWidget* phone = fixture.knob("Dial/OtgToHpValue");
    const QList<const QWidget*> output{text("HEADPHONE"), fixture.knob("Dial/HeadphoneValue"),
                                       text("Volume"), mute, phone};
    for (qsizetype i = 1; i < output.size(); ++i)
        QVERIFY2(below(output[i - 1], output[i]), qPrintable(QString::number(i)));
    QCOMPARE(place(mute).top(), place(dim).top());
    QVERIFY(place(mute).right() < place(dim).left());
    QCOMPARE(place(fixture.label(1)).left() - place(phone).right() - 1, 8);
    QVERIFY(below(fixture.label(1), text("Phone To HP Volume")));
}

QUORVEL_TEST_MAIN(Ka1LayoutTest)
#include "ka1_layout_test.moc"
