// The device as scripts/make-device.sh lays it out carries everything its
// programs load beyond the C library, so it starts on a host that has nothing
// else: checked with the real dynamic loader, and by running the programs in a
// root that holds only the C library, /proc, /dev and the device.
#include "TestSupport.h"

#include <QCryptographicHash>
#include <QDir>
#include <QDirIterator>
#include <QFile>
#include <QFileInfo>
#include <QHash>
#include <QProcess>
#include <QRegularExpression>
#include <QTemporaryDir>

#include <gtest/gtest.h>

#include <unistd.h>

namespace
{

const QString kLoader = QStringLiteral("/lib64/ld-linux-x86-64.so.2");
const QStringList kPrograms = { QStringLiteral("Vormak.exe"), QStringLiteral("vmk"), QStringLiteral("avupdate.exe"),
    QStringLiteral("eject.exe"), QStringLiteral("Unlock.exe"), QStringLiteral("Delete.exe") };
// What every host brings: the C library's own objects.
const QStringList kCLibrary
    = { QStringLiteral("libc.so.6"), QStringLiteral("libm.so.6"), QStringLiteral("libpthread.so.0"),
          QStringLiteral("libdl.so.2"), QStringLiteral("librt.so.1"), QStringLiteral("libresolv.so.2") };

bool isCLibrary(const QString& soname)
{
    return kCLibrary.contains(soname) || soname.startsWith(QLatin1String("ld-linux"));
}

struct ProgramRun {
    int code = -1;
    QString out;
    QString err;
};

// The environment of the programs under test: no LD_LIBRARY_PATH, so that
// only the run paths and the host's default folders decide.
QProcessEnvironment cleanEnvironment()
{
    QProcessEnvironment env = QProcessEnvironment::systemEnvironment();
    env.remove(QStringLiteral("LD_LIBRARY_PATH"));
    env.remove(QStringLiteral("LD_PRELOAD"));
    return env;
}

ProgramRun run(const QString& program, const QStringList& args, const QProcessEnvironment& env = cleanEnvironment(),
    int timeoutMs = 120000)
{
    QProcess p;
    p.setProcessEnvironment(env);
    p.start(program, args);
    ProgramRun r;
    if (!p.waitForStarted() || !p.waitForFinished(timeoutMs)) {
        p.kill();
        p.waitForFinished();
        r.err = QStringLiteral("did not run to its end: ") + program;
        return r;
    }
    r.code = p.exitStatus() == QProcess::NormalExit ? p.exitCode() : -1;
    r.out = QString::fromUtf8(p.readAllStandardOutput());
    r.err = QString::fromUtf8(p.readAllStandardError());
    return r;
}

// Runs one of the project's layout scripts on `dest`: make-demo-device.sh for
// the demo device (the program part any drive gets, the folders of the default
// settings and the demo's update source), make-device.sh for a user's drive.
ProgramRun layOut(const QString& dest, const QString& script = QStringLiteral("make-demo-device.sh"))
{
    QProcessEnvironment env = cleanEnvironment();
    env.insert(QStringLiteral("VMK_BUILD"), QFileInfo(vmk::test::binDir()).absolutePath());
    // The test data lives in tests/data of the source tree.
    const QString path
        = QFileInfo(vmk::test::testDataDir() + QStringLiteral("/../../scripts/") + script).absoluteFilePath();
    return run(QStringLiteral("bash"), { path, dest }, env);
}

// The libraries `object` loads, as the real loader resolves them, that are
// neither the C library's nor inside `folder`: "name => where" for each.
QStringList resolvedOutside(const QString& object, const QString& folder)
{
    const ProgramRun r = run(kLoader, { QStringLiteral("--list"), object });
    if (r.code != 0)
        return { QStringLiteral("the loader refused it: ") + r.err.trimmed() };
    QStringList outside;
    static const QRegularExpression line(QStringLiteral("^\\s*(\\S+) => (.*?)(?: \\(0x[0-9a-f]+\\))?$"));
    const QString root = QDir(folder).canonicalPath() + QLatin1Char('/');
    for (const QString& text : r.out.split(QLatin1Char('\n'))) {
        const QRegularExpressionMatch m = line.match(text);
        if (!m.hasMatch())
            continue;
        const QString soname = m.captured(1);
        const QString where = m.captured(2);
        if (isCLibrary(soname))
            continue;
        if (!QFileInfo(where).canonicalFilePath().startsWith(root))
            outside << soname + QStringLiteral(" => ") + where;
    }
    return outside;
}

QStringList filesUnder(const QString& folder, const QStringList& masks = {})
{
    QStringList files;
    QDirIterator it(folder, masks, QDir::Files, QDirIterator::Subdirectories);
    while (it.hasNext())
        files << it.next();
    return files;
}

QByteArray sha256(const QString& path)
{
    QFile f(path);
    QCryptographicHash hash(QCryptographicHash::Sha256);
    if (f.open(QIODevice::ReadOnly))
        hash.addData(&f);
    return hash.result();
}

// A program of the device started from its own folder with the panel shown
// offscreen and closed at once; the system folder goes to `dataHome`.
QProcessEnvironment panelEnvironment(const QString& home)
{
    QProcessEnvironment env = cleanEnvironment();
    env.insert(QStringLiteral("QT_QPA_PLATFORM"), QStringLiteral("offscreen"));
    env.insert(QStringLiteral("VMK_EXIT_WHEN_SHOWN"), QStringLiteral("1"));
    env.insert(QStringLiteral("HOME"), home);
    env.insert(QStringLiteral("XDG_DATA_HOME"), home + QStringLiteral("/data"));
    env.insert(QStringLiteral("XDG_CONFIG_HOME"), home + QStringLiteral("/config"));
    env.insert(QStringLiteral("XDG_CACHE_HOME"), home + QStringLiteral("/cache"));
    return env;
}

} // namespace

