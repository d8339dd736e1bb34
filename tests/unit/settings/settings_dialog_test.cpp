#include "settings/settings.h"
#include "support/debug_log.h"
#include "support/file_access.h"
#include "support/ini_file.h"
#include "support/patience.h"
#include "support/settings_files.h"
#include "support/simulated_interface.h"
#include "support/stream_capture.h"
#include "support/test_main.h"
#include "support/try_compare.h"

#include <QAbstractItemView>
#include <QApplication>
#include <QComboBox>
#include <QLabel>
#include <QPushButton>
#include <QScrollBar>
#include <QTest>
#include <QTimer>
#include <QVBoxLayout>
#include <QWheelEvent>

#include <iostream>
#include <memory>
#include <optional>

namespace {

void turnWheel(QWidget& widget, int angle)
{
    const QPointF place = widget.rect().center();
    QWheelEvent event(place, widget.mapToGlobal(place), {}, {0, angle}, Qt::NoButton,
                      Qt::NoModifier, Qt::NoScrollPhase, false);
    QApplication::sendEvent(&widget, &event);
}

QString told(const QComboBox& list)
{
    QStringList items;
    for (int i = 0; i < list.count(); ++i)
        items.append(list.itemText(i) + list.itemData(i).toString());
    return "list " + QString::number(list.currentIndex()) + ": " + items.join(u' ');
}

QString told(const QLabel& label)
{
    const QString buddy = label.buddy() != nullptr ? ", names what is below" : "";
    const QString place = label.alignment() == Qt::AlignCenter ? ", centred" : "";
    return (label.isHidden() ? "hidden " : "") + label.text() + buddy + place + ", " +
           label.styleSheet();
}

QString told(QLayoutItem& item)
{
    if (const QSpacerItem* space = item.spacerItem()) {
        return space->expandingDirections() == Qt::Vertical
                   ? QStringLiteral("stretch")
                   : "space " + QString::number(space->sizeHint().height());
    }
    const QWidget* widget = item.widget();
    if (const auto* list = qobject_cast<const QComboBox*>(widget))
        return told(*list);
    if (const auto* label = qobject_cast<const QLabel*>(widget))
        return told(*label);
    const auto* button = qobject_cast<const QPushButton*>(widget);
    return "button " + button->text() + (item.alignment() == Qt::AlignCenter ? ", centred, " : "") +
           button->styleSheet();
}

} // namespace

/// The dialog as its user sees it. What it does is held against the oracle (tests/random).
class SettingsDialogTest : public QObject
{
    Q_OBJECT

private slots:
    void init();
    void cleanup();
    void looks();
    void contents();
    void fitsTheErrorLine();
    void wheelOverLists();
    void unreadFileAndALostDevice();

private:
    SimulatedInterface simulated;
    StreamCapture<wchar_t> output{std::wcout};
    std::optional<DebugLog> log;
    std::unique_ptr<Settings> dialog;
};

void SettingsDialogTest::init()
{
    log.emplace();
    simulated.control().reset();
    simulated.control().plug(SimulatorControl::ka1);
    dialog = std::make_unique<Settings>();
    QVERIFY(dialog->connectDevice());
}

void SettingsDialogTest::cleanup()
{
    dialog.reset();
    forgetSettingsFiles();
    log.reset();
}

void SettingsDialogTest::looks()
{
    QCOMPARE(dialog->windowTitle(), QString("Settings"));
    QVERIFY(!dialog->windowIcon().pixmap(16).isNull());
    QVERIFY(dialog->parentWidget() == nullptr);
    QVERIFY(!dialog->isVisible());
    QVERIFY(!dialog->windowFlags().testFlag(Qt::WindowStaysOnTopHint));
    QCOMPARE(dialog->styleSheet(), QString("QDialog { background-color: #2c313c; color: white; }"));
    const auto* layout = qobject_cast<QVBoxLayout*>(dialog->layout());
    QCOMPARE(layout->alignment(), Qt::AlignCenter);
    QCOMPARE(layout->contentsMargins(), QMargins(40, 10, 40, 40));
    QCOMPARE(layout->spacing(), 15);
}

