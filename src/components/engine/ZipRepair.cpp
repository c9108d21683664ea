#include "components/engine/ZipRepair.h"

#include "platform/FileReplace.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>

#include <zip.h>

namespace vmk::engine
{

bool ZipRepair::removeMembers(const QString& nativePath, const QSet<QByteArray>& members)
{
    const QFileInfo info(nativePath);
    const QString beside = info.dir().filePath(QStringLiteral(".%1.vmkrepair").arg(info.fileName()));
    QFile::remove(beside);
    if (!QFile::copy(nativePath, beside))
        return false;
    QFile::setPermissions(beside, QFile::permissions(beside) | QFileDevice::WriteOwner);

    int err = 0;
    zip_t* za = zip_open(QFile::encodeName(beside).constData(), 0, &err);
    if (!za) {
        QFile::remove(beside);
        return false;
    }
    bool removed = false;
    bool ok = true;
    for (const QByteArray& name : members) {
        const zip_int64_t idx = zip_name_locate(za, name.constData(), ZIP_FL_ENC_RAW);
        if (idx < 0)
            continue;
        if (zip_delete(za, static_cast<zip_uint64_t>(idx)) != 0) {
            ok = false;
            break;
        }
        removed = true;
    }
    if (!ok || !removed) {
        zip_discard(za);
        QFile::remove(beside);
        return false;
    }
    // libzip writes the new archive completely in zip_close; an archive left with
    // no member at all is removed by libzip, which is then the repaired form.
    if (zip_close(za) != 0) {
        zip_discard(za);
        QFile::remove(beside);
        return false;
    }
    if (!QFileInfo::exists(beside)) {
        // Every member was infected: an empty archive is still a valid zip.
        static const char emptyZip[22] = { 'P', 'K', 5, 6 };
        QFile f(beside);
        if (!f.open(QIODevice::WriteOnly) || f.write(emptyZip, sizeof emptyZip) != sizeof emptyZip)
            return false;
        f.close();
    }
    if (!FileReplace::move(beside, nativePath)) {
        QFile::remove(beside);
        return false;
    }
    return true;
}

} // namespace vmk::engine
