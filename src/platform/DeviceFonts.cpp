#include "platform/DeviceFonts.h"

#include <QFileInfo>

namespace vmk
{

QString DeviceFonts::configToUse(const QString& programFolder, const QString& hostConfig)
{
    if (!qEnvironmentVariableIsEmpty("FONTCONFIG_FILE") || !qEnvironmentVariableIsEmpty("FONTCONFIG_PATH"))
        return QString();
    if (QFileInfo::exists(hostConfig))
        return QString();
    const QFileInfo own(programFolder + QStringLiteral("/fonts/fonts.conf"));
    return own.isFile() ? own.absoluteFilePath() : QString();
}

void DeviceFonts::useWhenHostHasNone()
{
    // No QCoreApplication exists yet, so the program's folder comes from the kernel.
    const QString folder = QFileInfo(QFileInfo(QStringLiteral("/proc/self/exe")).canonicalFilePath()).absolutePath();
    const QString config = configToUse(folder);
    if (!config.isEmpty())
        qputenv("FONTCONFIG_FILE", config.toLocal8Bit());
}

} // namespace vmk
