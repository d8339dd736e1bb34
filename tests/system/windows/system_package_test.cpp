#include "support/test_main.h"
#include "system/desktop/picture_search.h"
#include "system/desktop/system_test.h"
#include "system/desktop/target.h"
#include "system/desktop/tool.h"
#include "system/desktop/tray_menu.h"
#include "system/desktop/wait_until.h"
#include "system/windows/installation.h"

#include <QDir>
#include <QtEndian>

#include <algorithm>

using Installation::installed;

namespace {

const QString settingsDialog = QStringLiteral("^Settings$");

int area(const QRect& rectangle)
{
    return rectangle.width() * rectangle.height();
}

} // namespace

/// What users get: the folder of the zip file and the installer, with the ASIO driver at the
/// panel's two pipes. The installed copy's settings are those of the unpacked one.
class SystemPackage : public SystemTest
{
    Q_OBJECT

private slots:
    void folderHasNothingUnknown();
    void programOpensNoConsole();
    void asioDriverOpensTheSettingsAndIsReset();
    void installsAndUninstallsSilently();

private:
    std::unique_ptr<ChildProgram> startPeer(const QStringList& words);
    bool install() { return Installation::run(folder(), Installation::setupFile()) == 0; }
    bool uninstall(const QStringList& options = {});
    static QStringList shortcuts()
    {
        const QDir menu(QDir::cleanPath(Target::settingsFolder() +
                                        "/../Microsoft/Windows/Start Menu/Programs"));
        return menu.entryList({QStringLiteral("Quorvel*")}, QDir::Files, QDir::Name);
    }
};

std::unique_ptr<ChildProgram> SystemPackage::startPeer(const QStringList& words)
{
    return std::make_unique<ChildProgram>(Target::tool(QStringLiteral("quorvel-asio-peer")) + words,
                                          folder().environment(),
                                          folder().path(QStringLiteral("peer")));
}

bool SystemPackage::uninstall(const QStringList& options)
{
    return Installation::run(folder(), installed(QStringLiteral("uninstall.exe")), options) == 0 &&
           waitUntil([] { return !QFile::exists(installed()); });
}

void SystemPackage::folderHasNothingUnknown()
{
    const QString program = QFileInfo(session().programFile()).path();
    QStringList names = QDir(program).entryList(QDir::AllEntries | QDir::NoDotAndDotDot);
    names.removeIf([](const QString& name) { return name.endsWith(QLatin1String(".dll")); });
    names.sort();
    QCOMPARE(names, QStringList({QStringLiteral("QuorvelDriver.exe"),
                                 QStringLiteral("QuorvelDriver_en_US.qm"),
                                 QStringLiteral("QuorvelDriver_zh_CN.qm"), QStringLiteral("guide"),
                                 QStringLiteral("imageformats"), QStringLiteral("licences"),
                                 QStringLiteral("platforms"), QStringLiteral("qt.conf"),
                                 QStringLiteral("styles")}));
}

void SystemPackage::programOpensNoConsole()
{
    QFile file(session().programFile());
    QVERIFY(file.open(QFile::ReadOnly));
    const QByteArray start = file.read(4096);
    const auto header = qFromLittleEndian<quint32>(start.constData() + 0x3C);
    QCOMPARE(start.mid(header, 4), QByteArray("PE\0\0", 4));
    constexpr quint16 graphical = 2;
    constexpr int subsystem = 0x5C;
    QCOMPARE(qFromLittleEndian<quint16>(start.constData() + header + subsystem), graphical);
}

