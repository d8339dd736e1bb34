#include "app/translation.h"

#include <QCoreApplication>
#include <QDebug>
#include <QMap>
#include <QStringList>

namespace {

/// There is no Traditional Chinese file: the Simplified one serves both.
QString translationCode(const QString& localeName)
{
    const QMap<QString, QString> codes{
        {QStringLiteral("en_001"), QStringLiteral("en_US")},
        {QStringLiteral("en_US"), QStringLiteral("en_US")},
        {QStringLiteral("en_GB"), QStringLiteral("en_US")},
        {QStringLiteral("zh_CN"), QStringLiteral("zh_CN")},
        {QStringLiteral("zh_TW"), QStringLiteral("zh_CN")},
    };
    return codes.value(localeName, QStringLiteral("en_US"));
}

} // namespace

void installTranslation(QTranslator& translator, const QString& localeName,
                        const QString& applicationDirectory)
{
    qDebug() << "系统返回的语言代码：" << localeName;
    const QStringList candidates{translationCode(localeName)};
    for (const QString& code : candidates) {
        // The substitution runs over the joined path on purpose: a "%1" in the folder's name is
        // replaced as well, and installations rely on the resulting path.
        const QString path =
            QString(applicationDirectory + QStringLiteral("/QuorvelDriver_%1.qm")).arg(code);
        qDebug() << "拼接后的路径：" << path;
        if (translator.load(path)) {
            QCoreApplication::installTranslator(&translator);
            qDebug() << "成功加载翻译文件：" << path;
            return;
        }
    }
    const QString fallback = applicationDirectory + QStringLiteral("/QuorvelDriver_en_US.qm");
    if (translator.load(fallback)) {
        QCoreApplication::installTranslator(&translator);
        qDebug() << "加载默认翻译文件：" << fallback;
        return;
    }
    qWarning() << "未找到任何翻译文件，使用原始文本";
}
