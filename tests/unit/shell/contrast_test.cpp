#include "controls/button.h"
#include "controls/knob.h"
#include "shell/tray_icon.h"
#include "support/contrast.h"
#include "support/panel_table.h"
#include "support/test_main.h"
#include "window_stage.h"

#include <QAbstractItemView>
#include <QApplication>
#include <QComboBox>
#include <QLabel>
#include <QLineEdit>
#include <QMenu>
#include <QMessageBox>
#include <QStyle>
#include <QStyleOptionComboBox>
#include <QTest>
#include <QTimer>

/// How well each text can be read: the figures of docs/looks.md, and that no colours that the user
/// has chosen for the desktop make any text worse.
class ContrastTest : public QObject, private WindowStage
{
    Q_OBJECT

private slots:
    void initTestCase();
    void init();
    void definition();
    void panels_data();
    void panels();
    void statusLine_data() { addDesktops(); }
    void statusLine();
    void dialog_data() { addDesktops(); }
    void dialog();
    void lists_data() { addDesktops(); }
    void lists();
    void menus_data() { addDesktops(); }
    void menus();
    void messageBox_data() { addDesktops(); }
    void messageBox();

private:
    static void addDesktops();
    void knobEditor();

    QPalette usual;
};

namespace {

/// What the guidelines ask of texts that are large or not needed.
constexpr double readable = 3.0;

QPalette allOf(const QColor& text, const QColor& background, const QColor& marked)
{
    QPalette palette;
    for (const auto role :
         {QPalette::WindowText, QPalette::Text, QPalette::ButtonText, QPalette::BrightText,
          QPalette::ToolTipText, QPalette::PlaceholderText, QPalette::HighlightedText})
        palette.setColor(role, text);
    for (const auto role : {QPalette::Window, QPalette::Base, QPalette::Button,
                            QPalette::AlternateBase, QPalette::ToolTipBase, QPalette::Light,
                            QPalette::Midlight, QPalette::Mid, QPalette::Dark, QPalette::Shadow})
        palette.setColor(role, background);
    palette.setColor(QPalette::Highlight, marked);
    return palette;
}

QPalette desktop(const QByteArray& name, const QPalette& usual)
{
    if (name.startsWith("white on black"))
        return allOf(Qt::white, Qt::black, QColor(0, 0, 160));
    if (name.startsWith("black on white"))
        return allOf(Qt::black, Qt::white, QColor(120, 200, 255));
    if (name.startsWith("odd"))
        return allOf(QColor(80, 0, 0), QColor(255, 190, 0), QColor(0, 255, 0));
    return usual;
}

/// The figures of docs/looks.md: texts and backgrounds whose colours are fixed.
const QMap<QString, double> fixedFigures{
    {"read-out", 3.7},          {"title or caption", 13.0}, {"knob", 12.4},
    {"button, off", 5.6},       {"button, green", 12.5},    {"button, orange", 6.6},
    {"button, red", 4.2},       {"button, cyan", 13.3},     {"value being typed", 12.8},
    {"value, marked", 6.9},     {"dialog's title", 10.4},   {"dialog's label", 3.0},
    {"dialog's USB error", 3.7}};

/// Says where a text has another contrast than the figure.
QString offFigure(const QString& text, double contrast)
{
    constexpr double rounding = 0.1;
    if (std::abs(contrast - fixedFigures.value(text)) <= rounding)
        return {};
    return QStringLiteral("%1 has %2 instead of %3")
        .arg(text)
        .arg(contrast, 0, 'f', 2)
        .arg(fixedFigures.value(text));
}

/// The rows in the middle in which there are letters, away from a mark of the focus.
QRect rowsOfText(const QWidget& widget, const QRect& area)
{
    constexpr int side = 2;
    const int height = widget.fontMetrics().ascent();
    return {area.x() + side, area.center().y() - height / 2, area.width() - 2 * side, height};
}

/// The inside of a button, without its edge and the glow.
double ofButton(const QImage& picture, const QPushButton& button)
{
    constexpr int edge = 6;
    return Contrast::ofText(picture, button,
                            rowsOfText(button, button.rect().adjusted(edge, 0, -edge, 0)));
}

double ofCombo(const QImage& picture, const QComboBox& combo)
{
    QStyleOptionComboBox option;
    option.initFrom(&combo);
    const QRect field = combo.style()->subControlRect(QStyle::CC_ComboBox, &option,
                                                      QStyle::SC_ComboBoxEditField, &combo);
    return Contrast::ofText(picture, combo, rowsOfText(combo, field));
}

bool hasColor(const QImage& picture, const QColor& color)
{
    for (int y = 0; y < picture.height(); ++y) {
        for (int x = 0; x < picture.width(); ++x) {
            if (picture.pixelColor(x, y) == color)
                return true;
        }
    }
    return false;
}

/// The menu's entry that is worst to read; each also while the pointer is on it.
double leastIn(QMenu& menu)
{
    menu.popup(QPoint());
    double least = 21;
    for (QAction* action : menu.actions()) {
        if (action->isSeparator() || !action->isEnabled())
            continue;
        for (QAction* active : {action, static_cast<QAction*>(nullptr)}) {
            menu.setActiveAction(active);
            constexpr int edge = 2;
            const QRect entry = menu.actionGeometry(action).adjusted(edge, edge, -edge, -edge);
            least = std::min(least, Contrast::ofText(Contrast::enlarged(menu), menu, entry));
        }
    }
    menu.close();
    return least;
}

QString styleName()
{
    return QString(QTest::currentDataTag()).section(", ", 1, 1);
}

} // namespace

