#include "platform/Shell.h"

#include "platform/DriveMap.h"

#include <QProcess>
#include <QRegularExpression>

#include <utility>

namespace vmk
{
namespace
{
bool openWithXdg(const QString& target)
{
    // Detached: the opener outlives the call and the suite does not wait for it.
    return QProcess::startDetached(QStringLiteral("xdg-open"), { target });
}

Shell::Opener& openerSlot()
{
    static Shell::Opener opener = openWithXdg;
    return opener;
}
} // namespace

bool Shell::open(const QString& target)
{
    QString t = target;
    static const QRegularExpression scheme(QStringLiteral("^[A-Za-z][A-Za-z0-9+.-]+:"));
    if (DriveMap::hasDriveLetter(t))
        t = DriveMap::instance().toNative(t);
    else if (!scheme.match(t).hasMatch() && t.startsWith(QLatin1String("www.")))
        t = QStringLiteral("http://") + t;
    if (t.isEmpty())
        return false;
    const Opener opener = openerSlot();
    return opener(t);
}

Shell::Opener Shell::setOpener(Opener opener)
{
    Opener previous = std::move(openerSlot());
    openerSlot() = opener ? std::move(opener) : Opener(openWithXdg);
    return previous;
}

} // namespace vmk
