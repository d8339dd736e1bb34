#include "app/translation.h"
#include "controls/button.h"
#include "controls/knob.h"
#include "panel_fixture.h"
#include "settings/settings.h"
#include "settings/settings_choices.h"
#include "shell/main_window.h"
#include "shell/tray_icon.h"
#include "support/test_main.h"

#include <QAction>
#include <QComboBox>
#include <QCoreApplication>
#include <QFile>
#include <QLabel>
#include <QMenu>
#include <QPushButton>
#include <QRegularExpression>
#include <QTest>
#include <QTranslator>

#include <algorithm>
#include <cmath>
#include <iterator>
#include <memory>

/// The guide for musicians against the windows that they see: in both languages it names the
/// controls, choices and entries as they read, leaves none out, and has their ranges and what they
/// are at first.
class GuideTest : public QObject
{
    Q_OBJECT

private slots:
    void cleanup();
    void models_data();
    void models();
    void settingsDialog_data();
    void settingsDialog();
    void latencies_data();
    void latencies();
    void trayMenu_data();
    void trayMenu();
    void words_data();
    void words();

private:
    void load(const QString& locale);
    void open(const PanelTable::Model& model);
    QStringList statusTexts();
    QStringList dialogTexts();

    PanelFixture fixture;
    std::unique_ptr<QTranslator> translator;
};

namespace {

using Row = QStringList;
using Table = QList<Row>;

// The tables of a guide in their order: mouse and keyboard, the models, and these.
constexpr int firstModelTable = 1;
constexpr int settingsTable = 4;
constexpr int latencyTable = 5;
constexpr int menuTable = 6;

constexpr std::uint32_t unknownProduct = 7;
constexpr std::uint32_t firmwareCode = 0xFFDC20A0;

void addLanguageRows()
{
    QTest::addColumn<QString>("language");
    QTest::newRow("English") << QStringLiteral("en_US");
    QTest::newRow("Chinese") << QStringLiteral("zh_CN");
}

QString textOf(const QString& path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? QString::fromUtf8(file.readAll()) : QString();
}

QString guide(const QString& language)
{
    return textOf(QUORVEL_ROOT "/docs/guide/" + language + ".md");
}

QStringList matches(const QString& pattern, const QString& text)
{
    QStringList found;
    for (auto match = QRegularExpression(pattern).globalMatch(text); match.hasNext();) {
        const QRegularExpressionMatch next = match.next();
        found.append(next.captured(next.lastCapturedIndex()));
    }
    return found;
}

/// What stands there in bold: the words that users see.
QStringList screenWords(const QString& markdown)
{
    return matches(QStringLiteral("\\*\\*([^*]+)\\*\\*"), markdown);
}

QStringList numbers(const QString& cell)
{
    return matches(QStringLiteral("-?\\d+(?:\\.\\d+)?"), cell);
}

/// The tables without their heads.
QList<Table> tables(const QString& markdown)
{
    QList<Table> found;
    bool inTable = false;
    for (const QString& line : markdown.split(u'\n')) {
        if (line.startsWith(QLatin1String("|--"))) {
            found.append(Table());
            inTable = true;
        } else if (!line.startsWith(u'|')) {
            inTable = false;
        } else if (inTable) {
            Row cells;
            for (const QString& cell : line.mid(1, line.size() - 2).split(u'|'))
                cells.append(cell.trimmed());
            found.last().append(cells);
        }
    }
    return found;
}

Table table(const QString& language, int number)
{
    return tables(guide(language)).value(number);
}

/// The words of the installer in this language.
QStringList installerTexts(const QString& language)
{
    const QString name = language == QLatin1String("en_US") ? QStringLiteral("ENGLISH")
                                                            : QStringLiteral("SIMPCHINESE");
    return matches("\\$\\{LANG_" + name + "\\} \"(.*)\"",
                   textOf(QUORVEL_ROOT "/packaging/windows/texts.nsh"));
}

/// The numbers on a knob from its lowest step on; the second where a gap comes before it.
QStringList shownRange(const Knob& knob)
{
    QStringList range{QString::number(knob.shownValue(knob.minimum))};
    const qint64 second = knob.shownValue(knob.minimum + 1);
    if (second != knob.shownValue(knob.minimum) + 1)
        range.append(QString::number(second));
    return range << QString::number(knob.shownValue(knob.maximum));
}

/// A row for each control of the panel: its name for screen readers, its range, what it is at
/// first.
Table shownControls(const QWidget& panel)
{
    Table rows;
    for (const auto* knob : panel.findChildren<const Knob*>())
        rows.append({knob->accessibleName(), shownRange(*knob).join(u' '),
                     numbers(knob->shownText(knob->value)).join(u' ')});
    for (const auto* button : panel.findChildren<const Button*>())
        rows.append({button->accessibleName(), QString(), button->on ? "on" : QString()});
    std::sort(rows.begin(), rows.end());
    return rows;
}

/// The same rows from a model's table, which names a section once for all of its controls. A button
/// with two captions goes by one of them, and the phone's levels go without their section.
Table toldControls(const Table& model, const Table& shown)
{
    const auto isShown = [&shown](const QString& name) {
        return std::any_of(shown.begin(), shown.end(),
                           [&name](const Row& row) { return row[0] == name; });
    };
    Table rows;
    QStringList sections;
    for (const Row& row : model) {
        if (!row[0].isEmpty())
            sections = screenWords(row[0]);
        for (const QString& section : sections) {
            for (const QString& word : screenWords(row[1])) {
                const QString name = isShown(word) ? word : section + u' ' + word;
                if (isShown(name))
                    rows.append({name, numbers(row[2]).join(u' '), numbers(row[3]).join(u' ')});
            }
        }
    }
    std::sort(rows.begin(), rows.end());
    return rows;
}

QStringList texts(const QWidget& window)
{
    QStringList found;
    for (const auto* label : window.findChildren<const QLabel*>())
        found.append(label->text());
    for (const auto* button : window.findChildren<const QPushButton*>())
        found.append(button->text());
    for (const auto* combo : window.findChildren<const QComboBox*>()) {
        for (int i = 0; i < combo->count(); ++i)
            found.append(combo->itemText(i));
    }
    return found;
}

QStringList menuTexts()
{
    const TrayIcon tray;
    QStringList found;
    for (const QAction* action : tray.contextMenu()->actions()) {
        if (action->isEnabled() && !action->isSeparator())
            found.append(action->text());
    }
    return found;
}

/// By how many dB the outputs are quieter while DIM is lit.
double dimmedBy(PanelFixture& fixture)
{
    for (auto* knob : fixture.panel->findChildren<Knob*>())
        knob->setValue(0);
    for (auto* button : fixture.panel->findChildren<Button*>())
        button->setOn(button->text() == QLatin1String("DIM"));
    return -20 * std::log10(fixture.simulated.control().mixerTable()[8192]);
}

} // namespace

