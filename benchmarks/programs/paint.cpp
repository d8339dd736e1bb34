#include "benchmarks/programs/repeat.h"
#include "controls/button.h"
#include "controls/keyboard_policy.h"
#include "controls/knob.h"

#include <QApplication>
#include <QDial>
#include <QMainWindow>
#include <QMouseEvent>
#include <QPushButton>
#include <QVBoxLayout>

#include <cstdio>
#include <functional>
#include <map>
#include <string>

namespace {

constexpr int knobSize = 120;

/// Counts how often a widget is painted.
class PaintCounter : public QObject
{
public:
    using QObject::QObject;
    int count = 0;

    bool eventFilter(QObject* watched, QEvent* event) override
    {
        if (event->type() == QEvent::Paint)
            ++count;
        return QObject::eventFilter(watched, event);
    }
};

/// The panel's window with a single control in it.
class Stage
{
public:
    explicit Stage(QWidget* shownControl)
        : control(shownControl)
    {
        window.setStyleSheet(QStringLiteral("QMainWindow { background-color: #2c313c; }"));
        auto* central = new QWidget(&window);
        auto* layout = new QVBoxLayout(central);
        layout->addWidget(control);
        window.setCentralWidget(central);
        // As the panel's: the control would have the ring to paint otherwise.
        KeyboardPolicy::holdWindow(window);
        window.show();
        QCoreApplication::processEvents();
        control->installEventFilter(&counter);
    }

    /// Changes the control and has it painted at once.
    void change(const std::function<void()>& action)
    {
        const int before = counter.count;
        action();
        while (counter.count == before)
            QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents);
    }

private:
    QMainWindow window;
    QWidget* control;
    PaintCounter counter;
};

void press(QWidget* widget)
{
    const QPointF centre = widget->rect().center();
    for (const QEvent::Type type : {QEvent::MouseButtonPress, QEvent::MouseButtonRelease}) {
        QMouseEvent event(type, centre, widget->mapToGlobal(centre), Qt::LeftButton,
                          type == QEvent::MouseButtonPress ? Qt::LeftButton : Qt::NoButton,
                          Qt::NoModifier);
        QApplication::sendEvent(widget, &event);
    }
}

/// As the panels make it.
Button* panelButton()
{
    auto* button = new Button(QStringLiteral("MUTE"));
    button->onTextColor = QStringLiteral("#00FFFF");
    button->offTextColor = QStringLiteral("#8a95aa");
    button->onBackground = QStringLiteral("#1b1e23");
    button->offBackground = QStringLiteral("#1b1e23");
    button->glowColor = QStringLiteral("#00FFFF");
    button->setFixedSize(80, 40);
    button->applyStyle();
    return button;
}

void style(QPushButton& button, bool on)
{
    button.setStyleSheet(
        QStringLiteral("QPushButton {   color: %1;   background-color: #1b1e23;"
                       "   border-radius: 3px;}QPushButton:pressed {   background-color: #1b1e23;}")
            .arg(QLatin1String(on ? "#00FFFF" : "#8a95aa")));
}

void paintKnobs(int count)
{
    auto* knob = new Knob;
    knob->setFixedSize(knobSize, knobSize);
    Stage stage(knob);
    repeat(count, [&, value = -40]() mutable {
        value = value == 5 ? -40 : value + 1;
        stage.change([&] { knob->setValue(value); });
    });
}

void paintDials(int count)
{
    auto* dial = new QDial;
    dial->setRange(-80, 6);
    dial->setFixedSize(knobSize, knobSize);
    Stage stage(dial);
    repeat(count, [&, value = -40]() mutable {
        value = value == 5 ? -40 : value + 1;
        stage.change([&] { dial->setValue(value); });
    });
}

void paintButtons(int count)
{
    Button* button = panelButton();
    Stage stage(button);
    repeat(count, [&] { stage.change([&] { press(button); }); });
}

/// Styled twice for each press, as a button of the panels is: with the old look, then the new one.
void paintPushButtons(int count)
{
    auto* button = new QPushButton(QStringLiteral("MUTE"));
    button->setFixedSize(80, 40);
    bool on = false;
    QObject::connect(button, &QPushButton::pressed, button, [&] {
        style(*button, on);
        on = !on;
        style(*button, on);
    });
    style(*button, on);
    Stage stage(button);
    repeat(count, [&] { stage.change([&] { press(button); }); });
}

} // namespace

/// benchmark-paint KIND COUNT: changes a control COUNT times, has it painted after each, and prints
/// the median duration of that in microseconds.
int main(int argc, char** argv)
{
    const QApplication application(argc, argv);
    if (argc != 3)
        qFatal("usage: benchmark-paint KIND COUNT");
    const std::map<std::string, std::function<void(int)>> kinds{{"knob", paintKnobs},
                                                                {"dial", paintDials},
                                                                {"button", paintButtons},
                                                                {"pushbutton", paintPushButtons}};
    const auto kind = kinds.find(argv[1]);
    if (kind == kinds.end())
        qFatal("no such kind of control: %s", argv[1]);
    kind->second(std::stoi(argv[2]));
    return 0;
}
