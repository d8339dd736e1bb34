#include "app/translation.h"
#include "controls/button.h"
#include "panel_models.h"
#include "panels/ka1.h"
#include "panels/ks.h"
#include "settings/settings.h"
#include "shell/main_window.h"
#include "shell/tray_icon.h"
#include "support/debug_log.h"
#include "support/panel_table.h"
#include "support/patience.h"
#include "support/simulated_interface.h"
#include "support/stream_capture.h"
#include "support/test_main.h"
#include "support/try_compare.h"

#include <QAction>
#include <QComboBox>
#include <QCoreApplication>
#include <QLabel>
#include <QMenu>
#include <QPushButton>
#include <QTest>
#include <QTranslator>

#include <iostream>
#include <memory>
#include <optional>

Q_DECLARE_METATYPE(PanelTable::Model)

/// The real windows with the translations that lie beside the program: what is translated, what
/// must never be, and whether each text has the room it needs.
class TranslatedWidgetsTest : public QObject
{
    Q_OBJECT

private slots:
    void init();
    void cleanup();
    void panels_data();
    void panels();
    void instrumentButton_data();
    void instrumentButton();
    void settingsDialog_data();
    void settingsDialog();
    void trayMenu_data();
    void trayMenu();
    void lostDevice_data();
    void lostDevice();
    void untranslatedStatus_data();
    void untranslatedStatus();
    void traditionalChineseReadsSimplified();

private:
    void load(const QString& locale);
    static void show(QWidget& window);
    static QStringList texts(const QWidget& window);
    static QString cutOff(const QWidget& window);

    SimulatedInterface simulated;
    StreamCapture<wchar_t> output{std::wcout};
    std::optional<DebugLog> log;
    std::unique_ptr<QTranslator> translator;
};

namespace {

const QString english = QStringLiteral("en_US");
const QString chinese = QStringLiteral("zh_CN");

void addLanguageRows()
{
    QTest::addColumn<QString>("language");
    QTest::newRow("English") << english;
    QTest::newRow("Chinese") << chinese;
}

QStringList sorted(QStringList list)
{
    list.sort();
    return list;
}

/// "<text>" as the translation has it, anything else as it is.
QString inLanguage(const PanelTable::Model& model, const QByteArray& text)
{
    if (!text.startsWith('<'))
        return text;
    return QCoreApplication::translate(model.name, text.mid(1, text.size() - 2));
}

/// Whether the widget is at least as large as its text wants it.
bool hasRoom(const QWidget* widget, const QString& text)
{
    constexpr int buttonMargin = 4;
    const QSize wanted = widget->sizeHint();
    const int margin = qobject_cast<const QPushButton*>(widget) != nullptr ? buttonMargin : 0;
    const QSize bare = widget->fontMetrics().size(0, text);
    return widget->width() >= wanted.width() && widget->height() >= wanted.height() &&
           widget->width() >= bare.width() + 2 * margin && widget->height() >= bare.height() &&
           widget->window()->rect().contains(
               QRect(widget->mapTo(widget->window(), QPoint()), widget->size()));
}

} // namespace

void TranslatedWidgetsTest::init()
{
    log.reset();
    log.emplace();
    simulated.control().reset();
}

void TranslatedWidgetsTest::cleanup()
{
    translator.reset();
}

void TranslatedWidgetsTest::load(const QString& locale)
{
    translator = std::make_unique<QTranslator>();
    installTranslation(*translator, locale, QCoreApplication::applicationDirPath());
    QVERIFY(log->lines().constLast().startsWith("成功加载翻译文件："));
    log->clear();
}

void TranslatedWidgetsTest::show(QWidget& window)
{
    window.show();
    QVERIFY(QTest::qWaitForWindowExposed(&window, patience));
}

/// All texts of labels and buttons but the read-outs, sorted.
QStringList TranslatedWidgetsTest::texts(const QWidget& window)
{
    QStringList found;
    for (const auto* label : window.findChildren<const QLabel*>()) {
        if (!label->styleSheet().contains("font-size: 8px"))
            found.append(label->text());
    }
    for (const auto* button : window.findChildren<const QPushButton*>())
        found.append(button->text());
    return sorted(found);
}

