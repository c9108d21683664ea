#include "TestSupport.h"

#include <QDir>
#include <QFile>
#include <QProcess>
#include <QRandomGenerator>
#include <QTemporaryDir>

#include <gtest/gtest.h>

#include <sys/mount.h>

using vmk::test::readFile;
using vmk::test::runVmk;
using vmk::test::VmkRun;
using vmk::test::writeFile;

namespace
{
// The message line of a failure: vmk, the command, the file as given, the words, the number.
bool says(const VmkRun& r, const QString& command, const QString& subject, const QString& words, int number = -1)
{
    const QString line = "vmk " + command + ": " + subject + ": " + words
        + (number >= 0 ? " (" + QString::number(number) + ")" : QString());
    return r.err.split('\n').contains(line);
}

// The names and methods of a zip file as Python's zipfile reads them, "name method" a line.
QStringList zipEntries(const QString& archive)
{
    QProcess p;
    p.start("python3",
        { "-c",
            "import sys, zipfile\n"
            "z = zipfile.ZipFile(sys.argv[1])\n"
            "assert z.testzip() is None\n"
            "for i in z.infolist(): print(i.filename, i.compress_type)",
            archive });
    p.waitForFinished(60000);
    if (p.exitCode() != 0)
        return { "python3 failed: " + QString::fromUtf8(p.readAllStandardError()) };
    return QString::fromUtf8(p.readAllStandardOutput()).split('\n', Qt::SkipEmptyParts);
}

QByteArray textOf(int lines)
{
    QByteArray bytes;
    for (int i = 0; i < lines; ++i)
        bytes += "línea " + QByteArray::number(i) + "\r\n";
    return bytes;
}
} // namespace

TEST(VmkStages, CommandsRoundTripWithOptionsAnywhere)
{
    QTemporaryDir dir;
    const QString src = dir.filePath("informe ñ.txt");
    const QByteArray bytes = textOf(5000);
    ASSERT_TRUE(writeFile(src, bytes));
    ASSERT_TRUE(writeFile(dir.filePath("pass"), "clave de prueba\n"));
    QDir().mkpath(dir.filePath("packed"));

    for (const char* method : { "deflate", "bzip2" }) {
        // The method option stands after the operands here.
        VmkRun r = runVmk({ "compress", src, dir.filePath("packed"), "--method", method });
        ASSERT_EQ(r.code, 0) << r.err.toStdString();
        EXPECT_EQ(zipEntries(dir.filePath("packed/informe ñ.txt")),
            QStringList { QString("informe ñ.txt %1").arg(QString(method) == "deflate" ? 8 : 12) });
        r = runVmk({ "list", dir.filePath("packed/informe ñ.txt") });
        EXPECT_EQ(r.code, 0);
        EXPECT_EQ(r.out, "informe ñ.txt\t" + QString::number(bytes.size()) + "\n");
        r = runVmk({ "decompress", dir.filePath("packed/informe ñ.txt"), dir.filePath(QString("out-%1").arg(method)) });
        ASSERT_EQ(r.code, 0) << r.err.toStdString();
        EXPECT_EQ(readFile(dir.filePath(QString("out-%1/informe ñ.txt").arg(method))), bytes);
    }

    for (const char* alg : { "0", "1" }) {
        VmkRun r
            = runVmk({ "encrypt", src, dir.filePath("s"), "--pass-file", dir.filePath("pass"), "--algorithm", alg });
        ASSERT_EQ(r.code, 0) << r.err.toStdString();
        // The pass phrase can also come on standard input.
        r = runVmk({ "decrypt", dir.filePath("s"), dir.filePath("d") }, "clave de prueba\n");
        ASSERT_EQ(r.code, 0) << r.err.toStdString();
        EXPECT_EQ(readFile(dir.filePath("d")), bytes);
        QFile::remove(dir.filePath("d"));
    }
    // "--" ends the options: a file may be named like one.
    ASSERT_TRUE(writeFile(dir.filePath("-x"), "guion"));
    VmkRun r
        = runVmk({ "encrypt", "--pass-file", dir.filePath("pass"), "--", dir.filePath("-x"), dir.filePath("--y") });
    EXPECT_EQ(r.code, 0) << r.err.toStdString();
    EXPECT_TRUE(QFile::exists(dir.filePath("--y")));
}

