#include "support/ini_file.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QStandardPaths>

QString IniFile::path(const QString& name)
{
    return QStandardPaths::writableLocation(QStandardPaths::AppDataLocation) + u'/' + name;
}

void IniFile::write(const QString& name, const QMap<QString, QString>& values)
{
    QByteArray bytes;
    for (auto value = values.cbegin(); value != values.cend(); ++value) {
        const qsizetype slash = value.key().indexOf(u'/');
        bytes += '[' + value.key().left(slash).toUtf8() + "]\n" +
                 value.key().mid(slash + 1).toUtf8() + '=' + value.value().toUtf8() + '\n';
    }
    writeRaw(name, bytes);
}

void IniFile::writeRaw(const QString& name, const QByteArray& bytes)
{
    const QString file = path(name);
    QDir().mkpath(QFileInfo(file).path());
    QFile writer(file);
    if (!writer.open(QIODevice::WriteOnly) || writer.write(bytes) != bytes.size())
        qFatal("cannot write %s", qPrintable(file));
}

QMap<QString, QString> IniFile::read(const QString& name)
{
    QMap<QString, QString> values;
    QFile reader(path(name));
    if (!reader.exists())
        return values;
    if (!reader.open(QIODevice::ReadOnly | QIODevice::Text))
        qFatal("cannot read %s", qPrintable(reader.fileName()));
    QString group;
    const QStringList lines = QString::fromUtf8(reader.readAll()).split(u'\n');
    for (const QString& line : lines) {
        const qsizetype equals = line.indexOf(u'=');
        if (line.startsWith(u'['))
            group = line.mid(1, line.size() - 2);
        else if (equals > 0)
            values[group + u'/' + line.left(equals)] = line.mid(equals + 1);
    }
    return values;
}

void IniFile::remove(const QString& name)
{
    QFile::remove(path(name));
}