void GuideTest::cleanup()
{
    translator.reset();
}

void GuideTest::load(const QString& locale)
{
    translator = std::make_unique<QTranslator>();
    installTranslation(*translator, locale, QCoreApplication::applicationDirPath());
    QVERIFY(!translator->isEmpty());
}

/// As on a first start: no settings file is there.
void GuideTest::open(const PanelTable::Model& model)
{
    fixture.plug(model.productId);
    fixture.start(model.name);
}

void GuideTest::models_data()
{
    QTest::addColumn<QString>("language");
    QTest::addColumn<int>("number");
    for (int number = 0; number < int(std::size(PanelTable::models)); ++number) {
        QTest::addRow("%s English", PanelTable::models[number].name) << "en_US" << number;
        QTest::addRow("%s Chinese", PanelTable::models[number].name) << "zh_CN" << number;
    }
}

/// Each control stands in the table of its model, with its range and what it is at first.
void GuideTest::models()
{
    QFETCH(QString, language);
    QFETCH(int, number);
    load(language);
    open(PanelTable::models[number]);
    const Table model = table(language, firstModelTable + number);
    const Table shown = shownControls(*fixture.panel);
    QCOMPARE(int(shown.size()), PanelTable::models[number].keys());
    QCOMPARE(toldControls(model, shown), shown);

    const QString dimmed = QString::number(dimmedBy(fixture));
    for (const Row& row : model) {
        if (screenWords(row[1]).contains(QLatin1String("DIM")))
            QCOMPARE(numbers(row.last()), QStringList(dimmed));
    }
}

