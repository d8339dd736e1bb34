#include "settings_fixture.h"
#include "support/background_lines.h"
#include "support/test_main.h"
#include "support/trace_text.h"

#include <QAbstractItemView>
#include <QApplication>
#include <QComboBox>
#include <QLabel>
#include <QPushButton>
#include <QScrollBar>
#include <QSignalBlocker>
#include <QTest>
#include <QTimer>
#include <QVBoxLayout>
#include <QWheelEvent>
#include <QWindow>

namespace {

void turnWheel(QWidget& widget, int angle)
{
    const QPointF place = widget.rect().center();
    QWheelEvent event(place, widget.mapToGlobal(place), {}, {0, angle}, Qt::NoButton,
                      Qt::NoModifier, Qt::NoScrollPhase, false);
    QApplication::sendEvent(&widget, &event);
}

} // namespace

class SettingsDialogTest : public QObject
{
    Q_OBJECT

private slots:
    void init() { fixture.reset(); }
    void construction();
    void layoutAndLooks();
    void choices_data();
    void choices();
    void order();
    void below();
    void statusTimer();
    void okHides();
    void connectDevice();
    void connectDeviceReplacesTheConnection();
    void loadWithoutFile();
    void loadFillsInWhatIsMissing_data();
    void loadFillsInWhatIsMissing();
    void loadOrder();
    void unknownTextsLeaveTheChoice();
    void damagedFile();
    void tickWithoutDevice();
    void usbErrorLine();
    void fitsTheErrorLine();
    void keepsTheUsersSize();
    void wheelOverLists();
    void failedStatusReadLeavesTheLine();
    void destruction();

private:
    void countErrors(std::uint32_t errors);

    SettingsFixture fixture;
};

void SettingsDialogTest::countErrors(std::uint32_t errors)
{
    fixture.simulated.control().setErrorCount(errors);
    fixture.dialog->updateUsbErrorCount();
}

void SettingsDialogTest::construction()
{
    fixture.create();
    QCOMPARE(fixture.log().lines().constFirst(), QString("Settings dialog created."));
    const Settings& dialog = *fixture.dialog;
    QCOMPARE(dialog.windowTitle(), QString("Settings"));
    QVERIFY(dialog.parentWidget() == nullptr);
    QVERIFY(!dialog.isVisible());
    QVERIFY(!dialog.windowIcon().pixmap(16).isNull());
    QVERIFY(!dialog.reinitPending);
    QVERIFY(fixture.simulated.takeTrace().isEmpty());
}

void SettingsDialogTest::layoutAndLooks()
{
    fixture.create();
    const Settings& dialog = *fixture.dialog;
    QCOMPARE(dialog.styleSheet(), QString("QDialog { background-color: #2c313c; color: white; }"));
    const auto* layout = qobject_cast<QVBoxLayout*>(dialog.layout());
    QVERIFY(layout != nullptr);
    QCOMPARE(layout->alignment(), Qt::AlignCenter);
    QCOMPARE(layout->contentsMargins(), QMargins(40, 10, 40, 40));
    QCOMPARE(layout->spacing(), 15);
    const QLabel* title = fixture.label("Settings");
    QCOMPARE(title->styleSheet(), QString("font-size: 18px; font-weight: bold; color: #00FFFF;"));
    QCOMPARE(title->alignment(), Qt::AlignCenter);
    const QLabel* error = fixture.label("USB Error");
    QCOMPARE(error->styleSheet(), QString("font-size: 10px; color: #888888;"));
    QCOMPARE(error->alignment(), Qt::AlignCenter);
    QVERIFY(error->isHidden());
    const auto* ok = dialog.findChild<QPushButton*>();
    QCOMPARE(ok->text(), QString("OK"));
    QCOMPARE(ok->styleSheet(),
             QString("background-color: #008888; color: white; font-size: 14px;"));
}

void SettingsDialogTest::choices_data()
{
    QTest::addColumn<int>("index");
    QTest::addColumn<QStringList>("items");
    QTest::newRow("Buffer Size") << 0 << QStringList{"48",  "64",  "96",  "128",
                                                     "192", "256", "512", "1024"};
    QTest::newRow("USB Latency Size") << 1 << QStringList{"8", "16", "24", "32"};
    QTest::newRow("Samplerate") << 2 << QStringList{"44100", "48000"};
    QTest::newRow("Safe Mode") << 3 << QStringList{"Disabled", "Enabled"};
}

