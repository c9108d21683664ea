#include "FuzzSandbox.h"

#include "foundation/Globals.h"
#include "foundation/Messages.h"
#include "platform/DriveMap.h"

#include <QCoreApplication>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QMap>

#include <dlfcn.h>
#include <fcntl.h>
#include <limits.h>
#include <sys/stat.h>
#include <unistd.h>

#include <atomic>
#include <cstdarg>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>

namespace
{
// The real folder, set once before the guard is armed; empty: guard off.
std::string g_root;
// The folder where libFuzzer keeps its own new inputs and crash files
// (VMK_FUZZ_ALLOW, set by scripts/run-fuzz.sh).
std::string g_fuzzerFolder;
std::atomic<bool> g_armed { false };

std::string lexicalClean(const std::string& path)
{
    std::string out;
    size_t i = 0;
    while (i < path.size()) {
        size_t j = path.find('/', i);
        if (j == std::string::npos)
            j = path.size();
        const std::string part = path.substr(i, j - i);
        if (part == "..") {
            const size_t cut = out.rfind('/');
            out.erase(cut == std::string::npos ? 0 : cut);
        } else if (!part.empty() && part != ".") {
            out += '/';
            out += part;
        }
        i = j + 1;
    }
    return out.empty() ? "/" : out;
}

// The absolute path a call acts on. The folder part is resolved through links
// (a link planted inside the folder must not lead out); the last component too
// when the call follows it.
std::string resolve(int dirfd, const char* path, bool followLast)
{
    std::string full;
    if (path[0] == '/') {
        full = path;
    } else {
        char base[PATH_MAX];
        if (dirfd == AT_FDCWD) {
            if (!getcwd(base, sizeof base))
                return {};
        } else {
            const std::string link = "/proc/self/fd/" + std::to_string(dirfd);
            const ssize_t n = readlink(link.c_str(), base, sizeof base - 1);
            if (n < 0)
                return {};
            base[n] = '\0';
        }
        full = std::string(base) + '/' + path;
    }
    full = lexicalClean(full);
    char real[PATH_MAX];
    struct stat st;
    if (followLast && lstat(full.c_str(), &st) == 0 && S_ISLNK(st.st_mode) && realpath(full.c_str(), real))
        return real;
    const size_t slash = full.rfind('/');
    const std::string parent = slash == 0 ? "/" : full.substr(0, slash);
    if (realpath(parent.c_str(), real))
        return lexicalClean(std::string(real) + full.substr(slash));
    return full;
}

bool allowed(const std::string& path)
{
    if (path.rfind("/dev/", 0) == 0)
        return true;
    auto under = [&path](const std::string& folder) {
        return !folder.empty() && (path == folder || path.rfind(folder + '/', 0) == 0);
    };
    return under(g_root) || under(g_fuzzerFolder);
}

void check(const char* call, int dirfd, const char* path, bool followLast = true)
{
    if (!g_armed.load() || !path)
        return;
    const std::string where = resolve(dirfd, path, followLast);
    if (where.empty() || !allowed(where)) {
        fprintf(stderr, "==fuzz sandbox== %s(\"%s\") acts outside the private folder %s\n", call, path, g_root.c_str());
        abort();
    }
}

template<typename F> F real(const char* name)
{
    return reinterpret_cast<F>(dlsym(RTLD_NEXT, name));
}

bool writes(int flags)
{
    return (flags & (O_WRONLY | O_RDWR | O_CREAT | O_TRUNC)) != 0;
}

mode_t modeArg(int flags, va_list ap)
{
    return (flags & (O_CREAT | O_TMPFILE)) ? static_cast<mode_t>(va_arg(ap, int)) : 0;
}
} // namespace

