#include "EngineTestSupport.h"
#include "TestSupport.h"
#include "components/engine/Engine.h"
#include "foundation/Settings.h"
#include "platform/DriveMap.h"
#include "scanner/Antivir.h"

#include <QDir>
#include <QFile>
#include <QProcess>
#include <QProcessEnvironment>
#include <QTemporaryDir>

#include <gtest/gtest.h>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

using namespace vmk;
using namespace vmk::test;

namespace
{

struct CliRun {
    int exit = -1;
    QStringList lines;
};

CliRun vmkScan(const QStringList& args)
{
    QProcess p;
    p.start(binDir() + "/vmk", QStringList { "scan" } + args);
    EXPECT_TRUE(p.waitForFinished(120000));
    CliRun r;
    r.exit = p.exitCode();
    r.lines = QString::fromUtf8(p.readAllStandardOutput()).split('\n', Qt::SkipEmptyParts);
    return r;
}

} // namespace

TEST(VmkScan, WalksDepthFirstSkipsJunctionsAndKeepsOrderWithJobs)
{
    QTemporaryDir dir;
    const QString root = dir.filePath("tree");
    ASSERT_TRUE(writeFile(root + "/a/clean1.txt", "fine"));
    ASSERT_TRUE(writeFile(root + "/a/b/eicar.com", eicar()));
    ASSERT_TRUE(makeZip(root + "/c/pack.zip", { { "x/clam.exe", clamExe() }, { "ok.txt", "fine" } }));
    for (int i = 0; i < 30; ++i)
        ASSERT_TRUE(writeFile(root + QString("/d/f%1.txt").arg(i), QByteArray(1000 + i, 'x')));
    // A directory symlink back up the tree would loop a naive walk.
    ASSERT_TRUE(QFile::link(root, root + "/a/loop"));

    CliRun one = vmkScan({ root });
    EXPECT_EQ(one.exit, 1);
    EXPECT_TRUE(one.lines.contains(root + "/a/b/eicar.com: Test:Vmk.Eicar-1 FOUND"));
    EXPECT_TRUE(one.lines.contains(root + "/a/b/eicar.com: Test:Vmk.Eicar-2 FOUND"));
    EXPECT_TRUE(one.lines.contains(root + "/c/pack.zip --> x/clam.exe: Test:Vmk.ClamExe-1 FOUND"));
    EXPECT_TRUE(one.lines.contains(root + "/a/clean1.txt: OK"));
    EXPECT_TRUE(one.lines.contains("Scanned files: 33"));
    EXPECT_TRUE(one.lines.contains("Clean files: 31"));
    EXPECT_TRUE(one.lines.contains("Infected files: 2"));
    EXPECT_TRUE(one.lines.contains("Alerts: 3"));
    EXPECT_TRUE(one.lines.contains("Not processed: 0"));
    for (const QString& l : one.lines)
        EXPECT_FALSE(l.contains("/loop/")) << l.toStdString();
    // Depth-first: everything under a/ comes before c/ and d/.
    EXPECT_LT(one.lines.indexOf(root + "/a/clean1.txt: OK"), one.lines.indexOf(root + "/d/f0.txt: OK"));

    CliRun two = vmkScan({ "--jobs", "2", root });
    EXPECT_EQ(two.exit, 1);
    EXPECT_EQ(two.lines, one.lines) << "several threads report in the walk's order";

    CliRun noArch = vmkScan({ "--no-archive", root + "/c/pack.zip" });
    EXPECT_EQ(noArch.exit, 0);
    EXPECT_TRUE(noArch.lines.contains(root + "/c/pack.zip: OK"));

    CliRun errors = vmkScan({ root + "/missing.bin", root + "/a/clean1.txt" });
    EXPECT_EQ(errors.exit, 2);
    EXPECT_TRUE(errors.lines.contains(root + "/missing.bin: no existe (2)"));

    CliRun mixed = vmkScan({ root + "/missing.bin", root + "/a/b/eicar.com" });
    EXPECT_EQ(mixed.exit, 1) << "a find outweighs errors";

    // Another signature folder.
    QTemporaryDir db;
    ASSERT_TRUE(
        writeFile(db.filePath("only.ndb"), "Vmk.Test.Only-1:0:*:" + QByteArray("VMK-ONLY-IN-THIS-DB").toHex() + "\n"));
    ASSERT_TRUE(writeFile(dir.filePath("marked.txt"), "..VMK-ONLY-IN-THIS-DB.."));
    CliRun other = vmkScan({ "--db", db.path(), dir.filePath("marked.txt"), root + "/a/b/eicar.com" });
    EXPECT_EQ(other.exit, 1);
    EXPECT_TRUE(other.lines.contains(dir.filePath("marked.txt") + ": Test:Vmk.Only-1 FOUND"));
    EXPECT_TRUE(other.lines.contains(root + "/a/b/eicar.com: OK"));
    EXPECT_EQ(vmkScan({ "--jobs", "0", root }).exit, 2);
    EXPECT_EQ(vmkScan({}).exit, 2);
}