void GuideTest::settingsDialog_data()
{
    addLanguageRows();
}

void GuideTest::settingsDialog()
{
    QFETCH(QString, language);
    load(language);
    fixture.plug(SimulatorControl::ka1);
    Settings dialog;
    QVERIFY(dialog.connectDevice());
    dialog.refreshFromDevice();

    const QString word = QStringLiteral("[A-Za-z0-9]+");
    Table shown;
    for (const auto* label : dialog.findChildren<const QLabel*>()) {
        const auto* combo = qobject_cast<const QComboBox*>(label->buddy());
        if (combo == nullptr)
            continue;
        QStringList choices;
        for (int i = 0; i < combo->count(); ++i)
            choices.append(combo->itemText(i));
        shown.append({label->text(), choices.join(u' '), combo->currentText()});
    }
    Table told;
    for (const Row& row : table(language, settingsTable)) {
        QCOMPARE(row.size(), 4);
        told.append({screenWords(row[0]).join(u' '), matches(word, row[1]).join(u' '),
                     matches(word, row[2]).join(u' ')});
    }
    QCOMPARE(told, shown);
}

void GuideTest::latencies_data()
{
    addLanguageRows();
}

void GuideTest::latencies()
{
    QFETCH(QString, language);
    Table expected;
    for (const SettingsChoices::Choice& buffer : SettingsChoices::bufferSizes) {
        expected.append({buffer.text, QString::number(buffer.value / 44.1, 'f', 1),
                         QString::number(buffer.value / 48.0, 'f', 1),
                         QString::number(SettingsChoices::latencyForBuffer(buffer.value))});
    }
    QCOMPARE(table(language, latencyTable), expected);
}

void GuideTest::trayMenu_data()
{
    addLanguageRows();
}

void GuideTest::trayMenu()
{
    QFETCH(QString, language);
    load(language);
    QStringList told;
    for (const Row& row : table(language, menuTable))
        told += screenWords(row[0]);
    QCOMPARE(told, menuTexts());
}

void GuideTest::words_data()
{
    addLanguageRows();
}

/// Whatever stands in bold can be read somewhere, and how to install and to uninstall is told in
/// the installer's words.
void GuideTest::words()
{
    QFETCH(QString, language);
    load(language);
    QStringList known = menuTexts() + dialogTexts() + statusTexts();
    known.append(QCoreApplication::translate("ka1", "INST"));
    for (const PanelTable::Model& model : PanelTable::models) {
        open(model);
        known += texts(*fixture.panel);
    }
    const QStringList installer = installerTexts(language);
    QVERIFY(!installer.isEmpty());
    const QStringList chapters = guide(language).split(QStringLiteral("\n## "));
    QVERIFY(chapters.size() > 2);
    for (const QString& chapter : chapters) {
        const bool installs = chapter == chapters[1] || chapter == chapters.last();
        for (const QString& word : screenWords(chapter))
            QVERIFY2((installs ? installer : known).contains(word), qPrintable(word));
    }
}

QStringList GuideTest::dialogTexts()
{
    fixture.plug(SimulatorControl::ka1);
    Settings dialog;
    dialog.connectDevice();
    fixture.simulated.control().setErrorCount(3);
    dialog.updateUsbErrorCount();
    return texts(dialog);
}

/// What the main window says when there is no panel to show, and below one.
QStringList GuideTest::statusTexts()
{
    SimulatorControl& interface = fixture.simulated.control();
    fixture.plug(unknownProduct);
    Settings settings;
    MainWindow window;
    window.settings = &settings;
    QStringList found = texts(window);
    window.detectDevice();
    found += texts(window);
    interface.plug(SimulatorControl::ks);
    interface.fail(firmwareCode, 1, 31);
    window.detectDevice();
    found += texts(window);
    window.detectDevice();
    interface.unplug();
    for (int read = 0; read < 3; ++read)
        window.checkDevicePid();
    return found + texts(window);
}

QUORVEL_TEST_MAIN(GuideTest)
#include "guide_test.moc"