// The calls a reader could be led to misuse. Each checks, then forwards to the C library.
extern "C" {
int open(const char* path, int flags, ...)
{
    va_list ap;
    va_start(ap, flags);
    const mode_t mode = modeArg(flags, ap);
    va_end(ap);
    if (writes(flags))
        check("open", AT_FDCWD, path, !(flags & O_NOFOLLOW));
    static auto f = real<int (*)(const char*, int, ...)>("open");
    return f(path, flags, mode);
}
int open64(const char* path, int flags, ...)
{
    va_list ap;
    va_start(ap, flags);
    const mode_t mode = modeArg(flags, ap);
    va_end(ap);
    if (writes(flags))
        check("open64", AT_FDCWD, path, !(flags & O_NOFOLLOW));
    static auto f = real<int (*)(const char*, int, ...)>("open64");
    return f(path, flags, mode);
}
int openat(int dirfd, const char* path, int flags, ...)
{
    va_list ap;
    va_start(ap, flags);
    const mode_t mode = modeArg(flags, ap);
    va_end(ap);
    if (writes(flags))
        check("openat", dirfd, path, !(flags & O_NOFOLLOW));
    static auto f = real<int (*)(int, const char*, int, ...)>("openat");
    return f(dirfd, path, flags, mode);
}
int openat64(int dirfd, const char* path, int flags, ...)
{
    va_list ap;
    va_start(ap, flags);
    const mode_t mode = modeArg(flags, ap);
    va_end(ap);
    if (writes(flags))
        check("openat64", dirfd, path, !(flags & O_NOFOLLOW));
    static auto f = real<int (*)(int, const char*, int, ...)>("openat64");
    return f(dirfd, path, flags, mode);
}
int creat(const char* path, mode_t mode)
{
    check("creat", AT_FDCWD, path);
    static auto f = real<int (*)(const char*, mode_t)>("creat");
    return f(path, mode);
}
int unlink(const char* path)
{
    check("unlink", AT_FDCWD, path, false);
    static auto f = real<int (*)(const char*)>("unlink");
    return f(path);
}
int unlinkat(int dirfd, const char* path, int flags)
{
    check("unlinkat", dirfd, path, false);
    static auto f = real<int (*)(int, const char*, int)>("unlinkat");
    return f(dirfd, path, flags);
}
int rmdir(const char* path)
{
    check("rmdir", AT_FDCWD, path, false);
    static auto f = real<int (*)(const char*)>("rmdir");
    return f(path);
}
int mkdir(const char* path, mode_t mode)
{
    check("mkdir", AT_FDCWD, path, false);
    static auto f = real<int (*)(const char*, mode_t)>("mkdir");
    return f(path, mode);
}
int mkdirat(int dirfd, const char* path, mode_t mode)
{
    check("mkdirat", dirfd, path, false);
    static auto f = real<int (*)(int, const char*, mode_t)>("mkdirat");
    return f(dirfd, path, mode);
}
int rename(const char* from, const char* to)
{
    check("rename", AT_FDCWD, from, false);
    check("rename", AT_FDCWD, to, false);
    static auto f = real<int (*)(const char*, const char*)>("rename");
    return f(from, to);
}
int renameat(int fromfd, const char* from, int tofd, const char* to)
{
    check("renameat", fromfd, from, false);
    check("renameat", tofd, to, false);
    static auto f = real<int (*)(int, const char*, int, const char*)>("renameat");
    return f(fromfd, from, tofd, to);
}
int renameat2(int fromfd, const char* from, int tofd, const char* to, unsigned flags)
{
    check("renameat2", fromfd, from, false);
    check("renameat2", tofd, to, false);
    static auto f = real<int (*)(int, const char*, int, const char*, unsigned)>("renameat2");
    return f(fromfd, from, tofd, to, flags);
}
int link(const char* from, const char* to)
{
    check("link", AT_FDCWD, to, false);
    static auto f = real<int (*)(const char*, const char*)>("link");
    return f(from, to);
}
int symlink(const char* target, const char* path)
{
    check("symlink", AT_FDCWD, path, false);
    static auto f = real<int (*)(const char*, const char*)>("symlink");
    return f(target, path);
}
int chmod(const char* path, mode_t mode)
{
    check("chmod", AT_FDCWD, path);
    static auto f = real<int (*)(const char*, mode_t)>("chmod");
    return f(path, mode);
}
int fchmodat(int dirfd, const char* path, mode_t mode, int flags)
{
    check("fchmodat", dirfd, path, !(flags & AT_SYMLINK_NOFOLLOW));
    static auto f = real<int (*)(int, const char*, mode_t, int)>("fchmodat");
    return f(dirfd, path, mode, flags);
}
int truncate(const char* path, off_t length)
{
    check("truncate", AT_FDCWD, path);
    static auto f = real<int (*)(const char*, off_t)>("truncate");
    return f(path, length);
}
int truncate64(const char* path, off_t length)
{
    check("truncate64", AT_FDCWD, path);
    static auto f = real<int (*)(const char*, off_t)>("truncate64");
    return f(path, length);
}
}

