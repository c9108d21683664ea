#include "TestSupport.h"

#include <QDir>
#include <QFile>
#include <QProcess>
#include <QTemporaryDir>

#include <gtest/gtest.h>

using vmk::test::readFile;
using vmk::test::writeFile;

namespace
{
struct Result {
    int code;
    QString out, err;
};

Result runVmk(const QStringList& args, const QByteArray& input = {})
{
    QProcess p;
    p.start(vmk::test::binDir() + "/vmk", args);
    p.write(input);
    p.closeWriteChannel();
    p.waitForFinished(120000);
    return { p.exitStatus() == QProcess::NormalExit ? p.exitCode() : -1, QString::fromUtf8(p.readAllStandardOutput()),
        QString::fromUtf8(p.readAllStandardError()) };
}
} // namespace

TEST(VmkStages, CommandsRoundTripAndReportFailures)
{
    QTemporaryDir dir;
    const QString src = dir.filePath("informe ñ.txt");
    QByteArray bytes;
    for (int i = 0; i < 5000; ++i)
        bytes += "línea " + QByteArray::number(i) + "\r\n";
    ASSERT_TRUE(writeFile(src, bytes));
    ASSERT_TRUE(writeFile(dir.filePath("pass"), "clave de prueba\n"));
    QDir().mkpath(dir.filePath("packed"));

    for (const char* method : { "0", "1", "2" }) {
        Result r = runVmk({ "compress", "--method", method, src, dir.filePath("packed") });
        ASSERT_EQ(r.code, 0) << r.err.toStdString();
        r = runVmk({ "list", dir.filePath("packed/informe ñ.txt") });
        EXPECT_EQ(r.code, 0);
        EXPECT_EQ(r.out, "informe ñ.txt\t" + QString::number(bytes.size()) + "\n");
        r = runVmk({ "decompress", dir.filePath("packed/informe ñ.txt"), dir.filePath(QString("out%1").arg(method)) });
        ASSERT_EQ(r.code, 0) << r.err.toStdString();
        EXPECT_EQ(readFile(dir.filePath(QString("out%1/informe ñ.txt").arg(method))), bytes);
    }

    for (const char* alg : { "0", "1" }) {
        Result r
            = runVmk({ "encrypt", "--algorithm", alg, "--pass-file", dir.filePath("pass"), src, dir.filePath("s") });
        ASSERT_EQ(r.code, 0) << r.err.toStdString();
        // The pass phrase can also come on standard input.
        r = runVmk({ "decrypt", dir.filePath("s"), dir.filePath("d") }, "clave de prueba\n");
        ASSERT_EQ(r.code, 0) << r.err.toStdString();
        EXPECT_EQ(readFile(dir.filePath("d")), bytes);
        QFile::remove(dir.filePath("d"));
    }

    Result r = runVmk({ "decrypt", dir.filePath("s"), dir.filePath("d") }, "wrong\n");
    EXPECT_NE(r.code, 0);
    EXPECT_EQ(r.err.trimmed(), "¡Error de decriptado!\n(5)");
    EXPECT_FALSE(QFile::exists(dir.filePath("d")));

    r = runVmk({ "decompress", src, dir.filePath("x") });
    EXPECT_NE(r.code, 0);
    EXPECT_EQ(r.err.trimmed(), "¡Error de descompresión! (3)");
    r = runVmk({ "list", src });
    EXPECT_NE(r.code, 0);
    r = runVmk({ "encrypt", "--algorithm", "7", src, dir.filePath("e") });
    EXPECT_EQ(r.code, 2) << "an algorithm outside 0|1 is a usage error";
    r = runVmk({ "compress", "--method" });
    EXPECT_EQ(r.code, 2);
    r = runVmk({ "encrypt", "--pass-file", dir.filePath("nope"), src, dir.filePath("e") });
    EXPECT_NE(r.code, 0);
    EXPECT_FALSE(QFile::exists(dir.filePath("e")));
}
