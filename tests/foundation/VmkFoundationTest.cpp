// The command-line tool as a whole (help, version, the command line) and its
// foundation commands, run as the real vmk binary.
#include "TestSupport.h"

#include <QDir>
#include <QFile>
#include <QRegularExpression>
#include <QTemporaryDir>

#include <gtest/gtest.h>

using vmk::test::runVmk;
using vmk::test::VmkRun;
using vmk::test::writeFile;

namespace
{
const QStringList kCommands { "compress", "decompress", "decrypt", "drives", "encrypt", "engine", "list", "scan",
    "seal", "settings", "translate", "unseal", "update" };
}

TEST(VmkCommandLine, HelpOfEveryCommandVersionAndExitCodes)
{
    VmkRun r = runVmk({ "--help" });
    EXPECT_EQ(r.code, 0);
    for (const QString& c : kCommands)
        EXPECT_TRUE(r.out.contains(QRegularExpression("\n  " + c + " +\\w"))) << c.toStdString();
    EXPECT_TRUE(r.out.contains("exit codes:"));
    EXPECT_TRUE(r.out.contains("  0  done; nothing found"));
    EXPECT_TRUE(r.out.contains("  1  threats found, or the data refused"));
    EXPECT_TRUE(r.out.contains("  2  error:"));

    for (const QString& c : kCommands) {
        // --help wins wherever it stands, and whatever else is on the line.
        for (const QStringList& args :
            { QStringList { c, "--help" }, QStringList { c, "x", "-h", "--bogus" }, QStringList { "help", c } }) {
            r = runVmk(args);
            EXPECT_EQ(r.code, 0) << args.join(' ').toStdString();
            EXPECT_TRUE(r.out.startsWith("usage: vmk " + c)) << r.out.toStdString();
            EXPECT_TRUE(r.out.contains("exit codes: 0 done")) << r.out.toStdString();
            EXPECT_TRUE(r.err.isEmpty()) << r.err.toStdString();
        }
    }
    r = runVmk({ "compress", "--help" });
    EXPECT_TRUE(r.out.contains("--method METHOD    deflate (the default) or bzip2"));

    // The version is the project's.
    QFile cmake(vmk::test::testDataDir() + "/../../CMakeLists.txt");
    ASSERT_TRUE(cmake.open(QIODevice::ReadOnly)) << cmake.fileName().toStdString();
    const auto m = QRegularExpression("project\\(Vormak VERSION ([0-9.]+)").match(QString::fromUtf8(cmake.readAll()));
    ASSERT_TRUE(m.hasMatch());
    r = runVmk({ "--version" });
    EXPECT_EQ(r.code, 0);
    EXPECT_EQ(r.out, "vmk " + m.captured(1) + "\n");

    // No command, an unknown command: the list on standard error, exit 2.
    r = runVmk({});
    EXPECT_EQ(r.code, 2);
    EXPECT_TRUE(r.err.contains("usage: vmk COMMAND"));
    r = runVmk({ "analizar", "x" });
    EXPECT_EQ(r.code, 2);
    EXPECT_TRUE(r.err.startsWith("vmk: analizar: orden desconocida\n")) << r.err.toStdString();
    EXPECT_TRUE(r.err.contains("\ncommands:\n"));
}

TEST(VmkCommandLine, SealUnsealAndTranslateReportTheirOperands)
{
    VmkRun r = runVmk({ "seal", "\\Mis Documentos\\" });
    ASSERT_EQ(r.code, 0) << r.err.toStdString();
    const QString hex = r.out.trimmed();
    r = runVmk({ "unseal", hex });
    EXPECT_EQ(r.code, 0);
    EXPECT_EQ(r.out, "\\Mis Documentos\\\n");
    r = runVmk({ "unseal", "ABCDEF0123" });
    EXPECT_EQ(r.code, 1);
    EXPECT_EQ(r.err, "vmk unseal: ABCDEF0123: el valor sellado está dañado o no es de este programa (2)\n");
    r = runVmk({ "seal" });
    EXPECT_EQ(r.code, 2);
    EXPECT_TRUE(r.err.startsWith("vmk seal: TEXT: falta este operando\n")) << r.err.toStdString();
    r = runVmk({ "translate", "9", "Aceptar" });
    EXPECT_EQ(r.code, 2);
    EXPECT_TRUE(r.err.startsWith("vmk translate: 9: valor no válido\n")) << r.err.toStdString();
    // The messages themselves speak the language asked for.
    r = runVmk({ "translate", "1", "no queda espacio en el disco" });
    EXPECT_EQ(r.out, "the disk is full\n");
    r = runVmk({ "settings", "--program-folder" });
    EXPECT_TRUE(r.err.startsWith("vmk settings: --program-folder: falta el valor de la opción\n"))
        << r.err.toStdString();
}

TEST(VmkCommandLine, AProgramFolderReachedThroughALinkLiesOnItsDevice)
{
    QTemporaryDir device, elsewhere;
    const QString program = device.filePath("VMK");
    ASSERT_TRUE(QDir().mkpath(program));
    for (const char* folder :
        { "Documentos Comprimidos", "Documentos Encriptados", "Mis Documentos/Respaldos", "Mis Documentos/Cuarentena" })
        ASSERT_TRUE(QDir().mkpath(device.filePath(folder)));
    const QString link = elsewhere.filePath("atajo");
    ASSERT_TRUE(QFile::link(program, link));

    // The program folder through the link is the device's VMK folder: its folders are all there.
    VmkRun r = runVmk({ "settings", "--device", device.path(), "--program-folder", link });
    ASSERT_EQ(r.code, 0) << r.err.toStdString();
    EXPECT_TRUE(r.err.isEmpty()) << r.err.toStdString();
    EXPECT_TRUE(r.out.contains("#QuarenteneFolder=\\Mis Documentos\\Cuarentena\\\n"));
    EXPECT_TRUE(QFile::exists(program + "/VMK.cnf"));

    // A folder that is missing is named with its key; options may follow in any order.
    ASSERT_TRUE(QDir(device.filePath("Mis Documentos/Cuarentena")).removeRecursively());
    r = runVmk({ "settings", "--program-folder", link, "--device", link + "/.." });
    EXPECT_EQ(r.code, 0);
    const QStringList lines = r.err.split('\n', Qt::SkipEmptyParts);
    ASSERT_EQ(lines.size(), 1) << r.err.toStdString();
    EXPECT_TRUE(lines[0].startsWith("vmk settings: #QuarenteneFolder: ")) << lines[0].toStdString();
    EXPECT_TRUE(lines[0].endsWith(":\\Mis Documentos\\Cuarentena\\: no existe")) << lines[0].toStdString();

    // The drive list shows the device at its real folder.
    r = runVmk({ "drives", "--device", link + "/..", "--program-folder", link });
    EXPECT_EQ(r.code, 0);
    EXPECT_TRUE(r.out.contains("\t" + device.path() + "\t")) << r.out.toStdString();
    EXPECT_TRUE(r.out.contains("\tdevice\n")) << r.out.toStdString();
    r = runVmk({ "drives", "--device", device.filePath("nada") });
    EXPECT_EQ(r.code, 2);
    EXPECT_EQ(r.err, "vmk drives: " + device.filePath("nada") + ": no existe\n");
}