TEST(DeviceLayout, EveryProgramAndPluginLoadsOnlyFromTheDevice)
{
    QTemporaryDir tmp;
    ASSERT_TRUE(tmp.isValid());
    const QString dev = tmp.filePath(QStringLiteral("device"));
    const ProgramRun laid = layOut(dev);
    ASSERT_EQ(laid.code, 0) << laid.out.toStdString() << laid.err.toStdString();

    for (const QString& program : kPrograms) {
        const QString path = dev + QLatin1Char('/') + program;
        ASSERT_TRUE(QFileInfo(path).isExecutable()) << program.toStdString();
        const QStringList outside = resolvedOutside(path, dev + QStringLiteral("/lib"));
        EXPECT_TRUE(outside.isEmpty()) << program.toStdString() << ": "
                                       << outside.join(QLatin1String("; ")).toStdString();
    }
    const QStringList plugins = filesUnder(dev + QStringLiteral("/plugins"), { QStringLiteral("*.so") });
    for (const QString& needed :
        { QStringLiteral("platforms/libqxcb.so"), QStringLiteral("platforms/libqoffscreen.so") })
        EXPECT_TRUE(plugins.contains(dev + QStringLiteral("/plugins/") + needed)) << needed.toStdString();
    EXPECT_FALSE(filesUnder(dev + QStringLiteral("/plugins/imageformats")).isEmpty());
    for (const QString& plugin : plugins) {
        const QStringList outside = resolvedOutside(plugin, dev + QStringLiteral("/lib"));
        EXPECT_TRUE(outside.isEmpty()) << plugin.toStdString() << ": "
                                       << outside.join(QLatin1String("; ")).toStdString();
    }
    EXPECT_TRUE(QFileInfo(dev + QStringLiteral("/qt.conf")).isFile());
    EXPECT_TRUE(QFileInfo(dev + QStringLiteral("/fonts/fonts.conf")).isFile());
    EXPECT_TRUE(QFileInfo(dev + QStringLiteral("/fonts/wqy-microhei.ttc")).isFile());
    EXPECT_TRUE(QFileInfo(dev + QStringLiteral("/fonts/DejaVuSans.ttf")).isFile());

    // The budget: libraries, plugins and fonts under 120 MB, no library twice,
    // no C library object, no debug sections anywhere on the device.
    qint64 bytes = 0;
    QHash<QByteArray, QString> seen;
    QStringList elfFiles = filesUnder(dev + QStringLiteral("/plugins"), { QStringLiteral("*.so") });
    for (const QString& folder : { QStringLiteral("lib"), QStringLiteral("plugins"), QStringLiteral("fonts") }) {
        for (const QString& file : filesUnder(dev + QLatin1Char('/') + folder)) {
            bytes += QFileInfo(file).size();
            const QByteArray digest = sha256(file);
            EXPECT_FALSE(seen.contains(digest))
                << file.toStdString() << " repeats " << seen.value(digest).toStdString();
            seen.insert(digest, file);
        }
    }
    for (const QString& lib : filesUnder(dev + QStringLiteral("/lib"), { QStringLiteral("*.so*") })) {
        EXPECT_FALSE(isCLibrary(QFileInfo(lib).fileName())) << lib.toStdString();
        elfFiles << lib;
    }
    EXPECT_LT(bytes, qint64(120) * 1024 * 1024);
    for (const QString& program : kPrograms)
        elfFiles << dev + QLatin1Char('/') + program;
    for (const QString& file : elfFiles) {
        const ProgramRun sections
            = run(QStringLiteral("readelf"), { QStringLiteral("-S"), QStringLiteral("-W"), file });
        EXPECT_EQ(sections.code, 0) << file.toStdString();
        EXPECT_FALSE(sections.out.contains(QLatin1String(".debug_"))) << file.toStdString() << " keeps debug sections";
    }

    // eject.exe runs from the host's system folder after the device is gone:
    // a start of the program puts there what it loads, found there alone.
    const QString home = tmp.filePath(QStringLiteral("home"));
    const ProgramRun panel
        = run(dev + QStringLiteral("/Vormak.exe"), { QStringLiteral("--device"), dev }, panelEnvironment(home));
    ASSERT_EQ(panel.code, 0) << panel.out.toStdString() << panel.err.toStdString();
    EXPECT_TRUE(panel.out.contains(QLatin1String("panel shown"))) << panel.out.toStdString();
    const QString system = home + QStringLiteral("/data/Vormak/system");
    ASSERT_TRUE(QFileInfo(system + QStringLiteral("/eject.exe")).isExecutable());
    QStringList ejectObjects = { system + QStringLiteral("/eject.exe") };
    ejectObjects << filesUnder(system + QStringLiteral("/plugins"), { QStringLiteral("*.so") });
    EXPECT_GE(ejectObjects.size(), 3);
    for (const QString& object : ejectObjects) {
        const QStringList outside = resolvedOutside(object, system + QStringLiteral("/lib"));
        EXPECT_TRUE(outside.isEmpty()) << object.toStdString() << ": "
                                       << outside.join(QLatin1String("; ")).toStdString();
    }
    EXPECT_TRUE(QFileInfo(system + QStringLiteral("/qt.conf")).isFile());
    EXPECT_TRUE(QFileInfo(system + QStringLiteral("/fonts/fonts.conf")).isFile());
}