/// From top to bottom.
void SettingsDialogTest::contents()
{
    const QString caption = ", names what is below, font-size: 14px; color: #008888;";
    const QStringList expected{
        "Settings, centred, font-size: 18px; font-weight: bold; color: #00FFFF;",
        "Buffer Size" + caption,
        "list 0: 48 64 96 128 192 256 512 1024",
        "USB Latency Size" + caption,
        "list 0: 8 16 24 32",
        "Samplerate" + caption,
        "list 0: 44100 48000",
        "Safe Mode" + caption,
        "list 0: Disabled Enabled",
        "space 20",
        "button OK, centred, background-color: #008888; color: white; font-size: 14px;",
        "stretch",
        "hidden USB Error, centred, font-size: 10px; color: #888888;"};
    const QLayout* layout = dialog->layout();
    QStringList contents;
    for (int i = 0; i < layout->count(); ++i) {
        contents.append(told(*layout->itemAt(i)));
        const auto* label = qobject_cast<QLabel*>(layout->itemAt(i)->widget());
        if (label != nullptr && label->buddy() != nullptr)
            QCOMPARE(label->buddy(), layout->itemAt(i + 1)->widget());
    }
    QCOMPARE(contents, expected);
}

void SettingsDialogTest::fitsTheErrorLine()
{
    const auto countErrors = [this](std::uint32_t errors) {
        simulated.control().setErrorCount(errors);
        dialog->updateUsbErrorCount();
    };
    const QSize without = dialog->sizeHint();
    countErrors(3);
    const QSize with = dialog->sizeHint();
    QVERIFY(with.height() > without.height());
    for (const bool hidden : {true, false}) {
        for (const std::uint32_t errors : {0U, 3U, 0U}) {
            dialog->setHidden(hidden);
            countErrors(errors);
            dialog->show();
            QUORVEL_TRY_COMPARE(dialog->size(), errors == 0 ? without : with);
        }
    }
}

/// A stray notch must not stop the sound; an open list scrolls.
void SettingsDialogTest::wheelOverLists()
{
    dialog->loadSettings();
    dialog->show();
    QVERIFY(QTest::qWaitForWindowExposed(dialog.get(), patience));
    const auto lists = dialog->findChildren<QComboBox*>();
    for (QComboBox* combo : lists) {
        const int chosen = combo->currentIndex();
        for (const bool focused : {false, true}) {
            if (focused)
                combo->setFocus();
            for (const int notch : {-120, 120}) {
                turnWheel(*combo, notch);
                QCOMPARE(combo->currentIndex(), chosen);
            }
        }
        // What a wheel of the user's, unlike that of a test, would do.
        QVERIFY((combo->focusPolicy() & Qt::WheelFocus) != Qt::WheelFocus);
    }

    QComboBox* combo = lists.constFirst();
    combo->setMaxVisibleItems(2);
    combo->setStyleSheet(QStringLiteral("combobox-popup: 0"));
    combo->showPopup();
    QVERIFY(QTest::qWaitForWindowExposed(combo->view()->window(), patience));
    const int before = combo->view()->verticalScrollBar()->value();
    turnWheel(*combo->view()->viewport(), before == 0 ? -120 : 120);
    QVERIFY(combo->view()->verticalScrollBar()->value() != before);
    combo->hidePopup();
    QTest::keyClick(combo, Qt::Key_Down);
    QCOMPARE(combo->currentText(), QString("256"));
}

/// A choice that no device took would pass for applied when the next one comes.
void SettingsDialogTest::unreadFileAndALostDevice()
{
    IniFile::write("setting.ini", {{"USB/SlowMode", "Enabled"}});
    const QComboBox* slowMode = dialog->findChildren<QComboBox*>().constLast();
    forgetSettingsFiles();
    {
        const Unreadable holder(IniFile::path("setting.ini"));
        dialog->refreshFromDevice();
        dialog->reinitPending = true; // as the main window does
    }
    for (QTimer* timer : dialog->findChildren<QTimer*>())
        timer->stop();
    simulated.control().clearTrace();
    QVERIFY(retrySettingsFile());
    QCOMPARE(slowMode->currentText(), QString("Disabled"));
    QCOMPARE(simulated.takeTrace(), QStringList());
    dialog->refreshFromDevice();
    QCOMPARE(slowMode->currentText(), QString("Enabled"));
}

QUORVEL_TEST_MAIN(SettingsDialogTest)
#include "settings_dialog_test.moc"