TEST(VmkStages, EachFailureNamesItsFileAndSaysWhatWentWrong)
{
    QTemporaryDir dir;
    const QString src = dir.filePath("informe.txt");
    ASSERT_TRUE(writeFile(src, textOf(100000))); // several chunks of the sealed format
    ASSERT_TRUE(writeFile(dir.filePath("pass"), "clave\n"));
    const QString sealed = dir.filePath("sealed");
    ASSERT_EQ(runVmk({ "encrypt", "--pass-file", dir.filePath("pass"), src, sealed }).code, 0);
    const QString out = dir.filePath("out");

    // A wrong pass phrase, a damaged file and a cut file read differently, and none leaves an output.
    VmkRun r = runVmk({ "decrypt", sealed, out }, "otra\n");
    EXPECT_EQ(r.code, 1);
    EXPECT_TRUE(
        says(r, "decrypt", sealed, "la contraseña no es la correcta (o la cabecera del archivo está dañada)", 5))
        << r.err.toStdString();
    QByteArray bytes = readFile(sealed);
    bytes[bytes.size() / 2] = static_cast<char>(bytes[bytes.size() / 2] ^ 0x20);
    ASSERT_TRUE(writeFile(dir.filePath("damaged"), bytes));
    r = runVmk({ "decrypt", "--pass-file", dir.filePath("pass"), dir.filePath("damaged"), out });
    EXPECT_EQ(r.code, 1);
    EXPECT_TRUE(says(r, "decrypt", dir.filePath("damaged"),
        "el archivo está dañado o cortado: sus datos no superan la comprobación", 6))
        << r.err.toStdString();
    // Cut inside the header, and inside the data (where the cut chunk fails its check).
    ASSERT_TRUE(writeFile(dir.filePath("cut"), readFile(sealed).left(100)));
    r = runVmk({ "decrypt", "--pass-file", dir.filePath("pass"), dir.filePath("cut"), out });
    EXPECT_EQ(r.code, 1);
    EXPECT_TRUE(says(r, "decrypt", dir.filePath("cut"), "el archivo está incompleto: termina antes de tiempo", 7))
        << r.err.toStdString();
    ASSERT_TRUE(writeFile(dir.filePath("cut"), readFile(sealed).left(150)));
    r = runVmk({ "decrypt", "--pass-file", dir.filePath("pass"), dir.filePath("cut"), out });
    EXPECT_TRUE(says(
        r, "decrypt", dir.filePath("cut"), "el archivo está dañado o cortado: sus datos no superan la comprobación", 6))
        << r.err.toStdString();
    r = runVmk({ "decrypt", "--pass-file", dir.filePath("pass"), src, out });
    EXPECT_TRUE(says(r, "decrypt", src, "no es un archivo encriptado", 3)) << r.err.toStdString();
    EXPECT_FALSE(QFile::exists(out));

    // Inputs that are missing, folders or unreadable; outputs whose folder is missing.
    r = runVmk({ "encrypt", "--pass-file", dir.filePath("pass"), dir.filePath("nada.txt"), out });
    EXPECT_EQ(r.code, 2);
    EXPECT_TRUE(says(r, "encrypt", dir.filePath("nada.txt"), "no existe")) << r.err.toStdString();
    r = runVmk({ "decrypt", "--pass-file", dir.filePath("pass"), dir.path(), out });
    EXPECT_EQ(r.code, 2);
    EXPECT_TRUE(says(r, "decrypt", dir.path(), "es una carpeta; se esperaba un archivo")) << r.err.toStdString();
    r = runVmk({ "list", dir.filePath("nada.zip") });
    EXPECT_TRUE(says(r, "list", dir.filePath("nada.zip"), "no existe")) << r.err.toStdString();
    r = runVmk({ "encrypt", "--pass-file", dir.filePath("nada"), src, out });
    EXPECT_TRUE(says(r, "encrypt", dir.filePath("nada"), "no existe")) << r.err.toStdString();
    r = runVmk({ "encrypt", "--pass-file", dir.filePath("pass"), src, dir.filePath("no/hay/out") });
    EXPECT_EQ(r.code, 2);
    EXPECT_TRUE(says(r, "encrypt", dir.filePath("no/hay/out"), "no existe su carpeta")) << r.err.toStdString();
    ASSERT_TRUE(writeFile(dir.filePath("secret.txt"), "x"));
    ASSERT_TRUE(QFile::setPermissions(dir.filePath("secret.txt"), {}));
    QFile::setPermissions(dir.path(), QFile::permissions(dir.path()) | QFile::ExeOther | QFile::ReadOther);
    r = runVmk({ "compress", dir.filePath("secret.txt"), dir.filePath("s.zip") }, {}, true);
    if (r.code == -1 || r.err.contains("setpriv"))
        ADD_FAILURE() << "setpriv could not drop the file rights: " << r.err.toStdString();
    EXPECT_EQ(r.code, 2);
    EXPECT_TRUE(says(r, "compress", dir.filePath("secret.txt"), "no se puede leer")) << r.err.toStdString();
    EXPECT_FALSE(QFile::exists(dir.filePath("s.zip")));

    // Archives that are not zip files.
    r = runVmk({ "decompress", src, dir.filePath("x") });
    EXPECT_EQ(r.code, 1);
    EXPECT_TRUE(says(r, "decompress", src, "no es un archivo zip o está dañado", 3)) << r.err.toStdString();
    r = runVmk({ "list", src });
    EXPECT_EQ(r.code, 1);
    EXPECT_TRUE(says(r, "list", src, "no es un archivo zip o está dañado", 3)) << r.err.toStdString();

    // The command line: an unknown option, a missing value, a bad value, a missing or extra operand.
    r = runVmk({ "compress", "--level", "9", src, dir.filePath("z") });
    EXPECT_EQ(r.code, 2);
    EXPECT_TRUE(says(r, "compress", "--level", "opción desconocida")) << r.err.toStdString();
    EXPECT_TRUE(r.err.contains("usage: vmk compress [--method deflate|bzip2] SOURCE... ARCHIVE"));
    r = runVmk({ "compress", src, dir.filePath("z"), "--method" });
    EXPECT_TRUE(says(r, "compress", "--method", "falta el valor de la opción")) << r.err.toStdString();
    r = runVmk({ "compress", "--method", "bwt", src, dir.filePath("z") });
    EXPECT_TRUE(says(r, "compress", "--method bwt", "valor no válido")) << r.err.toStdString();
    r = runVmk({ "encrypt", "--algorithm", "7", src, dir.filePath("e") });
    EXPECT_EQ(r.code, 2);
    EXPECT_TRUE(says(r, "encrypt", "--algorithm 7", "valor no válido")) << r.err.toStdString();
    r = runVmk({ "decompress", src });
    EXPECT_EQ(r.code, 2);
    EXPECT_TRUE(says(r, "decompress", "FOLDER", "falta este operando")) << r.err.toStdString();
    r = runVmk({ "list", src, "extra" });
    EXPECT_TRUE(says(r, "list", "extra", "sobra este operando")) << r.err.toStdString();
    r = runVmk({ "decrypt", sealed, out });
    EXPECT_EQ(r.code, 2);
    EXPECT_TRUE(r.err.contains("vmk decrypt: no se dio ninguna contraseña")) << r.err.toStdString();
    EXPECT_FALSE(QFile::exists(dir.filePath("e")));
    EXPECT_FALSE(QFile::exists(dir.filePath("z")));
}

