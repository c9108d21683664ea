#include "platform/Trash.h"

#include "platform/DriveMap.h"
#include "platform/MountTable.h"

#include <QDateTime>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QUrl>

#include <cerrno>
#include <cstring>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace vmk
{
namespace
{
QString homeTrash()
{
    const QString data = qEnvironmentVariable("XDG_DATA_HOME");
    return (data.startsWith(u'/') ? data : QDir::homePath() + QStringLiteral("/.local/share"))
        + QStringLiteral("/Trash");
}

dev_t deviceOf(const QString& native)
{
    struct stat st;
    if (::lstat(QFile::encodeName(native).constData(), &st) != 0)
        return 0;
    return st.st_dev;
}

QString topDirTrash(const QString& top)
{
    return (top == QLatin1String("/") ? QString() : top) + QStringLiteral("/.Trash-") + QString::number(::getuid());
}

// Path line of the .trashinfo file: relative to the top folder for a top-folder
// trash, absolute for the home trash; percent-encoded, "/" kept.
QString infoPath(const QString& nativePath, const QString& top)
{
    QString p = nativePath;
    if (!top.isEmpty())
        p = top == QLatin1String("/") ? p.mid(1) : p.mid(top.size() + 1);
    return QString::fromLatin1(QUrl::toPercentEncoding(p, "/"));
}
} // namespace

QString Trash::trashFolderFor(const QString& nativePath)
{
    const QString path = QFileInfo(nativePath).absoluteFilePath();
    const auto dev = DriveMap::instance().device();
    if (dev && dev->root != QLatin1String("/") && MountTable::isUnder(path, dev->root))
        return topDirTrash(dev->root);
    const QString home = homeTrash();
    QDir().mkpath(home);
    if (deviceOf(home) == deviceOf(path))
        return home;
    return topDirTrash(MountTable::holding(MountTable::read(), path).mountPoint);
}

bool Trash::moveToTrash(const QString& nativePath, QString* error)
{
    auto fail = [error](const QString& why) {
        if (error)
            *error = why;
        return false;
    };
    const QString path = QFileInfo(nativePath).absoluteFilePath();
    struct stat st;
    if (::lstat(QFile::encodeName(path).constData(), &st) != 0)
        return fail(QStringLiteral("not found: ") + path);
    const QString trash = trashFolderFor(path);
    const QString files = trash + QStringLiteral("/files");
    const QString info = trash + QStringLiteral("/info");
    if (!QDir().mkpath(files) || !QDir().mkpath(info))
        return fail(QStringLiteral("cannot create the trash folder ") + trash);
    ::chmod(QFile::encodeName(trash).constData(), 0700);

    const bool homeKind = trash == homeTrash();
    const QString top = homeKind ? QString() : QFileInfo(trash).path();
    const QString name = QFileInfo(path).fileName();
    // The info file is created exclusively first: that reserves the name.
    QString chosen;
    int fd = -1;
    for (int n = 1; n < 10000 && fd < 0; ++n) {
        chosen = n == 1 ? name : QStringLiteral("%1.%2").arg(name).arg(n);
        fd = ::open(QFile::encodeName(info + u'/' + chosen + QStringLiteral(".trashinfo")).constData(),
            O_WRONLY | O_CREAT | O_EXCL, 0600);
        if (fd < 0 && errno != EEXIST)
            return fail(QString::fromLocal8Bit(std::strerror(errno)));
    }
    if (fd < 0)
        return fail(QStringLiteral("no free name in the trash"));
    const QByteArray text = "[Trash Info]\nPath=" + infoPath(path, top).toUtf8() + "\nDeletionDate="
        + QDateTime::currentDateTime().toString(QStringLiteral("yyyy-MM-ddThh:mm:ss")).toUtf8() + "\n";
    const bool written = ::write(fd, text.constData(), text.size()) == text.size();
    ::close(fd);
    const QString infoFile = info + u'/' + chosen + QStringLiteral(".trashinfo");
    if (!written
        || ::rename(QFile::encodeName(path).constData(), QFile::encodeName(files + u'/' + chosen).constData()) != 0) {
        const QString why = QString::fromLocal8Bit(std::strerror(errno));
        QFile::remove(infoFile);
        return fail(why);
    }
    return true;
}

} // namespace vmk
