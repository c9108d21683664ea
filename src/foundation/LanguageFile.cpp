#include "foundation/LanguageFile.h"

#include "platform/DriveMap.h"
#include "platform/LogicalPath.h"

#include <QFile>
#include <QStringDecoder>
#include <QStringList>

namespace vmk
{

int ReadLanguageFile(const QString& folder, int current)
{
    QFile f(DriveMap::instance().toNative(LogicalPath::join(folder, QStringLiteral("Language.cnf"))));
    if (!f.exists())
        return 0;
    if (!f.open(QIODevice::ReadOnly))
        return current;
    QByteArray line = f.readLine();
    while (line.endsWith('\n') || line.endsWith('\r'))
        line.chop(1);
    // Files written on the device may be UTF-8 or in the Windows code page.
    QStringDecoder utf8(QStringDecoder::Utf8);
    QString text = utf8.decode(line);
    if (utf8.hasError())
        text = QString::fromLatin1(line);
    if (text.startsWith(QChar(0xFEFF)))
        text.remove(0, 1);
    static const QStringList names {
        QStringLiteral("[Español]"),
        QStringLiteral("[English]"),
        QStringLiteral("[Duetsch]"),
        QStringLiteral("[Português]"),
        QStringLiteral("[Français]"),
        QStringLiteral("[Italiano]"),
        QStringLiteral("[Chinesse]"),
    };
    const qsizetype i = names.indexOf(text);
    return i >= 0 ? static_cast<int>(i) : current;
}

} // namespace vmk