void SettingsDialogTest::choices()
{
    QFETCH(int, index);
    QFETCH(QStringList, items);
    fixture.create();
    const QComboBox* combo = fixture.dialog->findChildren<QComboBox*>().value(index);
    QStringList texts;
    for (int item = 0; item < combo->count(); ++item) {
        texts.append(combo->itemText(item));
        QVERIFY(!combo->itemData(item).isValid());
    }
    QCOMPARE(texts, items);
    QCOMPARE(combo->currentIndex(), 0);
    const QLabel* caption = fixture.label(QTest::currentDataTag());
    QCOMPARE(caption->styleSheet(), QString("font-size: 14px; color: #008888;"));
    // What screen readers call the combo box.
    QCOMPARE(caption->buddy(), combo);
}

void SettingsDialogTest::order()
{
    fixture.create();
    fixture.dialog->show();
    QVERIFY(QTest::qWaitForWindowExposed(fixture.dialog.get()));
    const QList<const QWidget*> downwards{
        fixture.label("Settings"), fixture.label("Buffer Size"),
        fixture.bufferSize(),      fixture.label("USB Latency Size"),
        fixture.latency(),         fixture.label("Samplerate"),
        fixture.sampleRate(),      fixture.label("Safe Mode"),
        fixture.slowMode(),        fixture.dialog->findChild<QPushButton*>()};
    for (qsizetype i = 1; i < downwards.size(); ++i)
        QVERIFY2(downwards[i - 1]->geometry().bottom() < downwards[i]->geometry().top(),
                 qPrintable(QString::number(i)));
    const QRect ok = downwards.constLast()->geometry();
    QVERIFY(std::abs(ok.center().x() - fixture.dialog->rect().center().x()) <= 1);
}

/// What follows the four choices, with its spaces.
void SettingsDialogTest::below()
{
    fixture.create();
    QLayout* layout = fixture.dialog->layout();
    QCOMPARE(layout->count(), 13);
    QCOMPARE(layout->itemAt(8)->widget(), fixture.slowMode());
    const QSpacerItem* gap = layout->itemAt(9)->spacerItem();
    QVERIFY(gap != nullptr);
    QCOMPARE(gap->sizeHint().height(), 20);
    QCOMPARE(gap->expandingDirections(), Qt::Orientations());
    QVERIFY(qobject_cast<QPushButton*>(layout->itemAt(10)->widget()) != nullptr);
    QCOMPARE(layout->itemAt(10)->alignment(), Qt::AlignCenter);
    QCOMPARE(qobject_cast<QVBoxLayout*>(layout)->stretch(10), 0);
    const QSpacerItem* stretch = layout->itemAt(11)->spacerItem();
    QVERIFY(stretch != nullptr);
    QCOMPARE(stretch->sizeHint().height(), 0);
    QCOMPARE(stretch->expandingDirections(), Qt::Orientations(Qt::Vertical));
    QCOMPARE(layout->itemAt(12)->widget(), fixture.label("USB Error"));
}

void SettingsDialogTest::statusTimer()
{
    fixture.create();
    const auto timers = fixture.dialog->findChildren<QTimer*>();
    QCOMPARE(timers.size(), 1);
    QCOMPARE(timers.constFirst()->interval(), 1000);
    QVERIFY(timers.constFirst()->isActive());
    QVERIFY(!timers.constFirst()->isSingleShot());
}

void SettingsDialogTest::okHides()
{
    fixture.create();
    fixture.dialog->show();
    QVERIFY(QTest::qWaitForWindowExposed(fixture.dialog.get()));
    QTest::mouseClick(fixture.dialog->findChild<QPushButton*>(), Qt::LeftButton);
    QVERIFY(!fixture.dialog->isVisible());
}

void SettingsDialogTest::connectDevice()
{
    fixture.create();
    fixture.simulated.control().unplug();
    fixture.log().clear();
    QVERIFY(!fixture.dialog->connectDevice());
    QCOMPARE(fixture.takeLog(), QStringList{"Failed to create device in ka1."});
    fixture.simulated.control().plug(SimulatorControl::ks);
    QVERIFY(fixture.dialog->connectDevice());
    QCOMPARE(fixture.takeLog(), QStringList());
}

void SettingsDialogTest::connectDeviceReplacesTheConnection()
{
    fixture.create();
    for (int arrival = 0; arrival < 5; ++arrival)
        QVERIFY(fixture.dialog->connectDevice());
    QCOMPARE(fixture.simulated.settledHandles(1), 1);
}

void SettingsDialogTest::loadWithoutFile()
{
    fixture.connect(44100, 48, 8);
    fixture.dialog->loadSettings();
    QCOMPARE(fixture.latency()->currentText(), QString("8"));
    QCOMPARE(fixture.bufferSize()->currentText(), QString("192"));
    QCOMPARE(fixture.slowMode()->currentText(), QString("Disabled"));
    QCOMPARE(fixture.sampleRate()->currentText(), QString("44100"));
    QCOMPARE(fixture.takeLog().constLast(), QString("已从配置文件加载控件状态"));
}