TEST(DeviceLayout, LayingOutAUsersDriveAgainKeepsWhatIsNotOurs)
{
    QTemporaryDir tmp;
    ASSERT_TRUE(tmp.isValid());
    const QString drive = tmp.filePath(QStringLiteral("stick"));
    const QString userScript = QStringLiteral("make-device.sh");
    ProgramRun laid = layOut(drive, userScript);
    ASSERT_EQ(laid.code, 0) << laid.err.toStdString();
    EXPECT_TRUE(QFileInfo(drive + QStringLiteral("/Mis Documentos/Cuarentena")).isDir());
    EXPECT_TRUE(QFileInfo(drive + QStringLiteral("/avupdate.conf")).isFile());

    // The owner's files, an updated signature set and a library that the last
    // layout carried and this one does not; a damaged list naming a file
    // outside the program part.
    ASSERT_TRUE(vmk::test::writeFile(drive + QStringLiteral("/notes.txt"), "mine"));
    ASSERT_TRUE(vmk::test::writeFile(drive + QStringLiteral("/sigs/daily.cvd"), "newer set"));
    ASSERT_TRUE(vmk::test::writeFile(drive + QStringLiteral("/avupdate.conf"), "source=ftp://mirror\r\n"));
    ASSERT_TRUE(vmk::test::writeFile(drive + QStringLiteral("/lib/libold.so.1"), "old library"));
    ASSERT_TRUE(vmk::test::writeFile(tmp.filePath(QStringLiteral("outside.txt")), "outside"));
    QFile list(drive + QStringLiteral("/lib/runtime.list"));
    ASSERT_TRUE(list.open(QIODevice::Append));
    list.write("lib/libold.so.1\nlib/../../outside.txt\n../outside.txt\nnotes.txt\n");
    list.close();
    laid = layOut(drive, userScript);
    ASSERT_EQ(laid.code, 0) << laid.err.toStdString();
    EXPECT_FALSE(QFileInfo::exists(drive + QStringLiteral("/lib/libold.so.1")));
    EXPECT_EQ(vmk::test::readFile(drive + QStringLiteral("/notes.txt")), QByteArray("mine"));
    EXPECT_EQ(vmk::test::readFile(tmp.filePath(QStringLiteral("outside.txt"))), QByteArray("outside"));
    EXPECT_EQ(vmk::test::readFile(drive + QStringLiteral("/sigs/daily.cvd")), QByteArray("newer set"));
    EXPECT_EQ(vmk::test::readFile(drive + QStringLiteral("/avupdate.conf")), QByteArray("source=ftp://mirror\r\n"));
    EXPECT_TRUE(QFileInfo(drive + QStringLiteral("/lib/libQt6Core.so.6")).isFile());

    // A lib/ folder that Vormak did not lay out is the owner's: refused, untouched.
    const QString other = tmp.filePath(QStringLiteral("other"));
    ASSERT_TRUE(vmk::test::writeFile(other + QStringLiteral("/lib/mine.so"), "owner's"));
    laid = layOut(other, userScript);
    EXPECT_EQ(laid.code, 1);
    EXPECT_TRUE(laid.err.contains(other + QStringLiteral("/lib exists and was not laid out by Vormak")))
        << laid.err.toStdString();
    EXPECT_EQ(vmk::test::readFile(other + QStringLiteral("/lib/mine.so")), QByteArray("owner's"));
    EXPECT_FALSE(QFileInfo::exists(other + QStringLiteral("/Vormak.exe")));
}

