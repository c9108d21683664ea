#include "components/ftp/FtpClient.h"

#include "components/ftp/FtpLocation.h"
#include "components/ftp/ListingParser.h"
#include "platform/FileReplace.h"
#include "platform/NativeName.h"

#include <QFile>
#include <QFileInfo>
#include <QTemporaryFile>

#include <curl/curl.h>
#include <openssl/evp.h>
#include <openssl/ssl.h>
#include <openssl/x509.h>
#include <openssl/x509_vfy.h>

#include <algorithm>
#include <mutex>

namespace vmk::ftp
{

// One request to the server: what to send, where the data goes, and how a
// refusal reads.
struct FtpClient::Operation {
    QString path; // what the request concerns, for the error
    QByteArray url;
    bool noBody = false;
    QByteArray customRequest;
    QList<QByteArray> quote, postQuote;
    bool upload = false;
    qint64 uploadSize = -1;
    std::function<bool(const char*, size_t)> sink; // received data
    std::function<qint64(char*, size_t)> source; // data to send; -1 on a read error
    std::function<bool()> begin; // before each attempt: rewind the local side
    const Progress* progress = nullptr;
    FtpFailure onRefusal = FtpFailure::Refused;
};

namespace
{
CURL* handle(void* p)
{
    return static_cast<CURL*>(p);
}

bool holdsLineBreak(const QString& s)
{
    return s.contains(u'\r') || s.contains(u'\n');
}

// Fails of the connection itself rather than of the command on it.
bool connectionLevel(CURLcode rc)
{
    return rc == CURLE_RECV_ERROR || rc == CURLE_SEND_ERROR || rc == CURLE_OPERATION_TIMEDOUT || rc == CURLE_GOT_NOTHING
        || rc == CURLE_WEIRD_SERVER_REPLY || rc == CURLE_FTP_WEIRD_PASV_REPLY || rc == CURLE_FTP_WEIRD_227_FORMAT;
}

QByteArray commandWith(const char* verb, const QString& path)
{
    return QByteArray(verb) + ' ' + NativeName::toBytes(path);
}

QString asFolder(const QString& absolute)
{
    return absolute.endsWith(u'/') ? absolute : absolute + u'/';
}
} // namespace

FtpClient::FtpClient()
{
    static std::once_flag once;
    std::call_once(once, [] { curl_global_init(CURL_GLOBAL_DEFAULT); });
    m_curl = curl_easy_init();
    m_multi = curl_multi_init();
    const curl_version_info_data* info = curl_version_info(CURLVERSION_NOW);
    m_canPin = info && info->ssl_version && QByteArray(info->ssl_version).startsWith("OpenSSL");
}

FtpClient::~FtpClient()
{
    // The multi handle holds the kept connection; it goes first (saying QUIT).
    curl_multi_cleanup(static_cast<CURLM*>(m_multi));
    curl_easy_cleanup(handle(m_curl));
}

// The transfer runs on a multi handle of our own: libcurl 7.88's easy loop can
// miss the moment a passive data connection is ready and then sleeps out its
// one-second poll, which made every other request a second slower. Here the poll
// waits at most 10 ms.
int FtpClient::perform()
{
    auto* multi = static_cast<CURLM*>(m_multi);
    if (curl_multi_add_handle(multi, handle(m_curl)) != CURLM_OK)
        return CURLE_FAILED_INIT;
    int running = 0;
    CURLMcode mc = curl_multi_perform(multi, &running);
    while (mc == CURLM_OK && running > 0) {
        mc = curl_multi_poll(multi, nullptr, 0, 10, nullptr);
        if (mc == CURLM_OK)
            mc = curl_multi_perform(multi, &running);
    }
    CURLcode rc = mc == CURLM_OK ? CURLE_OK : CURLE_FAILED_INIT;
    int left = 0;
    while (CURLMsg* msg = curl_multi_info_read(multi, &left)) {
        if (msg->msg == CURLMSG_DONE && msg->easy_handle == handle(m_curl))
            rc = msg->data.result;
    }
    curl_multi_remove_handle(multi, handle(m_curl));
    return rc;
}

void FtpClient::setServer(const QString& server)
{
    const auto loc = FtpLocation::parse(server);
    m_addressOk = loc.has_value();
    m_host = loc ? loc->host : server;
    m_port = loc ? loc->port : 21;
    m_startPath = loc ? loc->path : QString();
}

void FtpClient::setUserName(const QString& user)
{
    m_user = user;
}

void FtpClient::setPassword(const QString& password)
{
    m_password = password;
}

void FtpClient::setAcceptedFingerprint(const QByteArray& sha256)
{
    m_accepted = sha256;
}

void FtpClient::fail(FtpFailure failure, const QString& path, int curlCode)
{
    m_error = FtpError {};
    m_error.failure = failure;
    m_error.path = path;
    m_error.curlCode = curlCode;
}

QString FtpClient::lastReply() const
{
    return m_replies.isEmpty() ? QString() : m_replies.last();
}

int FtpClient::lastReplyCode() const
{
    const QString reply = lastReply();
    bool ok = false;
    const int code = reply.left(3).toInt(&ok);
    return ok ? code : 0;
}

std::optional<QString> FtpClient::resolve(const QString& nameOrPath) const
{
    if (holdsLineBreak(nameOrPath))
        return std::nullopt;
    const QString whole = nameOrPath.startsWith(u'/') ? nameOrPath : m_current + nameOrPath;
    QStringList kept;
    for (const QString& name : whole.split(u'/', Qt::SkipEmptyParts)) {
        if (name == QLatin1String("."))
            continue;
        if (name == QLatin1String("..")) {
            if (!kept.isEmpty())
                kept.removeLast();
            continue;
        }
        kept << name;
    }
    return u'/' + kept.join(u'/');
}

QByteArray FtpClient::urlOf(const QString& absolutePath, bool folder) const
{
    QByteArray url = "ftp://";
    url += m_host.contains(u':') ? '[' + m_host.toUtf8() + ']' : m_host.toUtf8();
    url += ':' + QByteArray::number(m_port) + "/%2F";
    const QStringList names = absolutePath.split(u'/', Qt::SkipEmptyParts);
    for (qsizetype i = 0; i < names.size(); ++i) {
        const QByteArray bytes = NativeName::toBytes(names.at(i));
        char* escaped = curl_easy_escape(handle(m_curl), bytes.constData(), static_cast<int>(bytes.size()));
        if (i > 0)
            url += '/';
        url += escaped;
        curl_free(escaped);
    }
    if (folder && !names.isEmpty())
        url += '/';
    return url;
}

int FtpClient::verifyCertificate(void* storeContext, void* self)
{
    auto* ctx = static_cast<X509_STORE_CTX*>(storeContext);
    auto* client = static_cast<FtpClient*>(self);
    X509* leaf = X509_STORE_CTX_get0_cert(ctx);
    QByteArray digest(EVP_MAX_MD_SIZE, '\0');
    unsigned int length = 0;
    if (!leaf || X509_digest(leaf, EVP_sha256(), reinterpret_cast<unsigned char*>(digest.data()), &length) != 1)
        return 0;
    digest.truncate(length);
    // The server's name is checked with the chain, so the accepted fingerprint
    // can stand for a certificate issued to another name.
    X509_VERIFY_PARAM* param = X509_STORE_CTX_get0_param(ctx);
    const QByteArray host = client->m_host.toUtf8();
    if (X509_VERIFY_PARAM_set1_ip_asc(param, host.constData()) != 1)
        X509_VERIFY_PARAM_set1_host(param, host.constData(), static_cast<size_t>(host.size()));
    if (X509_verify_cert(ctx) == 1)
        return 1;
    if (!client->m_accepted.isEmpty() && digest == client->m_accepted) {
        X509_STORE_CTX_set_error(ctx, X509_V_OK);
        return 1;
    }
    client->m_refusedFingerprint = digest;
    return 0;
}

int FtpClient::sslContext(void*, void* sslCtx, void* self)
{
    SSL_CTX_set_cert_verify_callback(
        static_cast<SSL_CTX*>(sslCtx),
        [](X509_STORE_CTX* ctx, void* arg) -> int { return FtpClient::verifyCertificate(ctx, arg); }, self);
    return CURLE_OK;
}

int FtpClient::debug(void*, int type, char* data, size_t size, void* self)
{
    if (type != CURLINFO_HEADER_IN)
        return 0;
    auto* client = static_cast<FtpClient*>(self);
    const QByteArray lines(data, static_cast<qsizetype>(size));
    for (const QByteArray& line : lines.split('\n')) {
        const QByteArray trimmed = line.trimmed();
        if (!trimmed.isEmpty())
            client->m_replies << QString::fromUtf8(trimmed);
    }
    while (client->m_replies.size() > 32)
        client->m_replies.removeFirst();
    return 0;
}

int FtpClient::xferInfo(void* self, qint64 dlTotal, qint64 dlNow, qint64 ulTotal, qint64 ulNow)
{
    auto* client = static_cast<FtpClient*>(self);
    if (client->m_cancel)
        return 1;
    if (client->m_progress && *client->m_progress) {
        const bool sending = ulTotal > 0 || ulNow > 0;
        const qint64 done = sending ? ulNow : dlNow;
        const qint64 total = sending ? ulTotal : dlTotal;
        if (!(*client->m_progress)(done, total > 0 ? total : -1))
            return 1;
    }
    return client->m_cancel ? 1 : 0;
}

void FtpClient::setOptions(const Operation& op, bool fresh)
{
    CURL* c = handle(m_curl);
    curl_easy_reset(c);
    curl_easy_setopt(c, CURLOPT_URL, op.url.constData());
    curl_easy_setopt(c, CURLOPT_PROTOCOLS_STR, "ftp");
    const QByteArray user = NativeName::toBytes(m_user.isEmpty() ? QStringLiteral("anonymous") : m_user);
    const QByteArray password = NativeName::toBytes(m_password);
    curl_easy_setopt(c, CURLOPT_USERNAME, user.constData());
    curl_easy_setopt(c, CURLOPT_PASSWORD, password.constData());
    // AUTH TLS is asked before USER: where the server offers TLS, the password
    // only ever travels inside it.
    curl_easy_setopt(c, CURLOPT_USE_SSL, static_cast<long>(CURLUSESSL_TRY));
    curl_easy_setopt(c, CURLOPT_FTPSSLAUTH, static_cast<long>(CURLFTPAUTH_TLS));
    curl_easy_setopt(c, CURLOPT_SSL_VERIFYPEER, 1L);
    if (m_canPin) {
        // The chain and the server's name are checked in verifyCertificate,
        // which alone knows the one accepted fingerprint.
        curl_easy_setopt(c, CURLOPT_SSL_VERIFYHOST, 0L);
        curl_easy_setopt(
            c, CURLOPT_SSL_CTX_FUNCTION, +[](CURL* curl, void* sslCtx, void* self) -> CURLcode {
                return static_cast<CURLcode>(FtpClient::sslContext(curl, sslCtx, self));
            });
        curl_easy_setopt(c, CURLOPT_SSL_CTX_DATA, this);
    } else {
        curl_easy_setopt(c, CURLOPT_SSL_VERIFYHOST, 2L);
    }
    if (m_tls12)
        curl_easy_setopt(c, CURLOPT_SSLVERSION,
            static_cast<long>(CURL_SSLVERSION_TLSv1_2) | static_cast<long>(CURL_SSLVERSION_MAX_TLSv1_2));
    curl_easy_setopt(c, CURLOPT_CONNECTTIMEOUT, 20L);
    curl_easy_setopt(c, CURLOPT_SERVER_RESPONSE_TIMEOUT, 30L);
    curl_easy_setopt(c, CURLOPT_LOW_SPEED_LIMIT, 1L);
    curl_easy_setopt(c, CURLOPT_LOW_SPEED_TIME, 60L);
    curl_easy_setopt(c, CURLOPT_NOSIGNAL, 1L);
    curl_easy_setopt(c, CURLOPT_TCP_KEEPALIVE, 1L);
    curl_easy_setopt(c, CURLOPT_FTP_FILEMETHOD, static_cast<long>(CURLFTPMETHOD_SINGLECWD));
    curl_easy_setopt(c, CURLOPT_VERBOSE, 1L);
    curl_easy_setopt(
        c, CURLOPT_DEBUGFUNCTION, +[](CURL* curl, curl_infotype type, char* data, size_t size, void* self) -> int {
            return FtpClient::debug(curl, static_cast<int>(type), data, size, self);
        });
    curl_easy_setopt(c, CURLOPT_DEBUGDATA, this);
    if (fresh)
        curl_easy_setopt(c, CURLOPT_FRESH_CONNECT, 1L);
    if (op.noBody)
        curl_easy_setopt(c, CURLOPT_NOBODY, 1L);
    if (!op.customRequest.isEmpty())
        curl_easy_setopt(c, CURLOPT_CUSTOMREQUEST, op.customRequest.constData());
    curl_easy_setopt(
        c, CURLOPT_WRITEFUNCTION, +[](char* data, size_t, size_t n, void* target) -> size_t {
            const auto* o = static_cast<const Operation*>(target);
            return !o->sink || o->sink(data, n) ? n : 0;
        });
    curl_easy_setopt(c, CURLOPT_WRITEDATA, &op);
    if (op.upload) {
        curl_easy_setopt(c, CURLOPT_UPLOAD, 1L);
        curl_easy_setopt(c, CURLOPT_INFILESIZE_LARGE, static_cast<curl_off_t>(op.uploadSize));
        // Large reads: an archive of tens of megabytes goes in a few hundred sends,
        // not in thousands of 64 KiB ones.
        curl_easy_setopt(c, CURLOPT_UPLOAD_BUFFERSIZE, 1L << 20);
        curl_easy_setopt(
            c, CURLOPT_READFUNCTION, +[](char* data, size_t, size_t n, void* source) -> size_t {
                const qint64 got = static_cast<const Operation*>(source)->source(data, n);
                return got < 0 ? CURL_READFUNC_ABORT : static_cast<size_t>(got);
            });
        curl_easy_setopt(c, CURLOPT_READDATA, &op);
    }
    curl_easy_setopt(c, CURLOPT_NOPROGRESS, 0L);
    curl_easy_setopt(
        c, CURLOPT_XFERINFOFUNCTION,
        +[](void* self, curl_off_t dlTotal, curl_off_t dlNow, curl_off_t ulTotal, curl_off_t ulNow) -> int {
            return FtpClient::xferInfo(self, dlTotal, dlNow, ulTotal, ulNow);
        });
    curl_easy_setopt(c, CURLOPT_XFERINFODATA, this);
}

bool FtpClient::run(Operation& op)
{
    m_error = FtpError {};
    m_cancel = false;
    m_progress = op.progress;
    bool staleTried = false;
    int tlsRetries = 0;
    bool fresh = false;
    for (;;) {
        if (op.begin && !op.begin())
            return false;
        setOptions(op, fresh);
        curl_slist* quote = nullptr;
        curl_slist* postQuote = nullptr;
        for (const QByteArray& q : op.quote)
            quote = curl_slist_append(quote, q.constData());
        for (const QByteArray& q : op.postQuote)
            postQuote = curl_slist_append(postQuote, q.constData());
        if (quote)
            curl_easy_setopt(handle(m_curl), CURLOPT_QUOTE, quote);
        if (postQuote)
            curl_easy_setopt(handle(m_curl), CURLOPT_POSTQUOTE, postQuote);
        m_replies.clear();
        m_refusedFingerprint.clear();
        const auto rc = static_cast<CURLcode>(perform());
        curl_easy_setopt(handle(m_curl), CURLOPT_QUOTE, nullptr);
        curl_easy_setopt(handle(m_curl), CURLOPT_POSTQUOTE, nullptr);
        curl_slist_free_all(quote);
        curl_slist_free_all(postQuote);
        m_progress = nullptr;
        if (rc == CURLE_OK)
            return true;
        long connects = 0;
        curl_easy_getinfo(handle(m_curl), CURLINFO_NUM_CONNECTS, &connects);
        const int reply = lastReplyCode();
        // The kept connection was dead before this request made any new one:
        // the server dropped it while idle.
        if (!staleTried && m_connected && connects == 0 && rc != CURLE_ABORTED_BY_CALLBACK
            && (connectionLevel(rc) || reply == 421)) {
            staleTried = true;
            fresh = true;
            ++m_staleRetries;
            m_progress = op.progress;
            continue;
        }
        // vsftpd refuses some TLS 1.3 data connections ("522 SSL connection
        // failed; session reuse required") and fails TLS 1.3 uploads at their
        // close ("426 Failure reading network stream"); TLS 1.2 satisfies it.
        const bool refused522 = std::any_of(m_replies.cbegin(), m_replies.cend(), [this](const QString& r) {
            return r.startsWith(QLatin1String("522")) || (m_secure && r.startsWith(QLatin1String("426")));
        });
        // Even under TLS 1.2 a data connection now and then misses the session
        // of its control connection; once more on the same one settles it.
        if (refused522 && tlsRetries < 2) {
            ++tlsRetries;
            fresh = !m_tls12;
            m_tls12 = true;
            m_progress = op.progress;
            continue;
        }
        FtpFailure failure = FtpFailure::TransferFailed;
        switch (rc) {
        case CURLE_UNSUPPORTED_PROTOCOL:
        case CURLE_URL_MALFORMAT:
            failure = FtpFailure::BadAddress;
            break;
        case CURLE_COULDNT_RESOLVE_HOST:
        case CURLE_COULDNT_CONNECT:
            failure = FtpFailure::ConnectFailed;
            break;
        case CURLE_LOGIN_DENIED:
            failure = FtpFailure::LoginRefused;
            break;
        case CURLE_PEER_FAILED_VERIFICATION:
        case CURLE_SSL_CONNECT_ERROR:
            failure = m_refusedFingerprint.isEmpty() ? FtpFailure::SecureConnectionFailed
                                                     : FtpFailure::CertificateUntrusted;
            break;
        case CURLE_USE_SSL_FAILED:
        case CURLE_SSL_CERTPROBLEM:
        case CURLE_SSL_CIPHER:
        case CURLE_SSL_CACERT_BADFILE:
            failure = FtpFailure::SecureConnectionFailed;
            break;
        case CURLE_ABORTED_BY_CALLBACK:
            failure = FtpFailure::Cancelled;
            break;
        case CURLE_WRITE_ERROR:
            failure = FtpFailure::LocalUnwritable;
            break;
        case CURLE_READ_ERROR:
            failure = FtpFailure::LocalUnreadable;
            break;
        case CURLE_REMOTE_ACCESS_DENIED:
        case CURLE_REMOTE_FILE_NOT_FOUND:
        case CURLE_FTP_COULDNT_RETR_FILE:
        case CURLE_QUOTE_ERROR:
        case CURLE_UPLOAD_FAILED:
        case CURLE_REMOTE_FILE_EXISTS:
        case CURLE_REMOTE_DISK_FULL:
            failure = reply == 550 || reply == 450 ? op.onRefusal : FtpFailure::Refused;
            break;
        case CURLE_OPERATION_TIMEDOUT:
            failure = m_connected ? FtpFailure::ConnectionLost : FtpFailure::ConnectFailed;
            break;
        default:
            if (refused522)
                failure = FtpFailure::SecureConnectionFailed;
            else if (connectionLevel(rc) || rc == CURLE_PARTIAL_FILE || rc == CURLE_FTP_ACCEPT_FAILED)
                failure = FtpFailure::ConnectionLost;
            break;
        }
        fail(failure, op.path, rc);
        if (failure == FtpFailure::CertificateUntrusted)
            m_error.fingerprint = m_refusedFingerprint;
        if (failure == FtpFailure::LoginRefused || failure == FtpFailure::Refused || failure == FtpFailure::NotFound
            || failure == FtpFailure::SecureConnectionFailed)
            m_error.serverReply = lastReply();
        if (failure == FtpFailure::LoginRefused || failure == FtpFailure::ConnectFailed
            || failure == FtpFailure::CertificateUntrusted || failure == FtpFailure::BadAddress)
            m_connected = false;
        return false;
    }
}

bool FtpClient::connect()
{
    if (m_connected)
        return true;
    const QString where = QStringLiteral("ftp://") + (m_user.isEmpty() ? QString() : m_user + u'@') + m_host
        + (m_port != 21 ? u':' + QString::number(m_port) : QString()) + u'/';
    if (!m_addressOk || m_host.isEmpty() || holdsLineBreak(m_user) || holdsLineBreak(m_password)) {
        fail(FtpFailure::BadAddress, where);
        return false;
    }
    Operation op;
    op.path = where;
    // No path: log in, ask the login folder, and go nowhere.
    op.url = "ftp://" + (m_host.contains(u':') ? '[' + m_host.toUtf8() + ']' : m_host.toUtf8()) + ':'
        + QByteArray::number(m_port) + '/';
    op.noBody = true;
    if (!run(op))
        return false;
    m_secure = std::any_of(
        m_replies.cbegin(), m_replies.cend(), [](const QString& r) { return r.startsWith(QLatin1String("234")); });
    const char* entry = nullptr;
    curl_easy_getinfo(handle(m_curl), CURLINFO_FTP_ENTRY_PATH, &entry);
    QString login = entry ? NativeName::fromBytes(QByteArray(entry)) : QStringLiteral("/");
    if (!login.startsWith(u'/'))
        login.prepend(u'/');
    m_current = asFolder(login);
    m_connected = true;
    if (!m_startPath.isEmpty())
        return changeFolder(m_startPath);
    return true;
}

void FtpClient::disconnect()
{
    // Cleaning the multi handle up says QUIT and closes the connection it keeps.
    curl_multi_cleanup(static_cast<CURLM*>(m_multi));
    m_multi = curl_multi_init();
    m_connected = false;
    m_secure = false;
}

std::optional<QList<RemoteEntry>> FtpClient::list()
{
    return list(m_current);
}

std::optional<QList<RemoteEntry>> FtpClient::list(const QString& folder)
{
    const auto path = resolve(folder);
    if (!path) {
        fail(FtpFailure::BadName, folder);
        return std::nullopt;
    }
    if (!connect())
        return std::nullopt;
    QByteArray data;
    Operation op;
    op.path = asFolder(*path);
    op.url = urlOf(*path, true);
    op.onRefusal = FtpFailure::NotFound;
    op.sink = [&data](const char* bytes, size_t n) {
        data.append(bytes, static_cast<qsizetype>(n));
        return true;
    };
    op.begin = [&data] {
        data.clear();
        return true;
    };
    if (!m_noMlsd) {
        op.customRequest = "MLSD";
        if (run(op))
            return ListingParser::parseMlsd(data);
        // A server without MLSD says so with a 500-class "not understood".
        const int code = lastReplyCode();
        if (code != 500 && code != 501 && code != 502 && code != 504)
            return std::nullopt;
        m_noMlsd = true;
        op.customRequest.clear();
    }
    if (!run(op))
        return std::nullopt;
    return ListingParser::parseList(data);
}

bool FtpClient::folderExists(const QString& nameOrPath)
{
    const auto path = resolve(nameOrPath);
    if (!path) {
        fail(FtpFailure::BadName, nameOrPath);
        return false;
    }
    if (!connect())
        return false;
    // A CWD that fails keeps the connection (a failed quote command would not).
    Operation op;
    op.path = asFolder(*path);
    op.url = urlOf(*path, true);
    op.noBody = true;
    op.onRefusal = FtpFailure::NotFound;
    return run(op);
}

bool FtpClient::changeFolder(const QString& nameOrPath)
{
    if (!folderExists(nameOrPath))
        return false;
    m_current = asFolder(*resolve(nameOrPath));
    return true;
}

bool FtpClient::up()
{
    return changeFolder(QStringLiteral(".."));
}

bool FtpClient::quote(const QStringList& commands, const QString& path, FtpFailure onRefusal)
{
    if (!connect())
        return false;
    Operation op;
    op.path = path;
    // Quote commands run before curl's own CWD on a kept connection, so they
    // name absolute paths and the URL only has to reach the server.
    op.url = urlOf(QStringLiteral("/"), true);
    op.noBody = true;
    op.onRefusal = onRefusal;
    for (const QString& c : commands)
        op.quote << NativeName::toBytes(c);
    return run(op);
}

bool FtpClient::makeFolder(const QString& nameOrPath)
{
    const auto path = resolve(nameOrPath);
    if (!path || *path == QLatin1String("/")) {
        fail(FtpFailure::BadName, nameOrPath);
        return false;
    }
    return quote({ QStringLiteral("MKD ") + *path }, asFolder(*path), FtpFailure::Refused);
}

bool FtpClient::makeFolders(const QString& nameOrPath)
{
    const auto path = resolve(nameOrPath);
    if (!path) {
        fail(FtpFailure::BadName, nameOrPath);
        return false;
    }
    QString walked;
    for (const QString& name : path->split(u'/', Qt::SkipEmptyParts)) {
        walked += u'/' + name;
        if (folderExists(walked))
            continue;
        if (m_error.failure != FtpFailure::NotFound || !makeFolder(walked))
            return false;
    }
    m_error = FtpError {};
    return true;
}

bool FtpClient::removeFile(const QString& nameOrPath)
{
    const auto path = resolve(nameOrPath);
    if (!path || *path == QLatin1String("/")) {
        fail(FtpFailure::BadName, nameOrPath);
        return false;
    }
    return quote({ QStringLiteral("DELE ") + *path }, *path, FtpFailure::NotFound);
}

bool FtpClient::removeFolder(const QString& nameOrPath)
{
    const auto path = resolve(nameOrPath);
    if (!path || *path == QLatin1String("/")) {
        fail(FtpFailure::BadName, nameOrPath);
        return false;
    }
    return quote({ QStringLiteral("RMD ") + *path }, asFolder(*path), FtpFailure::Refused);
}

bool FtpClient::upload(const QString& localFile, const QString& remote, const Progress& progress)
{
    const auto path = resolve(remote);
    if (!path || *path == QLatin1String("/") || remote.endsWith(u'/')) {
        fail(FtpFailure::BadName, remote);
        return false;
    }
    QFile file(localFile);
    if (!QFileInfo(localFile).isFile() || !file.open(QIODevice::ReadOnly)) {
        fail(FtpFailure::LocalUnreadable, localFile);
        return false;
    }
    if (!connect())
        return false;
    const QString part = *path + QStringLiteral(".part");
    Operation op;
    op.path = *path;
    op.url = urlOf(part, false);
    op.upload = true;
    op.uploadSize = file.size();
    op.progress = &progress;
    op.source = [&file](char* data, size_t n) { return file.read(data, static_cast<qint64>(n)); };
    op.begin = [&file] { return file.seek(0); };
    // Renamed only after the whole file arrived.
    op.postQuote << commandWith("RNFR", part) << commandWith("RNTO", *path);
    if (run(op))
        return true;
    const FtpError failed = m_error;
    if (failed.failure != FtpFailure::ConnectFailed && failed.failure != FtpFailure::LoginRefused
        && failed.failure != FtpFailure::CertificateUntrusted && failed.failure != FtpFailure::BadAddress) {
        quote({ QStringLiteral("DELE ") + part }, part, FtpFailure::NotFound);
    }
    m_error = failed;
    return false;
}

bool FtpClient::download(const QString& remote, const QString& localFile, const Progress& progress)
{
    const auto path = resolve(remote);
    if (!path || *path == QLatin1String("/") || remote.endsWith(u'/')) {
        fail(FtpFailure::BadName, remote);
        return false;
    }
    const QFileInfo target(localFile);
    if (target.isDir()) {
        fail(FtpFailure::LocalUnwritable, localFile);
        return false;
    }
    QTemporaryFile temporary(
        target.absolutePath() + QStringLiteral("/.") + target.fileName() + QStringLiteral(".XXXXXX.part"));
    if (!temporary.open()) {
        fail(FtpFailure::LocalUnwritable, localFile);
        return false;
    }
    if (!connect())
        return false;
    Operation op;
    op.path = *path;
    op.url = urlOf(*path, false);
    op.onRefusal = FtpFailure::NotFound;
    op.progress = &progress;
    op.sink = [&temporary](const char* data, size_t n) {
        return temporary.write(data, static_cast<qint64>(n)) == static_cast<qint64>(n);
    };
    op.begin = [&temporary] { return temporary.resize(0) && temporary.seek(0); };
    if (!run(op))
        return false;
    const bool written = temporary.flush();
    temporary.close();
    temporary.setPermissions(QFile::ReadOwner | QFile::WriteOwner | QFile::ReadGroup | QFile::ReadOther);
    if (!written || !FileReplace::move(temporary.fileName(), target.absoluteFilePath())) {
        fail(FtpFailure::LocalUnwritable, localFile);
        return false;
    }
    temporary.setAutoRemove(false);
    return true;
}

} // namespace vmk::ftp
