#include "EngineTestSupport.h"

#include "TestSupport.h"
#include "components/engine/Engine.h"
#include "components/engine/EngineService.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>

#include <QFile>
#include <zip.h>

#include <zip.h>

namespace vmk::test
{

QString builtSignatureFolder()
{
    return QDir(binDir()).filePath("sigs");
}

int loadBuiltEngine(const QString& tempFolder)
{
    auto& service = engine::EngineService::instance();
    service.setSignatureFolder(builtSignatureFolder());
    service.setTempFolder(tempFolder);
    return engine::LoadEngine();
}

EngineScan scanWithEngine(const QString& path)
{
    EngineScan s;
    const engine::ScanResult r = engine::ScanFile(reinterpret_cast<const char16_t*>(path.utf16()));
    s.code = r.ReturnCode;
    s.count = r.AlertCount;
    if (r.ReturnCode != 0)
        return s;
    for (int i = 0; i < r.AlertCount; ++i) {
        engine::AlertRecord a;
        engine::ReadAlert(i, &a);
        s.alerts << QString::fromUtf8(a.ObjectPtr, a.ObjectLen) + '|'
                + QString::fromUtf8(a.ThreatKindPtr, a.ThreatKindLen) + ':'
                + QString::fromUtf8(a.ThreatNamePtr, a.ThreatNameLen) + '|' + QString::number(a.Repairable);
    }
    return s;
}

QByteArray eicar()
{
    return QByteArray("X5O!P%@AP[4\\PZX54(P^)7CC)7}$EICAR-STANDARD-ANTIVIRUS-TEST-FILE!$H+H*");
}

QByteArray clamExe()
{
    return readFile(QStringLiteral("/usr/share/clamav-testfiles/clam.exe"));
}

QByteArray puaMarker(const char* category)
{
    return QByteArray("VORMAK-PUA-TEST-") + category;
}

bool makeZip(const QString& path, const QList<ZipMember>& members)
{
    QFile::remove(path);
    QDir().mkpath(QFileInfo(path).absolutePath());
    int err = 0;
    zip_t* za = zip_open(QFile::encodeName(path).constData(), ZIP_CREATE | ZIP_TRUNCATE, &err);
    if (!za)
        return false;
    for (const ZipMember& m : members) {
        // libzip reads the buffers in zip_close; `members` outlives it.
        zip_source_t* src = zip_source_buffer(za, m.data.constData(), static_cast<zip_uint64_t>(m.data.size()), 0);
        const zip_int64_t idx = zip_file_add(za, m.name.constData(), src, ZIP_FL_ENC_UTF_8);
        if (idx < 0) {
            zip_source_free(src);
            zip_discard(za);
            return false;
        }
        zip_set_file_compression(za, static_cast<zip_uint64_t>(idx), m.stored ? ZIP_CM_STORE : ZIP_CM_DEFLATE, 9);
    }
    return zip_close(za) == 0;
}

static QMap<QByteArray, QByteArray> readMembers(const QString& path, zip_flags_t flags)
{
    QMap<QByteArray, QByteArray> out;
    int err = 0;
    zip_t* za = zip_open(QFile::encodeName(path).constData(), ZIP_RDONLY, &err);
    if (!za)
        return out;
    for (zip_int64_t i = 0; i < zip_get_num_entries(za, 0); ++i) {
        zip_stat_t st;
        if (zip_stat_index(za, static_cast<zip_uint64_t>(i), 0, &st) != 0)
            continue;
        zip_file_t* f = zip_fopen_index(za, static_cast<zip_uint64_t>(i), flags);
        if (!f)
            continue;
        const zip_uint64_t size = (flags & ZIP_FL_COMPRESSED) ? st.comp_size : st.size;
        QByteArray data(static_cast<qsizetype>(size), '\0');
        const zip_int64_t n = zip_fread(f, data.data(), size);
        zip_fclose(f);
        if (n >= 0)
            out.insert(QByteArray(st.name), data.left(static_cast<qsizetype>(n)));
    }
    zip_close(za);
    return out;
}

QMap<QByteArray, QByteArray> zipRawMembers(const QString& path)
{
    return readMembers(path, ZIP_FL_COMPRESSED);
}

QMap<QByteArray, QByteArray> zipMembers(const QString& path)
{
    return readMembers(path, 0);
}

} // namespace vmk::test