TEST(VmkStages, CompressTakesWholeFoldersUnderTheirNames)
{
    QTemporaryDir dir;
    const QString tree = dir.filePath("Informes 2026");
    ASSERT_TRUE(writeFile(tree + "/a.txt", "alfa"));
    ASSERT_TRUE(writeFile(tree + "/sub/año/b.txt", textOf(2000)));
    ASSERT_TRUE(writeFile(tree + "/sub/vacío.txt", ""));
    ASSERT_TRUE(QDir().mkpath(tree + "/empty"));
    ASSERT_TRUE(writeFile(dir.filePath("suelto.txt"), "suelto"));
    // A link to a folder is not entered, as in every walk.
    ASSERT_TRUE(QFile::link(dir.path(), tree + "/sub/loop"));

    VmkRun r = runVmk({ "compress", "--method", "bzip2", tree, dir.filePath("tree.zip") });
    ASSERT_EQ(r.code, 0) << r.err.toStdString();
    QStringList entries = zipEntries(dir.filePath("tree.zip"));
    entries.sort();
    EXPECT_EQ(entries,
        QStringList({ "Informes 2026/a.txt 12", "Informes 2026/sub/año/b.txt 12", "Informes 2026/sub/vacío.txt 12" }));

    // Files and folders together; the folder given through a link of its own.
    ASSERT_TRUE(QFile::link(tree, dir.filePath("atajo")));
    r = runVmk({ "compress", dir.filePath("suelto.txt"), dir.filePath("atajo/sub"), dir.filePath("mixed.zip") });
    ASSERT_EQ(r.code, 0) << r.err.toStdString();
    entries = zipEntries(dir.filePath("mixed.zip"));
    entries.sort();
    EXPECT_EQ(entries, QStringList({ "sub/año/b.txt 8", "sub/vacío.txt 8", "suelto.txt 8" }));
    r = runVmk({ "decompress", dir.filePath("mixed.zip"), dir.filePath("back") });
    ASSERT_EQ(r.code, 0) << r.err.toStdString();
    EXPECT_EQ(readFile(dir.filePath("back/sub/año/b.txt")), textOf(2000));

    // A file in the tree that cannot be read is named with the reason; the rest goes in.
    ASSERT_TRUE(writeFile(tree + "/sub/secreto.txt", "x"));
    ASSERT_TRUE(QFile::setPermissions(tree + "/sub/secreto.txt", {}));
    for (const QString& d : { dir.path(), tree, tree + "/sub" })
        QFile::setPermissions(d, QFile::permissions(d) | QFile::ExeOther | QFile::ReadOther);
    r = runVmk({ "compress", tree, dir.filePath("partial.zip") }, {}, true);
    EXPECT_EQ(r.code, 2);
    EXPECT_TRUE(says(r, "compress", tree + "/sub/secreto.txt", "no se puede leer", 113)) << r.err.toStdString();
    EXPECT_EQ(zipEntries(dir.filePath("partial.zip")).size(), 3);

    // An entry that would leave the target folder is named and left out.
    QProcess py;
    py.start("python3",
        { "-c",
            "import sys, zipfile\n"
            "with zipfile.ZipFile(sys.argv[1], 'w') as z:\n"
            "    z.writestr('bien.txt', 'ok')\n"
            "    z.writestr('../fuera.txt', 'no')\n",
            dir.filePath("evil.zip") });
    ASSERT_TRUE(py.waitForFinished(60000) && py.exitCode() == 0);
    r = runVmk({ "decompress", dir.filePath("evil.zip"), dir.filePath("evil") });
    EXPECT_EQ(r.code, 1);
    EXPECT_TRUE(r.err.contains("fuera.txt: su nombre saldría de la carpeta de destino (120)\n")) << r.err.toStdString();
    EXPECT_TRUE(says(r, "decompress", dir.filePath("evil.zip"), "algunos archivos no se extrajeron", 7))
        << r.err.toStdString();
    EXPECT_TRUE(QFile::exists(dir.filePath("evil/bien.txt")));
    EXPECT_FALSE(QFile::exists(dir.filePath("fuera.txt")));

    // A folder with nothing in it makes no archive.
    r = runVmk({ "compress", tree + "/empty", dir.filePath("none.zip") });
    EXPECT_EQ(r.code, 2);
    EXPECT_TRUE(says(r, "compress", dir.filePath("none.zip"), "no hay ningún archivo que procesar", 1))
        << r.err.toStdString();
    EXPECT_FALSE(QFile::exists(dir.filePath("none.zip")));
}

