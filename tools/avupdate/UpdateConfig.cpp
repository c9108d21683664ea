#include "UpdateConfig.h"

#include <QFile>
#include <QRegularExpression>

namespace vmk::avupdate
{

std::optional<UpdateConfig> UpdateConfig::read(const QString& path, QString& error)
{
    QFile f(path);
    if (!f.open(QIODevice::ReadOnly)) {
        error = QStringLiteral("cannot read %1").arg(path);
        return std::nullopt;
    }
    UpdateConfig c;
    int lineNo = 0;
    while (!f.atEnd()) {
        ++lineNo;
        const QString line = QString::fromUtf8(f.readLine()).trimmed();
        if (line.isEmpty() || line.startsWith('#'))
            continue;
        const qsizetype eq = line.indexOf('=');
        if (eq <= 0) {
            error = QStringLiteral("%1 line %2: expected key=value").arg(path).arg(lineNo);
            return std::nullopt;
        }
        const QString key = line.left(eq).trimmed().toLower();
        const QString value = line.mid(eq + 1).trimmed();
        if (key == "source") {
            if (!value.isEmpty())
                c.sources << value;
        } else if (key == "files") {
            c.files = value.split(QRegularExpression("[\\s,]+"), Qt::SkipEmptyParts);
        } else if (key == "timeout") {
            bool ok = false;
            c.timeoutSeconds = value.toInt(&ok);
            if (!ok || c.timeoutSeconds <= 0) {
                error = QStringLiteral("%1 line %2: timeout must be a number of seconds").arg(path).arg(lineNo);
                return std::nullopt;
            }
        } else {
            error = QStringLiteral("%1 line %2: unknown key %3").arg(path).arg(lineNo).arg(key);
            return std::nullopt;
        }
    }
    if (c.sources.isEmpty()) {
        error = QStringLiteral("%1 names no source").arg(path);
        return std::nullopt;
    }
    for (const QString& name : c.files)
        if (name.contains('/') || name.contains('\\') || name.startsWith('.')) {
            error = QStringLiteral("%1: bad file name %2").arg(path, name);
            return std::nullopt;
        }
    if (c.files.isEmpty())
        c.files << QStringLiteral("vormak.cud");
    return c;
}

} // namespace vmk::avupdate
