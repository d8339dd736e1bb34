#include "support/lock_file.h"

#include "support/ini_file.h"

#include <QDir>
#include <QFile>
#include <QLockFile>
#include <QTest>

namespace {

/// What a lock of this very process holds.
QByteArray ownLock()
{
    const QString name = QDir::temp().filePath(QStringLiteral("own.lock"));
    QLockFile lock(name);
    QFile file(name);
    if (!lock.tryLock(0) || !file.open(QIODevice::ReadOnly))
        qFatal("cannot lock %s", qPrintable(name));
    return file.readAll();
}

/// The same with the number of a process that does not exist.
QByteArray deadLock()
{
    const QByteArray lock = ownLock();
    return "1999999999" + lock.mid(lock.indexOf('\n'));
}

const QByteArray folderMark = "(folder)";

} // namespace

QString LockFiles::path(const QString& iniFile)
{
    return IniFile::path(iniFile + QStringLiteral(".lock"));
}

void LockFiles::addLeftoverRows()
{
    QTest::addColumn<QByteArray>("lock");
    QTest::newRow("empty") << QByteArray("");
    QTest::newRow("garbage") << QByteArray::fromHex("fffe000d0a00ff0a0a");
    QTest::newRow("zeros") << QByteArray(100, '\0');
    QTest::newRow("of a dead process") << deadLock();
    QTest::newRow("number in use again") << ownLock();
    QTest::newRow("folder") << folderMark;
}

void LockFiles::plant(const QString& iniFile)
{
    QFETCH(const QByteArray, lock);
    if (lock != folderMark)
        IniFile::writeRaw(iniFile + QStringLiteral(".lock"), lock);
    else if (!QDir().mkpath(path(iniFile)))
        qFatal("cannot make %s", qPrintable(path(iniFile)));
}