TEST(VmkScan, FailuresNameTheFileOrFolderAndOptionsGoAnywhere)
{
    QTemporaryDir dir;
    const QString root = dir.filePath("tree");
    ASSERT_TRUE(writeFile(root + "/eicar.com", eicar()));
    ASSERT_TRUE(writeFile(root + "/sub/ok.txt", "fine"));
    ASSERT_TRUE(QDir().mkpath(dir.filePath("empty-sigs")));

    // A missing signature folder is named, and told apart from one without signatures.
    VmkRun r = runVmk({ "scan", root, "--db", dir.filePath("sigs") });
    EXPECT_EQ(r.code, 2);
    EXPECT_EQ(r.err, "vmk scan: " + dir.filePath("sigs") + ": no existe la carpeta de firmas (7)\n");
    r = runVmk({ "engine", "--db", dir.filePath("empty-sigs") });
    EXPECT_EQ(r.code, 2);
    EXPECT_EQ(r.err,
        "vmk engine: " + dir.filePath("empty-sigs") + ": no hay archivos de firmas en la carpeta de firmas (7)\n");

    // The files that could not be scanned, each with its reason.
    ASSERT_TRUE(QProcess::execute("mkfifo", { dir.filePath("pipe") }) == 0);
    ASSERT_TRUE(writeFile(dir.filePath("secret.bin"), "x"));
    ASSERT_TRUE(QFile::setPermissions(dir.filePath("secret.bin"), {}));
    QFile::setPermissions(dir.path(), QFile::permissions(dir.path()) | QFile::ExeOther | QFile::ReadOther);
    r = runVmk({ "scan", dir.filePath("nada.bin"), dir.filePath("pipe"), dir.filePath("secret.bin"), "--jobs", "2" },
        {}, true);
    EXPECT_EQ(r.code, 2);
    const QStringList lines = r.out.split(u'\n');
    EXPECT_TRUE(lines.contains(dir.filePath("nada.bin") + ": no existe (2)")) << r.out.toStdString();
    EXPECT_TRUE(lines.contains(dir.filePath("pipe") + ": Tubería con nombre (FIFO): no se analiza"))
        << r.out.toStdString();
    EXPECT_TRUE(lines.contains(dir.filePath("secret.bin") + ": no se puede leer (5)")) << r.out.toStdString();
    EXPECT_TRUE(lines.contains("Not processed: 3"));

    // A folder given through a link is walked as its real self; the option after the operand.
    ASSERT_TRUE(QFile::link(root, dir.filePath("atajo")));
    r = runVmk({ "scan", dir.filePath("atajo"), "--no-archive" });
    EXPECT_EQ(r.code, 1);
    EXPECT_TRUE(r.out.split(u'\n').contains(root + "/sub/ok.txt: OK")) << r.out.toStdString();
    r = runVmk({ "scan", "--jobs", "x", root });
    EXPECT_EQ(r.code, 2);
    EXPECT_TRUE(r.err.startsWith("vmk scan: --jobs x: valor no válido\n")) << r.err.toStdString();
    r = runVmk({ "scan", "--no-archive=1", root });
    EXPECT_TRUE(r.err.startsWith("vmk scan: --no-archive: esta opción no lleva valor\n")) << r.err.toStdString();
    r = runVmk({ "scan" });
    EXPECT_TRUE(r.err.startsWith("vmk scan: PATH: falta este operando\n")) << r.err.toStdString();
    r = runVmk({ "update", "extra" });
    EXPECT_TRUE(r.err.startsWith("vmk update: extra: sobra este operando\n")) << r.err.toStdString();
}

