#include "EngineTestSupport.h"
#include "TestSupport.h"

#include <QDir>
#include <QDirIterator>
#include <QFile>
#include <QProcess>
#include <QRegularExpression>
#include <QStandardPaths>
#include <QTemporaryDir>

#include <gtest/gtest.h>

using vmk::test::readFile;
using vmk::test::runVmk;
using vmk::test::VmkRun;
using vmk::test::writeFile;

namespace
{
QMap<QString, QByteArray> filesBelow(const QString& folder)
{
    QMap<QString, QByteArray> out;
    QDirIterator it(folder, QDir::Files | QDir::Hidden, QDirIterator::Subdirectories);
    while (it.hasNext()) {
        const QString p = it.next();
        out.insert(QDir(folder).relativeFilePath(p), readFile(p));
    }
    return out;
}

QByteArray block(int size, char c)
{
    QByteArray b(size, c);
    for (int i = 0; i < size; i += 97)
        b[i] = static_cast<char>(i);
    return b;
}

class VmkTransfer : public ::testing::Test
{
protected:
    void SetUp() override
    {
        ASSERT_TRUE(writeFile(p("pass"), "clave de prueba\n"));
        ASSERT_TRUE(writeFile(p("Set/a.txt"), "alpha"));
        ASSERT_TRUE(writeFile(p("Set/sub/b.bin"), block(50000, 'b')));
        ASSERT_TRUE(writeFile(p("Set/sub/deeper/c.txt"), "gamma"));
        ASSERT_TRUE(writeFile(p("one.txt"), "one"));
    }
    QString p(const QString& rel) const { return m_dir.filePath(rel); }
    QTemporaryDir m_dir;
};
} // namespace

TEST_F(VmkTransfer, CopyMoveAndEachStageOfAFileAndANestedFolder)
{
    const auto set = filesBelow(p("Set"));
    VmkRun r = runVmk({ "copy", p("Set"), p("one.txt"), p("Out/new") });
    ASSERT_EQ(r.code, 0) << r.err.toStdString();
    EXPECT_EQ(filesBelow(p("Out/new/Set")), set);
    EXPECT_EQ(readFile(p("Out/new/one.txt")), "one");
    EXPECT_EQ(r.err, "") << "no progress when standard error is no terminal";

    r = runVmk({ "copy", "--compress", p("Set"), p("one.txt"), p("Packed") });
    ASSERT_EQ(r.code, 0) << r.err.toStdString();
    EXPECT_EQ(filesBelow(p("Packed/Set")).keys(), set.keys());
    EXPECT_TRUE(readFile(p("Packed/one.txt")).startsWith("PK"));
    r = runVmk({ "move", "--decompress", p("Packed/Set"), p("Packed/one.txt"), p("Unpacked") });
    ASSERT_EQ(r.code, 0) << r.err.toStdString();
    EXPECT_EQ(filesBelow(p("Unpacked/Set")), set);
    EXPECT_EQ(readFile(p("Unpacked/one.txt")), "one");
    EXPECT_FALSE(QFile::exists(p("Packed/Set")));
    EXPECT_FALSE(QFile::exists(p("Packed/one.txt")));

    r = runVmk({ "copy", "--encrypt", "--pass-file", p("pass"), p("Set"), p("one.txt"), p("Sealed") });
    ASSERT_EQ(r.code, 0) << r.err.toStdString();
    EXPECT_NE(readFile(p("Sealed/Set/a.txt")), "alpha");
    // The pass phrase may come on standard input too.
    r = runVmk({ "move", "--decrypt", p("Sealed/Set"), p("Sealed/one.txt"), p("Opened") }, "clave de prueba\n");
    ASSERT_EQ(r.code, 0) << r.err.toStdString();
    EXPECT_EQ(filesBelow(p("Opened/Set")), set);
    EXPECT_EQ(readFile(p("Opened/one.txt")), "one");
    EXPECT_FALSE(QFile::exists(p("Sealed/Set")));

    r = runVmk({ "move", p("Opened/Set"), p("Moved") });
    ASSERT_EQ(r.code, 0) << r.err.toStdString();
    EXPECT_EQ(filesBelow(p("Moved/Set")), set);
    EXPECT_FALSE(QFile::exists(p("Opened/Set")));
}

