#include "platform/SpecialFolders.h"

#include <QDir>
#include <QFile>

namespace vmk
{
namespace
{
QString home()
{
    return QDir::homePath();
}

QString xdg(const char* variable, const QString& fallback)
{
    const QString v = qEnvironmentVariable(variable);
    return v.startsWith(u'/') ? v : home() + fallback;
}
} // namespace

QString SpecialFolders::userDir(const QString& name)
{
    QFile f(xdg("XDG_CONFIG_HOME", QStringLiteral("/.config")) + QStringLiteral("/user-dirs.dirs"));
    if (!f.open(QIODevice::ReadOnly))
        return {};
    const QString key = QStringLiteral("XDG_") + name + QStringLiteral("_DIR=");
    for (const QByteArray& raw : f.readAll().split('\n')) {
        const QString line = QString::fromUtf8(raw).trimmed();
        if (!line.startsWith(key))
            continue;
        QString v = line.mid(key.size());
        if (v.size() >= 2 && v.startsWith(u'"') && v.endsWith(u'"'))
            v = v.mid(1, v.size() - 2);
        if (v.startsWith(QLatin1String("$HOME")))
            v = home() + v.mid(5);
        // "$HOME/" alone means the folder is disabled: the home folder stands in.
        while (v.size() > 1 && v.endsWith(u'/'))
            v.chop(1);
        return v.startsWith(u'/') ? v : QString();
    }
    return {};
}

QString SpecialFolders::desktop()
{
    const QString v = userDir(QStringLiteral("DESKTOP"));
    return v.isEmpty() ? home() + QStringLiteral("/Desktop") : v;
}

QString SpecialFolders::documents()
{
    const QString v = userDir(QStringLiteral("DOCUMENTS"));
    return v.isEmpty() ? home() : v;
}

QString SpecialFolders::programs()
{
    return xdg("XDG_DATA_HOME", QStringLiteral("/.local/share")) + QStringLiteral("/applications");
}

QString SpecialFolders::system()
{
    return xdg("XDG_DATA_HOME", QStringLiteral("/.local/share")) + QStringLiteral("/Vormak/System");
}

} // namespace vmk
