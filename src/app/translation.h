#pragma once

#include <QString>
#include <QTranslator>

/// Loads the translation for a locale name such as "zh_CN" from the folder of the executable and
/// installs it; without any file the program runs untranslated.
void installTranslation(QTranslator& translator, const QString& localeName,
                        const QString& applicationDirectory);
