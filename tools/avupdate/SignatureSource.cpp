#include "SignatureSource.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>

#include <curl/curl.h>

#include <cstdio>
#include <mutex>

namespace vmk::avupdate
{
namespace
{

size_t writeToFile(char* data, size_t size, size_t count, void* file)
{
    return std::fwrite(data, size, count, static_cast<FILE*>(file));
}

} // namespace

SignatureSource::SignatureSource(const QString& location, const QString& programFolder, int timeoutSeconds)
    : m_location(location)
    , m_programFolder(programFolder)
    , m_timeout(timeoutSeconds)
{
}

SignatureSource::Result SignatureSource::fetch(const QString& name, const QString& destination, QString& error) const
{
    const bool remote = m_location.startsWith("http://", Qt::CaseInsensitive)
        || m_location.startsWith("https://", Qt::CaseInsensitive)
        || m_location.startsWith("ftp://", Qt::CaseInsensitive);
    QFile::remove(destination);
    if (!remote) {
        const QString folder = QDir(m_programFolder).absoluteFilePath(m_location);
        if (!QFileInfo(folder).isDir()) {
            error = QStringLiteral("no folder %1").arg(folder);
            return Failed;
        }
        const QString from = QDir(folder).filePath(name);
        if (!QFileInfo(from).isFile())
            return Missing;
        if (!QFile::copy(from, destination)) {
            error = QStringLiteral("cannot copy %1").arg(from);
            return Failed;
        }
        return Fetched;
    }

    static std::once_flag once;
    std::call_once(once, [] { curl_global_init(CURL_GLOBAL_DEFAULT); });
    QString base = m_location;
    if (!base.endsWith('/'))
        base += '/';
    CURL* curl = curl_easy_init();
    if (!curl) {
        error = QStringLiteral("libcurl did not start");
        return Failed;
    }
    char* escaped = curl_easy_escape(curl, name.toUtf8().constData(), 0);
    const QByteArray url = base.toUtf8() + escaped;
    curl_free(escaped);
    FILE* out = std::fopen(QFile::encodeName(destination).constData(), "wb");
    if (!out) {
        curl_easy_cleanup(curl);
        error = QStringLiteral("cannot write %1").arg(destination);
        return Failed;
    }
    curl_easy_setopt(curl, CURLOPT_URL, url.constData());
    curl_easy_setopt(curl, CURLOPT_WRITEFUNCTION, writeToFile);
    curl_easy_setopt(curl, CURLOPT_WRITEDATA, out);
    curl_easy_setopt(curl, CURLOPT_FAILONERROR, 1L);
    curl_easy_setopt(curl, CURLOPT_FOLLOWLOCATION, 1L);
    curl_easy_setopt(curl, CURLOPT_CONNECTTIMEOUT, 15L);
    curl_easy_setopt(curl, CURLOPT_TIMEOUT, static_cast<long>(m_timeout));
    curl_easy_setopt(curl, CURLOPT_NOSIGNAL, 1L);
    const CURLcode rc = curl_easy_perform(curl);
    long status = 0;
    curl_easy_getinfo(curl, CURLINFO_RESPONSE_CODE, &status);
    curl_easy_cleanup(curl);
    const bool written = std::fclose(out) == 0;
    if (rc == CURLE_OK && written)
        return Fetched;
    QFile::remove(destination);
    if (rc == CURLE_REMOTE_FILE_NOT_FOUND || (rc == CURLE_HTTP_RETURNED_ERROR && status == 404))
        return Missing;
    error = QStringLiteral("%1: %2").arg(QString::fromUtf8(url), QString::fromUtf8(curl_easy_strerror(rc)));
    return Failed;
}

} // namespace vmk::avupdate