namespace vmk::fuzz
{
namespace
{
QString g_device;

void removeSandbox()
{
    g_armed = false;
    if (!g_root.empty())
        QDir(QString::fromStdString(g_root)).removeRecursively();
}
} // namespace

void FuzzSandbox::init()
{
    if (!g_root.empty())
        return;
    const char* parent = getenv("TMPDIR");
    std::string pattern = std::string(parent && *parent ? parent : "/tmp") + "/vmkfuzz-XXXXXX";
    if (!mkdtemp(pattern.data())) {
        perror("fuzz sandbox: mkdtemp");
        abort();
    }
    char real[PATH_MAX];
    if (!realpath(pattern.c_str(), real))
        abort();
    g_root = real;
    if (const char* allow = getenv("VMK_FUZZ_ALLOW"); allow && realpath(allow, real))
        g_fuzzerFolder = real;
    const QString root = QString::fromStdString(g_root);
    for (const char* sub : { "device", "tmp", "home", "data", "config" })
        QDir().mkpath(root + u'/' + QLatin1String(sub));
    // Everything the process would write on its own goes into the folder too.
    setenv("TMPDIR", (g_root + "/tmp").c_str(), 1);
    setenv("HOME", (g_root + "/home").c_str(), 1);
    setenv("XDG_DATA_HOME", (g_root + "/data").c_str(), 1);
    setenv("XDG_CONFIG_HOME", (g_root + "/config").c_str(), 1);
    setenv("QT_QPA_PLATFORM", "offscreen", 1);
    if (chdir((g_root + "/device").c_str()) != 0)
        abort();

    static int argc = 1;
    static char name[] = "vmkfuzz";
    static char* argv[] = { name, nullptr };
    static QCoreApplication app(argc, argv);

    g_device = root + QStringLiteral("/device");
    DriveMap::instance().setTestDrives({ { u'E', g_device } }, u'E');
    DriveMap::instance().setProgramFolder(g_device);
    G().ProgramFolder = QStringLiteral("E:\\");
    G().ProgramDrive = QStringLiteral("E:");
    G().SystemFolder = QStringLiteral("E:\\Windows");
    SetMessageAnswerer([](const QString&, int kind) { return kind == 0 ? 0 : 7; });
    atexit(removeSandbox);
    g_armed = true;
}

QString FuzzSandbox::device()
{
    return g_device;
}

void FuzzSandbox::writeDeviceFile(const QString& relative, const QByteArray& bytes)
{
    const QString path = g_device + u'/' + relative;
    QDir().mkpath(path.section(u'/', 0, -2));
    QFile f(path);
    if (!f.open(QIODevice::WriteOnly) || f.write(bytes) != bytes.size())
        abort();
}

void FuzzSandbox::clearDevice()
{
    QDir dir(g_device);
    for (const QString& name : dir.entryList(QDir::AllEntries | QDir::Hidden | QDir::System | QDir::NoDotAndDotDot)) {
        const QString path = g_device + u'/' + name;
        if (QFileInfo(path).isDir() && !QFileInfo(path).isSymLink())
            QDir(path).removeRecursively();
        else
            QFile::remove(path);
    }
}

} // namespace vmk::fuzz