void SettingsDialogTest::loadFillsInWhatIsMissing_data()
{
    QTest::addColumn<int>("index");
    QTest::addColumn<QString>("shown");
    QTest::addColumn<QString>("text");
    QTest::newRow("Audio/BufferSize") << 0 << "1024"
                                      << "192";
    QTest::newRow("USB/LatencySize") << 1 << "32"
                                     << "8";
    QTest::newRow("Audio/SampleRate") << 2 << "48000"
                                      << "44100";
    QTest::newRow("USB/SlowMode") << 3 << "Enabled"
                                  << "Disabled";
}

/// A missing key counts as the default even when the dialog shows another choice.
void SettingsDialogTest::loadFillsInWhatIsMissing()
{
    QFETCH(const int, index);
    QFETCH(const QString, shown);
    QFETCH(const QString, text);
    fixture.connect(44100, 192, 8);
    QComboBox* combo = fixture.dialog->findChildren<QComboBox*>().value(index);
    {
        const QSignalBlocker blocker(combo);
        combo->setCurrentText(shown);
    }
    QCOMPARE(combo->currentText(), shown);
    fixture.dialog->loadSettings();
    QCOMPARE(combo->currentText(), text);
}

void SettingsDialogTest::loadOrder()
{
    IniFile::write("setting.ini", {{"USB/LatencySize", "16"},
                                   {"Audio/BufferSize", "256"},
                                   {"USB/SlowMode", "Enabled"},
                                   {"Audio/SampleRate", "48000"}});
    fixture.connect(44100, 192, 8);
    fixture.dialog->loadSettings();
    QStringList setters;
    for (const QString& line : fixture.takeTrace()) {
        const QString code = line.section(u' ', 1, 1);
        if (QStringList{"FFDC2050", "FFDC2044", "FFDC2090", "FFDC2038"}.contains(code))
            setters.append(code);
    }
    QCOMPARE(setters, (QStringList{"FFDC2050", "FFDC2044", "FFDC2090", "FFDC2038"}));
    QCOMPARE(fixture.latency()->currentText(), QString("16"));
    QCOMPARE(fixture.bufferSize()->currentText(), QString("256"));
    QCOMPARE(fixture.slowMode()->currentText(), QString("Enabled"));
    QCOMPARE(fixture.sampleRate()->currentText(), QString("48000"));
}

void SettingsDialogTest::unknownTextsLeaveTheChoice()
{
    const QMap<QString, QString> stored{{"USB/LatencySize", "12"},
                                        {"Audio/BufferSize", "100"},
                                        {"USB/SlowMode", "enabled"},
                                        {"Audio/SampleRate", "96000"}};
    IniFile::write("setting.ini", stored);
    fixture.connect(44100, 48, 8);
    fixture.dialog->loadSettings();
    QCOMPARE(fixture.bufferSize()->currentText(), QString("48"));
    QCOMPARE(fixture.latency()->currentText(), QString("8"));
    QCOMPARE(fixture.takeTrace(), QStringList());
    QCOMPARE(IniFile::read("setting.ini"), stored);
}

void SettingsDialogTest::damagedFile()
{
    for (const QByteArray& bytes :
         {QByteArray(), QByteArray(1000, '\0'), QByteArray("[Audio]\nBufferSize=48, 64\n[USB\n="),
          QByteArray("[USB]\nLatencySize=@Invalid()\n[Audio]\nSampleRate=@ByteArray(\xff\xfe)")}) {
        IniFile::writeRaw("setting.ini", bytes);
        fixture.connect(44100, 48, 8);
        fixture.dialog->loadSettings();
        QCOMPARE(fixture.takeLog().constLast(), QString("已从配置文件加载控件状态"));
    }
}

void SettingsDialogTest::tickWithoutDevice()
{
    fixture.create();
    fixture.log().clear();
    QTRY_COMPARE_WITH_TIMEOUT(fixture.log().lines().count("Failed to read meter data from driver."),
                              1, 1500);
    QVERIFY(fixture.simulated.takeTrace().isEmpty());
}

void SettingsDialogTest::usbErrorLine()
{
    fixture.connect(44100, 192, 24);
    fixture.dialog->updateUsbErrorCount();
    QLabel* line = fixture.label("USB Error");
    QVERIFY(line->isHidden());
    fixture.simulated.control().setErrorCount(3);
    fixture.dialog->updateUsbErrorCount();
    QVERIFY(!line->isHidden());
    QCOMPARE(line->text(), QString("USB Error Count: 3"));
    fixture.simulated.control().setErrorCount(4294967295U);
    QTRY_COMPARE_WITH_TIMEOUT(line->text(), QString("USB Error Count: 4294967295"), 1500);
    fixture.simulated.control().setErrorCount(0);
    fixture.dialog->updateUsbErrorCount();
    QVERIFY(line->isHidden());
}