TEST(VmkScan, ReachesNamesThatAreNotUtf8AndReportsWhatItCannotRead)
{
    QTemporaryDir dir;
    const QString root = dir.filePath("stick");
    ASSERT_TRUE(QDir().mkpath(root));
    // Latin-1 names from an old stick: a folder and a file, the threat inside.
    const QByteArray folder = QFile::encodeName(root) + "/Fotos ni\xf1os";
    ASSERT_EQ(::mkdir(folder.constData(), 0755), 0);
    const QByteArray threat = folder + "/caf\xe9.txt";
    const int fd = ::open(threat.constData(), O_WRONLY | O_CREAT | O_TRUNC, 0644);
    ASSERT_GE(fd, 0);
    const QByteArray body = eicar();
    ASSERT_EQ(::write(fd, body.constData(), static_cast<size_t>(body.size())), body.size());
    ::close(fd);
    ASSERT_TRUE(QFile::link(root + "/gone", root + "/dangling"));
    ASSERT_EQ(::mkfifo(QFile::encodeName(root + "/pipe").constData(), 0600), 0);

    QProcess p;
    p.start(binDir() + "/vmk", { "scan", root });
    ASSERT_TRUE(p.waitForFinished(120000));
    EXPECT_EQ(p.exitCode(), 1);
    const QByteArray output = p.readAllStandardOutput();
    const QList<QByteArray> lines = output.split('\n');
    EXPECT_TRUE(lines.contains(threat + ": Test:Vmk.Eicar-1 FOUND")) << output.constData();
    EXPECT_TRUE(lines.contains(QFile::encodeName(root) + "/dangling: Enlace roto: su destino no existe"))
        << output.constData();
    EXPECT_TRUE(lines.contains(QFile::encodeName(root)
        + "/pipe: Tuber\xc3\xad"
          "a con nombre (FIFO): no se analiza"))
        << output.constData();
    EXPECT_TRUE(lines.contains("Infected files: 1")) << output.constData();
    EXPECT_TRUE(lines.contains("Not processed: 2")) << output.constData();
    removeTree(root);
}

TEST(VmkEngine, PrintsValues52And55)
{
    QProcess p;
    p.start(binDir() + "/vmk", { "engine" });
    ASSERT_TRUE(p.waitForFinished(60000));
    EXPECT_EQ(p.exitCode(), 0);
    const QString text = QString::fromUtf8(p.readAllStandardOutput());
    EXPECT_TRUE(text.contains("52: vormak 1 (")) << text.toStdString();
    EXPECT_TRUE(text.contains("55: 11")) << text.toStdString();
}

TEST(AntivirLogical, DriveLetterPathsAndTheSettingsVariables)
{
    QTemporaryDir dev;
    ASSERT_TRUE(writeFile(dev.filePath("Sub/Eicar.com"), eicar()));
    DriveMap::instance().setTestDrives({ { 'E', dev.path() } }, 'E');
    ASSERT_EQ(loadBuiltEngine(), 0);

    // The path is resolved case-insensitively and alerts keep the logical text.
    FileScanResult r = ScanOneFile("E:\\SUB\\EICAR.COM");
    ASSERT_EQ(r.ReturnCode, 0);
    ASSERT_EQ(r.AlertCount, 2);
    EXPECT_EQ(r.Rows.at(0).Object, "E:\\SUB\\EICAR.COM");
    EXPECT_NE(ScanOneFile("Q:\\nothing").ReturnCode, 0) << "an unknown letter is not processed";

    // PushEngineOptions reads the settings variables.
    ASSERT_TRUE(makeZip(dev.filePath("z.zip"), { { "clam.exe", clamExe() } }));
    S().ArchiveScan = "0";
    S().ArchiveMaxSize = "0";
    S().ArchiveMaxRec = "0";
    S().HeurLevel = "1";
    PushEngineOptions();
    EXPECT_EQ(ScanOneFile("E:\\z.zip").AlertCount, 0);
    S().ArchiveScan = "1";
    PushEngineOptions();
    EXPECT_EQ(ScanOneFile("E:\\z.zip").AlertCount, 1);

    engine::UnLoadEngine();
    DriveMap::instance().resetToHost();
}

