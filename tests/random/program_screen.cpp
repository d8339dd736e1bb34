#include "controls/button.h"
#include "controls/knob.h"
#include "oracle/ini_values.h"
#include "random/painted_text.h"
#include "random/program.h"
#include "random/virtual_files.h"
#include "settings/settings.h"
#include "shell/main_window.h"
#include "shell/tray_icon.h"

#include <QComboBox>
#include <QDir>
#include <QGraphicsDropShadowEffect>
#include <QLabel>
#include <QLayout>
#include <QLineEdit>
#include <QRegularExpression>

#include <algorithm>

namespace {

std::string truth(bool value)
{
    return value ? "yes" : "no";
}

/// The children of that kind in the order of their names.
template <typename Kind> QList<Kind*> byName(const QWidget& panel)
{
    QList<Kind*> found = panel.findChildren<Kind*>();
    std::ranges::sort(found, [](const Kind* a, const Kind* b) {
        return a->objectName().toStdString() < b->objectName().toStdString();
    });
    return found;
}

std::string told(const Button& button)
{
    static const QRegularExpression color(QStringLiteral("[{ ]color: ([^;]+);"));
    return "button " + button.objectName().toStdString() + ' ' + button.text().toStdString() + ' ' +
           color.match(button.styleSheet()).captured(1).toStdString() +
           (button.glow->isEnabled() ? " lit" : " dark");
}

void addEditor(const Knob& knob, std::vector<std::string>& lines)
{
    if (knob.editor->isHidden())
        return;
    const QString text = knob.editor->text();
    const bool selected = !text.isEmpty() && knob.editor->selectedText() == text;
    lines.push_back("editor " + knob.objectName().toStdString() + ' ' + text.toStdString() +
                    (selected ? " selected" : ""));
}

void addPanel(QWidget& panel, std::vector<std::string>& lines)
{
    lines.push_back(std::string("panel ") + panel.metaObject()->className());
    const QList<Knob*> knobs = byName<Knob>(panel);
    for (Knob* knob : knobs) {
        lines.push_back("knob " + knob->objectName().toStdString() + ' ' +
                        paintedText(*knob).toStdString());
    }
    for (const Button* button : byName<Button>(panel))
        lines.push_back(told(*button));
    const auto labels = panel.findChildren<QLabel*>();
    for (const QLabel* label : labels) {
        if (label->styleSheet().contains(QLatin1String("8px")))
            lines.push_back("level " + label->text().toStdString());
    }
    const QWidget* const focused = panel.window()->focusWidget();
    if (qobject_cast<const Knob*>(focused) || qobject_cast<const Button*>(focused))
        lines.push_back("focus " + focused->objectName().toStdString());
    for (const Knob* knob : knobs)
        addEditor(*knob, lines);
}

} // namespace

std::vector<std::string> Program::screen() const
{
    if (!icon)
        return {};
    std::vector<std::string> lines{"window shown " + truth(window->isVisible()),
                                   "title " + window->windowTitle().toStdString()};
    const QLayout* base = window->centralWidget()->layout();
    for (int i = 0; i < base->count(); ++i) {
        QWidget* const widget = base->itemAt(i)->widget();
        if (const auto* label = qobject_cast<QLabel*>(widget))
            lines.push_back("label " + label->text().toStdString());
        else
            addPanel(*widget, lines);
    }
    lines.push_back("dialog shown " + truth(settings->isVisible()) + " minimised " +
                    truth(settings->isMinimized()) + " on top " +
                    truth(settings->windowFlags().testFlag(Qt::WindowStaysOnTopHint)));
    const auto combos = settings->findChildren<QComboBox*>();
    for (const QComboBox* combo : combos)
        lines.push_back("combo " + combo->currentText().toStdString());
    const auto labels = settings->findChildren<QLabel*>();
    for (const QLabel* label : labels) {
        if (label->styleSheet().contains(QLatin1String("10px")))
            lines.push_back("usb " + (label->isHidden() ? "" : label->text().toStdString()));
    }
    return lines;
}

std::vector<std::string> Program::storage()
{
    std::vector<std::string> lines;
    const QDir folder(Program::folder());
    const QStringList names =
        folder.entryList(QDir::AllEntries | QDir::Hidden | QDir::NoDotAndDotDot, QDir::Name);
    for (const QString& entry : names) {
        const std::string name = entry.toStdString();
        if (!name.ends_with(".ini"))
            lines.push_back("left behind " + name);
        for (const auto& [key, value] : Oracle::parseIni(VirtualFiles::read(name)))
            lines.push_back(name + ' ' + key + '=' + value);
    }
    return lines;
}
