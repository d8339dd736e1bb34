#include "picture_session.h"

#include "support/ini_file.h"

#include <QCoreApplication>
#include <QDir>
#include <QLabel>
#include <QMdiArea>
#include <QMdiSubWindow>
#include <QMenu>
#include <QTest>
#include <QTimer>

namespace {

constexpr std::uint32_t unknownProductId = 3;
constexpr std::uint32_t firmwareCode = 0xFFDC20A0;
constexpr std::uint32_t genericFailure = 31;

/// Two microphones and the two channels of the phone, on the 32-bit sample scale: about -12, -24
/// and -18 dB.
const std::vector<std::int32_t> levels{539'423'501, 135'497'106, 270'351'845, 270'351'845};

/// Controls in use, so that the pictures show both states of the buttons.
void writeControls()
{
    IniFile::write("ka1.ini", {{"Button/Mic48VIsChecked", "true"},
                               {"Button/MonitorMicIsChecked", "true"},
                               {"Dial/MicValue", "24"},
                               {"Dial/HeadphoneValue", "-12"},
                               {"Button/HeadphoneDimIsChecked", "true"},
                               {"Dial/OtgToHpValue", "-20"}});
    IniFile::write("ka2.ini", {{"Button/Mic148VIsChecked", "true"},
                               {"Button/Mic220dBIsChecked", "true"},
                               {"Button/MonitorMic1IsChecked", "true"},
                               {"Dial/Mic1Value", "31"},
                               {"Dial/Mic2Value", "12"},
                               {"Dial/SpeakerValue", "-6"},
                               {"Button/SpeakerMuteIsChecked", "true"},
                               {"Dial/HeadphoneValue", "-18"},
                               {"Dial/OtgToHpValue", "-30"},
                               {"Dial/OtgToSPValue", "-12"}});
    IniFile::write("ks.ini", {{"Button/MonitorMicIsChecked", "true"},
                              {"Dial/MicValue", "18"},
                              {"Dial/HeadphoneValue", "-24"},
                              {"Button/HeadphoneMuteIsChecked", "true"}});
}

} // namespace

PictureSession::PictureSession(const QString& pictureFolder)
    : folder(pictureFolder)
{
    QDir().mkpath(folder);
    writeControls();
    simulated.control().setLevels(levels);
}

void PictureSession::panel(std::uint32_t productId, const char* file)
{
    openWindow();
    plug(productId);
    // The first reading of the levels comes half a second after the panel.
    QTest::qWait(700);
    save(*window, file);
}

void PictureSession::framedWindow()
{
    openWindow();
    plug(SimulatorControl::ka2);
    QTest::qWait(700);
    // The off-screen platform draws no frames; the toolkit has one for windows within a window.
    auto* content = new QLabel;
    content->setPixmap(window->grab());
    content->setWindowIcon(window->windowIcon());
    content->setWindowTitle(window->windowTitle().remove(QChar::Null));
    QMdiArea desktop;
    QMdiSubWindow* frame =
        desktop.addSubWindow(content, window->windowFlags() | Qt::WindowTitleHint |
                                          Qt::WindowSystemMenuHint | Qt::CustomizeWindowHint);
    desktop.resize(frame->sizeHint() * 2);
    desktop.show();
    save(*frame, "window");
}

void PictureSession::status()
{
    openWindow();
    plug(SimulatorControl::ka1);
    simulated.control().unplug();
    for (int read = 0; read < 3; ++read)
        window->checkDevicePid();
    save(*window, "status-not-connected");

    openWindow();
    plug(unknownProductId);
    save(*window, "status-unknown-device");

    openWindow();
    simulated.control().fail(firmwareCode, SimulatorControl::always, genericFailure);
    plug(SimulatorControl::ks);
    QTest::qWait(700);
    save(*window, "status-no-firmware-version");
    simulated.control().clearFaults();
}

void PictureSession::settingsDialog()
{
    openWindow();
    plug(SimulatorControl::ka1);
    window->hide();
    settings.show();
    save(settings, "settings");
    simulated.control().setErrorCount(3);
    settings.updateUsbErrorCount();
    save(settings, "settings-usb-errors");
    settings.hide();
}

void PictureSession::trayMenu()
{
    QMenu& menu = *tray.contextMenu();
    menu.popup(QPoint());
    save(menu, "tray-menu");
    menu.close();
}

void PictureSession::openWindow()
{
    simulated.control().unplug();
    window = std::make_unique<MainWindow>();
    window->settings = &settings;
    window->show();
    stopClocks();
}

void PictureSession::plug(std::uint32_t productId)
{
    simulated.control().plug(productId);
    window->detectDevice();
    stopClocks();
}

void PictureSession::stopClocks()
{
    // A second look at the device would rebuild the panel while it is painted.
    const auto timers = window->findChildren<QTimer*>(QString(), Qt::FindDirectChildrenOnly);
    for (QTimer* timer : timers)
        timer->stop();
}

void PictureSession::save(QWidget& widget, const QString& name)
{
    // What was removed goes, and what was added is laid out.
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    QTest::qWait(50);
    if (!widget.grab().save(folder + '/' + name + ".png"))
        allSaved = false;
}
