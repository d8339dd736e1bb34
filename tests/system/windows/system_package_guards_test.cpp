#include "support/test_main.h"
#include "system/desktop/system_test.h"
#include "system/desktop/target.h"
#include "system/desktop/tool.h"
#include "system/windows/installation.h"

#include <QDir>
#include <QDirIterator>
#include <QScopeGuard>
#include <QtEndian>

using Installation::installed;

namespace {

/// What the header of a Windows program or library says of itself.
struct Header
{
    explicit Header(const QByteArray& file)
        : start(file.constData() + qFromLittleEndian<quint32>(file.constData() + 0x3C))
    {
    }
    template <typename Number> Number at(int offset) const
    {
        return qFromLittleEndian<Number>(start + offset);
    }
    quint16 characteristics() const { return at<quint16>(0x16); }
    quint16 libraryCharacteristics() const { return at<quint16>(0x5E); }
    quint32 sizeOfRelocations() const { return at<quint32>(0xB4); }

    const char* start;
};

constexpr quint16 relocationsStripped = 0x0001;
constexpr quint16 highEntropy = 0x0020;
constexpr quint16 dynamicBase = 0x0040;
constexpr quint16 noExecute = 0x0100;

QByteArray contentOf(const QString& path)
{
    QFile file(path);
    return file.open(QFile::ReadOnly) ? file.readAll() : QByteArray();
}

/// Empty when the linker's and the compiler's guards are in the file.
QString missingGuards(const QString& path)
{
    const QByteArray file = contentOf(path);
    const Header header(file);
    QStringList missing;
    const quint16 wanted = highEntropy | dynamicBase | noExecute;
    if ((header.libraryCharacteristics() & wanted) != wanted)
        missing << QStringLiteral("flags");
    if ((header.characteristics() & relocationsStripped) != 0 || header.sizeOfRelocations() == 0)
        missing << QStringLiteral("relocations");
    // The compiler's own libraries come from the distribution, which builds them without.
    const bool compilers = QFileInfo(path).fileName().startsWith(QLatin1String("lib"));
    // An imported one is known by its name, one that was linked in by what it would say.
    if (!compilers && !file.contains("__stack_chk_fail") && !file.contains("stack smashing"))
        missing << QStringLiteral("stack protector");
    return missing.join(QStringLiteral(", "));
}

QStringList programFiles(const QString& folder)
{
    QStringList files;
    QDirIterator search(folder, {QStringLiteral("*.exe"), QStringLiteral("*.dll")}, QDir::Files,
                        QDirIterator::Subdirectories);
    while (search.hasNext())
        files << search.next();
    return files;
}

bool isSigned(const QString& file)
{
    const auto answer =
        askTool(QStringLiteral("osslsigncode"),
                {QStringLiteral("verify"), QStringLiteral("-CAfile"),
                 qEnvironmentVariable("QUORVEL_CERTIFICATE"), QStringLiteral("-in"), file});
    return answer && answer->exitCode == 0;
}

bool writeFile(const QString& path, const QByteArray& content)
{
    QDir().mkpath(QFileInfo(path).path());
    QFile file(path);
    return file.open(QFile::WriteOnly) && file.write(content) == content.size();
}

} // namespace

/// What protects the files of the package, and the program from files that are not of it.
class SystemPackageGuards : public SystemTest
{
    Q_OBJECT

private slots:
    void everyFileHasTheCompilersGuards();
    void everyFileIsSigned();
    void plantedPlugInStaysOut_data();
    void plantedPlugInStaysOut();

private:
    QString programFolder() { return QFileInfo(session().programFile()).path(); }
    /// For Windows programs started from now on; Wine itself lets none of Qt's through.
    bool setVariable(const QString& name, const QString& value);
};