TEST(DeviceLayout, ScanAndPanelRunInARootWithOnlyTheCLibrary)
{
#ifdef VMK_SANITIZED
    GTEST_SKIP() << "a sanitized build's programs carry the sanitizer runtime and stop on its leak reports from "
                    "the host's libraries; the device is laid out from the plain build";
#endif
    if (::geteuid() != 0)
        GTEST_SKIP() << "needs root to build a root with chroot and mount /proc and /dev in it (CI runs as root)";
    QTemporaryDir tmp;
    ASSERT_TRUE(tmp.isValid());
    const QString root = QDir(tmp.filePath(QStringLiteral("root"))).absolutePath();
    for (const QString& folder : { QStringLiteral("lib64"), QStringLiteral("lib/x86_64-linux-gnu"),
             QStringLiteral("proc"), QStringLiteral("dev"), QStringLiteral("tmp") })
        ASSERT_TRUE(QDir().mkpath(root + QLatin1Char('/') + folder));
    // The C library, and nothing else of the host.
    ASSERT_TRUE(QFile::copy(QFileInfo(kLoader).canonicalFilePath(), root + kLoader));
    for (const QString& lib : kCLibrary) {
        ASSERT_TRUE(QFile::copy(QFileInfo(QStringLiteral("/lib/x86_64-linux-gnu/") + lib).canonicalFilePath(),
            root + QStringLiteral("/lib/x86_64-linux-gnu/") + lib))
            << lib.toStdString();
    }
    QFile::setPermissions(root + kLoader, QFileDevice::ReadOwner | QFileDevice::ExeOwner);
    const ProgramRun laid = layOut(root + QStringLiteral("/device"));
    ASSERT_EQ(laid.code, 0) << laid.out.toStdString() << laid.err.toStdString();
    ASSERT_TRUE(QDir().mkpath(root + QStringLiteral("/device/threats")));
    ASSERT_TRUE(vmk::test::writeFile(root + QStringLiteral("/device/threats/clean.txt"), "nothing here\n"));
    ASSERT_TRUE(QFile::copy(
        QStringLiteral("/usr/share/clamav-testfiles/clam.exe"), root + QStringLiteral("/device/threats/clam.exe")));

    // /proc and /dev are mounted in a mount namespace of the command's own, so
    // they vanish with it whichever way it ends; the host never sees them.
    const QString inRoot = QStringLiteral(
        "set -e; r=$1; shift; mount -t proc proc \"$r/proc\"; mount --bind /dev \"$r/dev\"; "
        "exec env -i HOME=/tmp XDG_DATA_HOME=/tmp/data XDG_CONFIG_HOME=/tmp/config XDG_CACHE_HOME=/tmp/cache "
        "TMPDIR=/tmp QT_QPA_PLATFORM=offscreen VMK_EXIT_WHEN_SHOWN=1 QT_LOGGING_RULES=qt.text.font.db=true "
        "/usr/sbin/chroot \"$r\" \"$@\"");
    const auto chrooted = [&](const QStringList& command) {
        QStringList args = { QStringLiteral("--mount"), QStringLiteral("--propagation"), QStringLiteral("private"),
            QStringLiteral("--"), QStringLiteral("sh"), QStringLiteral("-c"), inRoot, QStringLiteral("sh"), root };
        args << command;
        return run(QStringLiteral("unshare"), args);
    };

    const ProgramRun scan
        = chrooted({ QStringLiteral("/device/vmk"), QStringLiteral("scan"), QStringLiteral("/device/threats") });
    EXPECT_EQ(scan.code, 1) << scan.out.toStdString() << scan.err.toStdString();
    EXPECT_TRUE(
        scan.out.contains(QLatin1String("/device/threats/clam.exe: ")) && scan.out.contains(QLatin1String(" FOUND")))
        << scan.out.toStdString() << scan.err.toStdString();
    EXPECT_TRUE(scan.out.contains(QLatin1String("/device/threats/clean.txt: OK"))) << scan.out.toStdString();

    const ProgramRun panel
        = chrooted({ QStringLiteral("/device/Vormak.exe"), QStringLiteral("--device"), QStringLiteral("/device") });
    EXPECT_EQ(panel.code, 0) << panel.out.toStdString() << panel.err.toStdString();
    EXPECT_TRUE(panel.out.contains(QLatin1String("panel shown"))) << panel.out.toStdString() << panel.err.toStdString();
    // The device's own fonts were found: fontconfig had a configuration, and
    // the Latin and the CJK family reached Qt's font list.
    EXPECT_FALSE(panel.err.contains(QLatin1String("Fontconfig error"))) << panel.err.toStdString();
    EXPECT_TRUE(panel.err.contains(QLatin1String("Adding font: familyName \"DejaVu Sans\"")))
        << panel.err.toStdString();
    EXPECT_TRUE(panel.err.contains(QLatin1String("Adding font: familyName \"WenQuanYi Micro Hei\"")))
        << panel.err.toStdString();

    // With the device gone, the copy of eject.exe in the system folder still
    // starts its window's platform and answers a wrong argument with its usage.
    ASSERT_TRUE(QDir(root + QStringLiteral("/device")).removeRecursively());
    const ProgramRun eject = chrooted({ QStringLiteral("/tmp/data/Vormak/system/eject.exe") });
    EXPECT_EQ(eject.code, 2) << eject.out.toStdString() << eject.err.toStdString();
    EXPECT_TRUE(eject.err.contains(QLatin1String("usage: eject.exe"))) << eject.err.toStdString();

    // Nothing of the namespace is left mounted on the host.
    QFile mounts(QStringLiteral("/proc/self/mountinfo"));
    ASSERT_TRUE(mounts.open(QIODevice::ReadOnly));
    EXPECT_FALSE(QString::fromUtf8(mounts.readAll()).contains(root));
}