void ContrastTest::initTestCase()
{
    usual = QApplication::palette();
}

void ContrastTest::init()
{
    if (QTest::currentDataTag() != nullptr && !styleName().isEmpty()) {
        QApplication::setStyle(styleName());
        QApplication::setPalette(desktop(QTest::currentDataTag(), usual));
    }
    begin();
}

void ContrastTest::addDesktops()
{
    QTest::addColumn<int>("unused");
    for (const char* style : {"fusion", "windows"}) {
        for (const char* colors : {"usual", "white on black", "black on white", "odd"})
            QTest::addRow("%s, %s", colors, style) << 0;
    }
}

void ContrastTest::definition()
{
    QCOMPARE(Contrast::between(qRgb(0, 0, 0), qRgb(255, 255, 255)), 21.0);
    QCOMPARE(Contrast::between(qRgb(7, 8, 9), qRgb(7, 8, 9)), 1.0);
    // The known limit: the lightest grey that may be used for texts on white.
    QVERIFY(std::abs(Contrast::between(qRgb(0x76, 0x76, 0x76), qRgb(255, 255, 255)) - 4.54) < 0.01);
}

void ContrastTest::panels_data()
{
    QTest::addColumn<std::uint32_t>("productId");
    for (const char* style : {"fusion", "windows"}) {
        for (const char* colors : {"usual", "white on black", "black on white"})
            QTest::addRow("%s, %s, ka2", colors, style) << SimulatorControl::ka2;
        for (const PanelTable::Model& model : PanelTable::models)
            QTest::addRow("odd, %s, %s", style, model.name) << model.productId;
    }
}

void ContrastTest::panels()
{
    QFETCH(const std::uint32_t, productId);
    QVERIFY(showPanel(productId));
    const QMap<QString, QString> accents{{"#00ff7f", "button, green"},
                                         {"#ff7f00", "button, orange"},
                                         {"#ff1111", "button, red"},
                                         {"#00FFFF", "button, cyan"}};
    const auto buttons = window->findChildren<Button*>();
    for (Button* button : buttons)
        button->setOn(true);
    const QImage lit = Contrast::enlarged(*window);
    for (const Button* button : buttons)
        QCOMPARE(offFigure(accents.value(button->onTextColor), ofButton(lit, *button)), QString());
    for (Button* button : buttons)
        button->setOn(false);
    const QImage picture = Contrast::enlarged(*window);
    for (const Button* button : buttons)
        QCOMPARE(offFigure("button, off", ofButton(picture, *button)), QString());
    for (const Knob* knob : window->findChildren<Knob*>())
        QCOMPARE(offFigure("knob", Contrast::ofText(picture, *knob, knob->textRect)), QString());
    for (const QLabel* label : window->findChildren<QLabel*>()) {
        const bool isReadOut = label->styleSheet().contains("8px");
        QCOMPARE(offFigure(isReadOut ? "read-out" : "title or caption",
                           Contrast::ofText(picture, *label, label->rect())),
                 QString());
    }
    knobEditor();
}