TEST(VmkUpdate, RunsTheUpdaterAsThePanelDoesAndJudgesTheLogOnTheDeviceRoot)
{
    // A program folder in a subfolder of the device: the log goes to the device's
    // root, where the panel reads it, not beside the program.
    QTemporaryDir device;
    const QString folder = device.filePath("VMK");
    ASSERT_TRUE(QDir().mkpath(folder + "/sigs"));
    ASSERT_TRUE(QDir().mkpath(folder + "/updates"));
    for (const char* program : { "vmk", "avupdate.exe" }) {
        ASSERT_TRUE(QFile::copy(binDir() + "/" + program, folder + "/" + program));
        QFile::setPermissions(folder + "/" + program, QFile::permissions(binDir() + "/" + program));
    }
    const QByteArray container = readFile(builtSignatureFolder() + "/vormak.cud");
    ASSERT_TRUE(writeFile(folder + "/sigs/vormak.cud", container));
    ASSERT_TRUE(writeFile(folder + "/updates/vormak.cud", container));
    ASSERT_TRUE(writeFile(folder + "/avupdate.conf", "source=updates\nfiles=vormak.cud extra.ndb\n"));
    const QString log = device.filePath("UPDLOG.TXT");

    auto update = [&](const QStringList& args = {}) {
        QProcess p;
        QProcessEnvironment env = QProcessEnvironment::systemEnvironment();
        env.insert(DriveMap::kInheritedVariable, "C\t/\nE\t" + device.path() + "\n*\tE");
        p.setProcessEnvironment(env);
        p.start(folder + "/vmk", QStringList { "update" } + args);
        EXPECT_TRUE(p.waitForFinished(120000));
        CliRun r;
        r.exit = p.exitCode();
        r.lines = QString::fromUtf8(p.readAllStandardOutput()).split('\n', Qt::SkipEmptyParts);
        return r;
    };

    CliRun r = update();
    EXPECT_EQ(r.exit, 0);
    EXPECT_EQ(r.lines.value(1), QString::fromUtf8("¡Nada que actualizar!"));
    EXPECT_TRUE(QFile::exists(log));
    EXPECT_FALSE(QFile::exists(folder + "/UPDLOG.TXT"));

    ASSERT_TRUE(
        writeFile(folder + "/updates/extra.ndb", "Vmk.Test.Extra-1:0:*:" + QByteArray("VMK-EXTRA").toHex() + "\n"));
    r = update();
    EXPECT_EQ(r.exit, 0);
    EXPECT_TRUE(r.lines.value(0).contains("Update finished"));
    EXPECT_EQ(readFile(folder + "/sigs/extra.ndb"), readFile(folder + "/updates/extra.ndb"));

    ASSERT_TRUE(writeFile(folder + "/updates/extra.ndb", "this is no signature line\n"));
    r = update();
    EXPECT_EQ(r.exit, 1);
    EXPECT_EQ(r.lines.value(1), QString::fromUtf8("¡Error al actualizar!"));
    EXPECT_NE(readFile(folder + "/sigs/extra.ndb"), readFile(folder + "/updates/extra.ndb"));

    // Without the updater there is no log of this run: the last run's is not judged.
    ASSERT_TRUE(QFile::remove(folder + "/avupdate.exe"));
    r = update();
    EXPECT_EQ(r.exit, 2);
    EXPECT_FALSE(QFile::exists(log));
    EXPECT_EQ(update({ "extra" }).exit, 2);
    EXPECT_EQ(r.lines, QStringList()) << "the failure goes to standard error";
}