TEST(VmkStages, AFullDiskIsToldAsSuchAndLeavesNoFile)
{
    QTemporaryDir dir;
    const QString full = dir.filePath("full");
    ASSERT_TRUE(QDir().mkpath(full));
    if (::mount("tmpfs", QFile::encodeName(full).constData(), "tmpfs", 0, "size=256k") != 0)
        GTEST_SKIP() << "a small tmpfs cannot be mounted here";
    // 1 MiB that no method can shrink below the disk's 256 KiB.
    QByteArray big(1 << 20, '\0');
    QRandomGenerator random(9);
    random.fillRange(reinterpret_cast<quint32*>(big.data()), big.size() / 4);
    ASSERT_TRUE(writeFile(dir.filePath("big.bin"), big));
    ASSERT_TRUE(writeFile(dir.filePath("pass"), "clave\n"));

    VmkRun r = runVmk({ "encrypt", "--pass-file", dir.filePath("pass"), dir.filePath("big.bin"), full + "/big.vmk" });
    EXPECT_EQ(r.code, 2);
    EXPECT_TRUE(says(r, "encrypt", full + "/big.vmk", "no queda espacio en el disco", 13)) << r.err.toStdString();
    r = runVmk({ "compress", "--method", "bzip2", dir.filePath("big.bin"), full + "/big.zip" });
    EXPECT_EQ(r.code, 2);
    EXPECT_TRUE(says(r, "compress", full + "/big.zip", "no queda espacio en el disco", 11)) << r.err.toStdString();
    EXPECT_EQ(QDir(full).entryList(QDir::AllEntries | QDir::Hidden | QDir::NoDotAndDotDot), QStringList());

    // The same disk with room: a small file goes in.
    ASSERT_TRUE(writeFile(dir.filePath("small.txt"), "cabe"));
    r = runVmk({ "encrypt", "--pass-file", dir.filePath("pass"), dir.filePath("small.txt"), full });
    EXPECT_EQ(r.code, 0) << r.err.toStdString();
    EXPECT_TRUE(QFile::exists(full + "/small.txt"));
    ::umount(QFile::encodeName(full).constData());
}