void ContrastTest::knobEditor()
{
    auto* knob = window->findChild<Knob*>();
    QTest::mouseDClick(knob, Qt::LeftButton, {}, knob->textRect.center());
    QLineEdit& editor = *knob->editor;
    QVERIFY(editor.hasSelectedText());
    const QImage marked = editor.grab().toImage();
    QVERIFY(hasColor(marked, knob->textColor) && hasColor(marked, knob->trackColor));
    QCOMPARE(offFigure("value, marked",
                       Contrast::between(knob->textColor.rgb(), knob->trackColor.rgb())),
             QString());
    editor.deselect();
    QCOMPARE(offFigure("value being typed",
                       Contrast::ofText(Contrast::enlarged(editor), editor, editor.rect())),
             QString());

    const std::unique_ptr<QMenu> menu(editor.createStandardContextMenu());
    QVERIFY(leastIn(*menu) >= readable);
}

void ContrastTest::statusLine()
{
    QVERIFY(show(*window));
    auto* label = window->findChild<QLabel*>();
    QCOMPARE(offFigure("title or caption",
                       Contrast::ofText(Contrast::enlarged(*window), *label, label->rect())),
             QString());
}

void ContrastTest::dialog()
{
    simulated.control().plug(SimulatorControl::ka1);
    QVERIFY(settings->connectDevice());
    simulated.control().setErrorCount(3);
    settings->updateUsbErrorCount();
    QVERIFY(show(*settings));
    const QImage picture = Contrast::enlarged(*settings);
    for (const QLabel* label : settings->findChildren<QLabel*>()) {
        const QString style = label->styleSheet();
        const char* text = style.contains("18px")   ? "dialog's title"
                           : style.contains("14px") ? "dialog's label"
                                                    : "dialog's USB error";
        QCOMPARE(offFigure(text, Contrast::ofText(picture, *label, label->rect())), QString());
    }
    // Fusion paints light from above on it, and some of the colour that marks things; Windows' own
    // styles paint it as it is.
    const double least = styleName() == QLatin1String("fusion") ? 2.4 : 4.2;
    const double ok = ofButton(picture, *settings->findChild<QPushButton*>());
    QVERIFY2(ok >= least, qPrintable(QString::number(ok)));
    for (const QComboBox* combo : settings->findChildren<QComboBox*>()) {
        const double found = ofCombo(picture, *combo);
        QVERIFY2(found >= readable, qPrintable(QString::number(found)));
    }
}

void ContrastTest::lists()
{
    QVERIFY(show(*settings));
    for (QComboBox* combo : settings->findChildren<QComboBox*>()) {
        combo->showPopup();
        QVERIFY(combo->view()->isVisible());
        for (int row = 0; row < combo->count(); ++row) {
            const QModelIndex index = combo->model()->index(row, 0);
            const QRect place = combo->view()->visualRect(index);
            for (const bool marked : {true, false}) {
                combo->view()->setCurrentIndex(marked ? index : QModelIndex());
                const QWidget& list = *combo->view()->viewport();
                const double found = Contrast::ofText(Contrast::enlarged(*combo->view()), list,
                                                      rowsOfText(list, place));
                QVERIFY2(found >= readable, qPrintable(QString::number(found)));
            }
        }
        combo->hidePopup();
    }
}

void ContrastTest::menus()
{
    const TrayIcon tray;
    const double found = leastIn(*tray.contextMenu());
    QVERIFY2(found >= readable, qPrintable(QString::number(found)));
}

void ContrastTest::messageBox()
{
    double text = 0;
    double button = 0;
    QTimer::singleShot(0, this, [&] {
        auto* box = qobject_cast<QMessageBox*>(QApplication::activeModalWidget());
        if (box == nullptr)
            return;
        auto* label = box->findChild<QLabel*>("qt_msgbox_label");
        const QImage picture = Contrast::enlarged(*box);
        text = Contrast::ofText(picture, *label, label->rect());
        button = ofButton(picture, *box->findChild<QPushButton*>());
        box->close();
    });
    TrayIcon tray;
    tray.showSettings();
    QVERIFY2(text >= readable, qPrintable(QString::number(text)));
    QVERIFY2(button >= readable, qPrintable(QString::number(button)));
}

QUORVEL_TEST_MAIN(ContrastTest)
#include "contrast_test.moc"