/// The texts that have less room than they need.
QString TranslatedWidgetsTest::cutOff(const QWidget& window)
{
    QStringList found;
    for (const auto* label : window.findChildren<const QLabel*>()) {
        if (label->isVisible() && !hasRoom(label, label->text()))
            found.append(label->text());
    }
    for (const auto* button : window.findChildren<const QPushButton*>()) {
        if (button->isVisible() && !hasRoom(button, button->text()))
            found.append(button->text());
    }
    return found.join('|');
}

void TranslatedWidgetsTest::panels_data()
{
    QTest::addColumn<QString>("language");
    QTest::addColumn<PanelTable::Model>("model");
    for (const PanelTable::Model& model : PanelTable::models) {
        QTest::addRow("%s English", model.name) << english << model;
        QTest::addRow("%s Chinese", model.name) << chinese << model;
    }
}

/// Each text that asks for its translation shows it, and has room for it.
void TranslatedWidgetsTest::panels()
{
    QFETCH(QString, language);
    QFETCH(PanelTable::Model, model);
    load(language);
    simulated.control().plug(model.productId);
    const std::unique_ptr<QWidget> panel = PanelModels::make(model.name);
    show(*panel);
    QStringList found = texts(*panel);
    for (const PanelTable::Control& control : model.controls) {
        if (!control.isReadOut())
            QVERIFY2(found.removeOne(inLanguage(model, control.text)), control.text);
    }
    QCOMPARE(cutOff(*panel), QString());
}

void TranslatedWidgetsTest::instrumentButton_data()
{
    QTest::addColumn<QString>("language");
    QTest::addColumn<QString>("microphone");
    QTest::addColumn<QString>("instrument");
    QTest::newRow("English") << english << "MIC"
                             << "INST";
    QTest::newRow("Chinese") << chinese << "话筒"
                             << "乐器";
}

void TranslatedWidgetsTest::instrumentButton()
{
    QFETCH(QString, language);
    QFETCH(QString, microphone);
    QFETCH(QString, instrument);
    load(language);
    simulated.control().plug(SimulatorControl::ka1);
    ka1 panel;
    show(panel);
    auto* button = panel.findChild<Button*>(); // the first one
    QCOMPARE(button->text(), microphone);
    QTest::mouseClick(button, Qt::LeftButton);
    QCOMPARE(button->text(), instrument);
    QCOMPARE(cutOff(panel), QString());
    QTest::mouseClick(button, Qt::LeftButton);
    QCOMPARE(button->text(), microphone);
}

void TranslatedWidgetsTest::settingsDialog_data()
{
    QTest::addColumn<QString>("language");
    QTest::addColumn<QString>("expected");
    QTest::newRow("English") << english
                             << "Settings|Buffer Size|USB Latency Size|Sample Rate|Safe Mode|OK|"
                                "USB Error";
    QTest::newRow("Chinese") << chinese
                             << "设置|缓冲区大小|USB 延迟大小|采样率|安全模式|确定|USB 错误";
}

void TranslatedWidgetsTest::settingsDialog()
{
    QFETCH(QString, language);
    QFETCH(QString, expected);
    load(language);
    simulated.control().plug(SimulatorControl::ka1);
    Settings dialog;
    QVERIFY(dialog.connectDevice());
    show(dialog);
    QCOMPARE(texts(dialog), sorted(expected.split(u'|')));
    QCOMPARE(cutOff(dialog), QString());
    QCOMPARE(dialog.windowTitle(), QString("Settings"));
    QStringList items;
    for (const auto* combo : dialog.findChildren<const QComboBox*>()) {
        QVERIFY(combo->width() >= combo->sizeHint().width());
        for (int i = 0; i < combo->count(); ++i)
            items.append(combo->itemText(i));
    }
    QCOMPARE(items, (QStringList{"48", "64", "96", "128", "192", "256", "512", "1024", "8", "16",
                                 "24", "32", "44100", "48000", "Disabled", "Enabled"}));

    simulated.control().setErrorCount(4294967295U);
    dialog.updateUsbErrorCount();
    const QString count =
        language == english ? "USB Error Count: 4294967295" : "USB 错误计数：4294967295";
    QVERIFY(texts(dialog).contains(count));
    QUORVEL_TRY_COMPARE(cutOff(dialog), QString());
}