void SystemPackage::asioDriverOpensTheSettingsAndIsReset()
{
    QVERIFY(arrive(QStringLiteral("ka1")).has_value());
    QVERIFY(Desktop::hasNoWindow(settingsDialog));
    QCOMPARE(startPeer({QStringLiteral("open-settings")})->waitForExit().value_or(-1), 0);
    const auto dialog = Desktop::waitForWindow(settingsDialog);
    QVERIFY(dialog.has_value());
    QVERIFY(panel().waitForLine(
        QStringLiteral("Received signal from pipe thread to show settings window.")));
    const auto peer = startPeer({QStringLiteral("wait-reset")});
    QVERIFY(waitUntil([&] { return peer->outputLines().contains(QStringLiteral("waiting")); }));

    // The captions have the button's colour too, in small patches.
    QRect ok;
    QVERIFY(waitUntil([&] {
        const auto patches =
            patchesOf(PanelSession::pictureOf(*dialog), {QColor(0x00, 0x88, 0x88)});
        const auto largest = std::max_element(
            patches.begin(), patches.end(),
            [](const QRect& one, const QRect& other) { return area(one) < area(other); });
        if (largest == patches.end() || largest->height() < 18)
            return false;
        ok = *largest;
        return true;
    }));
    QVERIFY(Desktop::click(dialog->area.topLeft() + ok.center()));
    QVERIFY(Desktop::waitForNoWindow(settingsDialog));
    QCOMPARE(peer->waitForExit().value_or(-1), 0);
    QCOMPARE(peer->outputLines(),
             QStringList({QStringLiteral("waiting"), QStringLiteral("received 0x31")}));
}

void SystemPackage::installsAndUninstallsSilently()
{
    QVERIFY(install());
    QVERIFY(QFile::exists(installed(QStringLiteral("QuorvelDriver.exe"))));
    QVERIFY(QFile::exists(installed(QStringLiteral("platforms/qwindows.dll"))));
    QCOMPARE(shortcuts(), QStringList({QStringLiteral("Quorvel control panel guide.lnk"),
                                       QStringLiteral("Quorvel control panel.lnk")}));
    for (const char* page : {"guide/en_US.html", "guide/zh_CN.html"})
        QVERIFY(QFile::exists(installed(QString::fromLatin1(page))));
    QVERIFY(QFile::exists(installed(QStringLiteral("guide/pictures/en_US/ka2.png"))));

    session().setProgram(installed(QStringLiteral("QuorvelDriver.exe")));
    QVERIFY(arrive(QStringLiteral("ka1")).has_value());
    QVERIFY(chooseFromTrayMenu(TrayEntry::Quit));
    QCOMPARE(panel().waitForExit().value_or(-1), 0);

    const QString settings = folder().settingsFile(QStringLiteral("ka1.ini"));
    QVERIFY(QFile::exists(settings));
    QVERIFY(uninstall());
    // It goes after the folder, by which the end is told.
    QVERIFY(waitUntil([&] { return shortcuts().isEmpty(); }));
    QVERIFY(QFile::exists(settings));

    QVERIFY(install());
    const QStringList others{QStringLiteral("ka1.ini.backup"), QStringLiteral("ka1.ini.set-aside"),
                             QStringLiteral("notes.ini.saving")};
    QStringList files = others;
    // As a crash leaves them.
    for (const char* name : {"ka1", "ka2", "ks", "setting"})
        files << QString::fromLatin1(name) + QStringLiteral(".ini")
              << QString::fromLatin1(name) + QStringLiteral(".ini.saving");
    for (const QString& name : files)
        QVERIFY(QFile(folder().settingsFile(name)).open(QFile::WriteOnly));
    QVERIFY(uninstall({QStringLiteral("/PURGE")}));
    QCOMPARE(awaited(others, [] { return QDir(Target::settingsFolder()).entryList(QDir::Files); }),
             others);

    QVERIFY(QDir(Target::settingsFolder()).removeRecursively());
    QVERIFY(QDir().mkpath(Target::settingsFolder()));
    QVERIFY(install());
    QVERIFY(uninstall({QStringLiteral("/PURGE")}));
    QVERIFY(waitUntil([] { return !QFile::exists(Target::settingsFolder()); }));
}

QUORVEL_TEST_MAIN(SystemPackage)
#include "system_package_test.moc"