bool SystemPackageGuards::setVariable(const QString& name, const QString& value)
{
    QStringList words{QStringLiteral(R"(HKCU\Environment)"), QStringLiteral("/v"), name,
                      QStringLiteral("/f")};
    words.prepend(value.isEmpty() ? QStringLiteral("delete") : QStringLiteral("add"));
    if (!value.isEmpty())
        words << QStringLiteral("/d") << value;
    return Installation::runCommand(folder(), Target::command(QStringLiteral("reg")) + words) == 0;
}

void SystemPackageGuards::everyFileHasTheCompilersGuards()
{
    const QStringList files = programFiles(programFolder());
    QVERIFY(files.size() > 8);
    // The installer's program part is its maker's.
    QVERIFY(!missingGuards(Installation::setupFile()).contains(QLatin1String("flags")));
    QStringList flaws;
    for (const QString& file : files) {
        const QString missing = missingGuards(file);
        if (!missing.isEmpty())
            flaws << QFileInfo(file).fileName() + QStringLiteral(": ") + missing;
    }
    QCOMPARE(flaws.join(QLatin1Char('\n')), QString());
}

void SystemPackageGuards::everyFileIsSigned()
{
    QCOMPARE(Installation::run(folder(), Installation::setupFile()), 0);
    QStringList files = programFiles(programFolder());
    files << Installation::setupFile() << installed(QStringLiteral("uninstall.exe"));
    QVERIFY(files.size() > 10);
    const QString changed = folder().path(QStringLiteral("changed"));
    for (const QString& file : std::as_const(files)) {
        QVERIFY2(isSigned(file), qUtf8Printable(file));
        QByteArray content = contentOf(file);
        content[content.size() / 2] = static_cast<char>(content[content.size() / 2] ^ 1);
        QVERIFY(writeFile(changed, content));
        QVERIFY2(!isSigned(changed), qUtf8Printable(file));
    }
}

void SystemPackageGuards::plantedPlugInStaysOut_data()
{
    QTest::addColumn<QString>("file"); // from the program's folder, which lies in a user's on C:
    QTest::addColumn<QString>("variable");
    QTest::addColumn<QString>("value");
    const QString none;
    QTest::newRow("beside the program") << "plugins/styles/planted.dll" << none << none;
    QTest::newRow("above the folder") << "../plugins/styles/planted.dll" << none << none;
    const QString elsewhere = QStringLiteral("../../../planted/styles/planted.dll");
    for (const char* name : {"QT_PLUGIN_PATH", "QT_QPA_PLATFORM_PLUGIN_PATH"})
        QTest::newRow(name) << elsewhere << QString::fromLatin1(name) << R"(C:\planted)";
    QTest::newRow("QT_LOAD_TESTABILITY") << "../../../windows/qttestability.dll"
                                         << "QT_LOAD_TESTABILITY"
                                         << "1";
}

void SystemPackageGuards::plantedPlugInStaysOut()
{
    QFETCH(QString, file);
    QFETCH(QString, variable);
    QFETCH(QString, value);
    const QString planted = QDir::cleanPath(programFolder() + QLatin1Char('/') + file);
    // By this file Qt takes the folder above for its own.
    const QString library = programFolder() + QStringLiteral("/../lib/libQt6Core.a");
    const auto restore = qScopeGuard([&] {
        QFile::remove(planted);
        QFile::remove(library);
        if (!variable.isEmpty())
            setVariable(variable, {});
    });
    QVERIFY(writeFile(planted, contentOf(qEnvironmentVariable("QUORVEL_TOOLS") +
                                         QStringLiteral("/quorvel-planted-style.dll"))));
    QVERIFY(!file.startsWith(QLatin1String("../plugins")) || writeFile(library, {}));
    QVERIFY(variable.isEmpty() || setVariable(variable, value));

    QVERIFY(arrive(QStringLiteral("ka1")).has_value());
    QVERIFY(!QFile::exists(planted + QStringLiteral(".ran")));
}

QUORVEL_TEST_MAIN(SystemPackageGuards)
#include "system_package_guards_test.moc"
