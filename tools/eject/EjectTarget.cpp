#include "EjectTarget.h"

#include <QDir>

namespace vmk::eject
{

bool EjectTarget::Parse(const QString& argument)
{
    const QString text = argument.trimmed().remove(QLatin1Char('"'));
    const qsizetype bar = text.indexOf(QLatin1Char('|'));
    if (bar <= 0)
        return false;
    bool ok = false;
    const int language = text.left(bar).toInt(&ok);
    const QString drive = text.mid(bar + 1).trimmed();
    if (!ok || language < 0 || language > 6 || drive.size() != 2 || !drive[0].isLetter()
        || drive[1] != QLatin1Char(':'))
        return false;
    m_language = language;
    m_drive = drive.toUpper();
    return true;
}

QString EjectTarget::NativeRoot() const
{
    const QString given = qEnvironmentVariable("VMK_DEVICE_ROOT");
    if (!given.isEmpty())
        return QDir::cleanPath(given);
    return QString();
}

} // namespace vmk::eject