void SettingsDialogTest::fitsTheErrorLine()
{
    fixture.connect(44100, 192, 24);
    const QSize without = fixture.dialog->sizeHint();
    countErrors(3);
    const QSize with = fixture.dialog->sizeHint();
    QVERIFY(with.height() > without.height());
    for (const bool hidden : {true, false}) {
        for (const std::uint32_t errors : {0U, 3U, 0U}) {
            fixture.dialog->setHidden(hidden);
            countErrors(errors);
            fixture.dialog->show();
            QTRY_COMPARE(fixture.dialog->size(), errors == 0 ? without : with);
        }
    }
}

void SettingsDialogTest::keepsTheUsersSize()
{
    fixture.connect(44100, 192, 24);
    fixture.dialog->show();
    QVERIFY(QTest::qWaitForWindowExposed(fixture.dialog.get()));
    // As the window system reports it, which is no size set by the program.
    fixture.dialog->windowHandle()->resize(400, 600);
    QTRY_COMPARE(fixture.dialog->size(), QSize(400, 600));
    for (const std::uint32_t errors : {3U, 0U, 3U}) {
        countErrors(errors);
        QTest::qWait(250);
        QCOMPARE(fixture.dialog->size(), QSize(400, 600));
    }
    fixture.dialog->hide();
    countErrors(0);
    fixture.dialog->show();
    QTest::qWait(250);
    QCOMPARE(fixture.dialog->size(), QSize(400, 600));
    fixture.dialog->showFromPipe();
    QTest::qWait(250);
    QCOMPARE(fixture.dialog->size(), QSize(400, 600));
}

/// A stray notch must not stop the sound; an open list scrolls.
void SettingsDialogTest::wheelOverLists()
{
    fixture.connect(44100, 192, 24);
    fixture.dialog->loadSettings();
    fixture.dialog->show();
    QVERIFY(QTest::qWaitForWindowExposed(fixture.dialog.get()));
    fixture.takeTrace();
    for (QComboBox* combo : fixture.dialog->findChildren<QComboBox*>()) {
        const int chosen = combo->currentIndex();
        for (const bool focused : {false, true}) {
            if (focused)
                combo->setFocus();
            for (const int notch : {-120, 120})
                turnWheel(*combo, notch);
        }
        QCOMPARE(combo->currentIndex(), chosen);
        // What a wheel of the user's, unlike that of a test, would do.
        QVERIFY((combo->focusPolicy() & Qt::WheelFocus) != Qt::WheelFocus);
    }
    QCOMPARE(fixture.takeTrace(), QStringList());

    QComboBox* combo = fixture.bufferSize();
    combo->setMaxVisibleItems(2);
    combo->setStyleSheet(QStringLiteral("combobox-popup: 0"));
    combo->showPopup();
    QVERIFY(QTest::qWaitForWindowExposed(combo->view()->window()));
    const int before = combo->view()->verticalScrollBar()->value();
    turnWheel(*combo->view()->viewport(), before == 0 ? -120 : 120);
    QVERIFY(combo->view()->verticalScrollBar()->value() != before);
    combo->hidePopup();
    QTest::keyClick(combo, Qt::Key_Down);
    QCOMPARE(combo->currentText(), QString("256"));
}

void SettingsDialogTest::failedStatusReadLeavesTheLine()
{
    fixture.connect(44100, 192, 24);
    QLabel* line = fixture.label("USB Error");
    fixture.simulated.control().setErrorCount(3);
    fixture.dialog->updateUsbErrorCount();
    fixture.simulated.control().setErrorCount(0);
    fixture.simulated.control().fail(0xFFDC20C0, 1, 31);
    fixture.log().clear();
    fixture.dialog->updateUsbErrorCount();
    QCOMPARE(fixture.log().take().count("Failed to read meter data from driver."), 1);
    QCOMPARE(line->text(), QString("USB Error Count: 3"));
    QVERIFY(!line->isHidden());
}

void SettingsDialogTest::destruction()
{
    fixture.connect(44100, 192, 24);
    fixture.dialog.reset();
    QCOMPARE(withoutBackground(fixture.log().lines()),
             (QStringList{"Settings dialog closed and resources cleaned up.", "Pipe closed."}));
    QCOMPARE(fixture.simulated.settledHandles(0), 0);
}

QUORVEL_TEST_MAIN(SettingsDialogTest)
#include "settings_dialog_test.moc"
