#include "EjectTarget.h"

#include "platform/DriveMap.h"

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
    if (m_drive.isEmpty())
        return QString();
    const auto drive = DriveMap::instance().drive(m_drive[0]);
    return drive ? QDir::cleanPath(drive->root) : QString();
}

} // namespace vmk::eject