void TranslatedWidgetsTest::trayMenu_data()
{
    QTest::addColumn<QString>("language");
    QTest::addColumn<QString>("expected");
    QTest::newRow("English") << english
                             << "V20251009|Quit||Setup|Main Window|Upgrade Firmware|"
                                "Refresh Audio Devices|Windows Sound Panel||";
    QTest::newRow("Chinese") << chinese
                             << "V20251009|退出||设置|主窗口|升级固件|刷新音频设备|"
                                "Windows 声音面板||";
}

void TranslatedWidgetsTest::trayMenu()
{
    QFETCH(QString, language);
    QFETCH(QString, expected);
    load(language);
    const TrayIcon tray;
    QMenu& menu = *tray.contextMenu();
    QStringList entries;
    for (const QAction* action : menu.actions())
        entries.append(action->text());
    QCOMPARE(entries.join(u'|'), expected);
    menu.popup(QPoint());
    QVERIFY(menu.size().width() >= menu.sizeHint().width());
    QVERIFY(menu.size().height() >= menu.sizeHint().height());
    menu.close();
}

void TranslatedWidgetsTest::lostDevice_data()
{
    QTest::addColumn<QString>("language");
    QTest::addColumn<QString>("expected");
    QTest::newRow("English") << english << "No audio interface connected!";
    QTest::newRow("Chinese") << chinese << "声卡未连接！";
}

void TranslatedWidgetsTest::lostDevice()
{
    QFETCH(QString, language);
    QFETCH(QString, expected);
    load(language);
    simulated.control().plug(SimulatorControl::ks);
    Settings settings;
    MainWindow window;
    window.settings = &settings;
    show(window);
    window.detectDevice();
    QVERIFY(window.findChild<ks*>() != nullptr);
    simulated.control().unplug();
    for (int read = 0; read < 3; ++read)
        window.checkDevicePid();
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    QCOMPARE(texts(window), QStringList{expected});
    QUORVEL_TRY_COMPARE(cutOff(window), QString());
}

void TranslatedWidgetsTest::untranslatedStatus_data()
{
    addLanguageRows();
}

void TranslatedWidgetsTest::untranslatedStatus()
{
    QFETCH(QString, language);
    load(language);
    Settings settings;
    MainWindow window;
    window.settings = &settings;
    show(window);
    QCOMPARE(texts(window), QStringList{"声卡未连接！"});
    QCOMPARE(cutOff(window), QString());
    QCOMPARE(window.windowTitle(), QString("Quorvel Driver"));

    simulated.control().plug(7);
    window.detectDevice();
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    QCOMPARE(texts(window), QStringList{"未知设备，请检查连接！"});
    QUORVEL_TRY_COMPARE(cutOff(window), QString());

    simulated.control().plug(SimulatorControl::ks);
    simulated.control().fail(0xFFDC20A0, 1, 31);
    window.detectDevice();
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    QVERIFY(window.findChild<ks*>() != nullptr);
    QVERIFY(texts(window).contains("获取固件版本失败，请检查连接！"));
    QUORVEL_TRY_COMPARE(cutOff(window), QString());
}

void TranslatedWidgetsTest::traditionalChineseReadsSimplified()
{
    load("zh_TW");
    const TrayIcon tray;
    QCOMPARE(tray.contextMenu()->actions().value(1)->text(), QString("退出"));
}

QUORVEL_TEST_MAIN(TranslatedWidgetsTest)
#include "translated_widgets_test.moc"