TEST_F(VmkTransfer, ExistingTargetsAreKeptUnlessOverwriteAndAWrongPassPhraseLeavesNothing)
{
    ASSERT_EQ(runVmk({ "copy", p("Set"), p("one.txt"), p("Out") }).code, 0);
    ASSERT_TRUE(writeFile(p("Set/sub/deeper/c.txt"), "changed"));
    ASSERT_TRUE(writeFile(p("one.txt"), "changed"));
    VmkRun r = runVmk({ "move", p("Set"), p("one.txt"), p("Out") });
    EXPECT_EQ(r.code, 1);
    for (const QString& kept : { p("Out/Set/sub/deeper/c.txt"), p("Out/Set/a.txt"), p("Out/one.txt") })
        EXPECT_TRUE(r.err.contains("vmk move: " + kept + ": ya existe; se conserva (--overwrite lo reemplaza)\n"))
            << r.err.toStdString();
    EXPECT_EQ(readFile(p("Out/one.txt")), "one");
    EXPECT_EQ(readFile(p("one.txt")), "changed") << "a kept target keeps its source on a move";
    EXPECT_TRUE(QFile::exists(p("Set/sub/deeper/c.txt")));

    r = runVmk({ "move", "--overwrite", p("Set"), p("one.txt"), p("Out") });
    EXPECT_EQ(r.code, 0) << r.err.toStdString();
    EXPECT_EQ(readFile(p("Out/Set/sub/deeper/c.txt")), "changed");
    EXPECT_EQ(readFile(p("Out/one.txt")), "changed");
    EXPECT_FALSE(QFile::exists(p("Set")));
    EXPECT_FALSE(QFile::exists(p("one.txt")));

    ASSERT_EQ(runVmk({ "copy", "--encrypt", "--pass-file", p("pass"), p("Out/one.txt"), p("Sealed") }).code, 0);
    r = runVmk({ "move", "--decrypt", p("Sealed/one.txt"), p("Opened") }, "otra\n");
    EXPECT_EQ(r.code, 2);
    EXPECT_TRUE(r.err.contains("vmk move: " + p("Sealed/one.txt") + ": no se movió\n")) << r.err.toStdString();
    EXPECT_EQ(QDir(p("Opened")).entryList(QDir::AllEntries | QDir::Hidden | QDir::NoDotAndDotDot), QStringList());
    EXPECT_TRUE(QFile::exists(p("Sealed/one.txt")));

    // Usage faults.
    r = runVmk({ "copy", "--compress", "--encrypt", p("Out/one.txt"), p("X") });
    EXPECT_EQ(r.code, 2);
    EXPECT_TRUE(r.err.contains("elija una sola etapa")) << r.err.toStdString();
    r = runVmk({ "copy", "--db", p("."), p("Out/one.txt"), p("X") });
    EXPECT_EQ(r.code, 2);
    EXPECT_TRUE(r.err.contains("solo con --scan")) << r.err.toStdString();
    r = runVmk({ "copy", p("nada"), p("X") });
    EXPECT_EQ(r.code, 2);
    EXPECT_TRUE(r.err.contains(p("nada") + ": no existe")) << r.err.toStdString();
    r = runVmk({ "copy", p("Out/one.txt"), p("pass") });
    EXPECT_EQ(r.code, 2);
    EXPECT_TRUE(r.err.contains(p("pass") + ": no es una carpeta")) << r.err.toStdString();
    r = runVmk({ "copy", p("Out"), p("Out/Set") });
    EXPECT_EQ(r.code, 2);
    EXPECT_TRUE(r.err.contains(QString::fromUtf8("¡No se puede copiar o mover una carpeta dentro de sí misma!")))
        << r.err.toStdString();
    EXPECT_FALSE(QFile::exists(p("X")));
}

TEST_F(VmkTransfer, ScanLeavesAnInfectedFileOutAndNamesIt)
{
    ASSERT_TRUE(writeFile(p("Set/sub/eicar.com"), vmk::test::eicar()));
    VmkRun r = runVmk({ "move", "--scan", p("Set"), p("Clean") });
    EXPECT_EQ(r.code, 1) << r.err.toStdString();
    EXPECT_EQ(r.out, p("Set/sub/eicar.com") + ": infectado; se deja fuera\n");
    EXPECT_FALSE(QFile::exists(p("Clean/Set/sub/eicar.com")));
    EXPECT_EQ(filesBelow(p("Clean/Set")).size(), 3);
    EXPECT_EQ(filesBelow(p("Set")).keys(), QStringList { "sub/eicar.com" }) << "only the infected file stays";

    // A sealed threat is caught once opened, and no opened copy is left.
    r = runVmk({ "copy", "--encrypt", "--pass-file", p("pass"), p("Set/sub/eicar.com"), p("Sealed") });
    ASSERT_EQ(r.code, 0) << r.err.toStdString();
    r = runVmk({ "copy", "--decrypt", "--scan", "--db", vmk::test::builtSignatureFolder(), "--pass-file", p("pass"),
        p("Sealed/eicar.com"), p("Opened") });
    EXPECT_EQ(r.code, 1) << r.err.toStdString();
    EXPECT_EQ(r.out, p("Sealed/eicar.com") + ": infectado; se deja fuera\n");
    EXPECT_EQ(QDir(p("Opened")).entryList(QDir::AllEntries | QDir::Hidden | QDir::NoDotAndDotDot), QStringList());
}

TEST_F(VmkTransfer, ProgressIsDrawnOnlyOnATerminal)
{
    if (QStandardPaths::findExecutable("script").isEmpty())
        GTEST_SKIP() << "script (util-linux) is needed for a terminal";
    // script gives the command a terminal for its standard output and error.
    QProcess proc;
    proc.start("script",
        { "-qec", "'" + vmk::test::binDir() + "/vmk' copy '" + p("Set") + "' '" + p("Out") + "'", "/dev/null" });
    ASSERT_TRUE(proc.waitForFinished(60000));
    const QString shown = QString::fromUtf8(proc.readAllStandardOutput());
    EXPECT_EQ(proc.exitCode(), 0) << shown.toStdString();
    EXPECT_TRUE(shown.contains(QRegularExpression("\\[[123]/3\\] +[0-9]+%  (a.txt|b.bin|c.txt)")))
        << shown.toStdString();
    EXPECT_TRUE(shown.endsWith("\r\x1b[K")) << "the line is cleared at the end";
    EXPECT_EQ(filesBelow(p("Out/Set")).size(), 3);
}
