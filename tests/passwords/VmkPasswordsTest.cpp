#include "TestSupport.h"

#include <QDir>
#include <QFile>
#include <QTemporaryDir>

#include <gtest/gtest.h>

using vmk::test::runVmk;
using vmk::test::VmkRun;

// vmk passwords over a program folder of its own, the owner's password from a file.
TEST(VmkPasswords, ListShowAddRmBehindTheOwnersPassword)
{
    QTemporaryDir dir;
    ASSERT_TRUE(dir.isValid());
    const QString program = dir.filePath("VMK");
    QDir().mkpath(program);
    const QString right = dir.filePath("right.txt");
    const QString wrong = dir.filePath("wrong.txt");
    ASSERT_TRUE(vmk::test::writeFile(right, "dueño 1\r\nsecond line ignored\n"));
    ASSERT_TRUE(vmk::test::writeFile(wrong, "dueño 2\n"));
    const QStringList where { "--program-folder", program, "--pass-file", right };

    // The first use chooses the owner's password; the store starts empty.
    VmkRun r = runVmk(QStringList { "passwords", "list" } + where);
    EXPECT_EQ(r.code, 0) << r.err.toStdString();
    EXPECT_EQ(r.out, "");
    EXPECT_TRUE(vmk::test::readFile(program + "/VMK.cnf").contains("OwnerPassCheck=argon2id$"));
    EXPECT_FALSE(vmk::test::readFile(program + "/VMK.cnf").contains("due"));

    r = runVmk(QStringList { "passwords", "add", "correo", "ana" } + where, "clave uno\n");
    EXPECT_EQ(r.code, 0) << r.err.toStdString();
    r = runVmk(QStringList { "passwords", "add", "banco", "béa" } + where, "clave \"dos\" \\ *\r\n");
    EXPECT_EQ(r.code, 0) << r.err.toStdString();
    r = runVmk(QStringList { "passwords", "add", "tercero", "" } + where, "");
    EXPECT_EQ(r.code, 0) << r.err.toStdString();
    r = runVmk(QStringList { "passwords", "list" } + where);
    EXPECT_EQ(r.code, 0);
    EXPECT_EQ(r.out, "1\tcorreo\tana\n2\tbanco\tbéa\n3\ttercero\t\n");
    EXPECT_FALSE(r.out.contains("clave"));
    r = runVmk(QStringList { "passwords", "show", "2" } + where);
    EXPECT_EQ(r.code, 0);
    EXPECT_EQ(r.out, "clave \"dos\" \\ *\n");

    // A wrong owner's password shows nothing and exits non-zero.
    for (const char* verb : { "list", "show" }) {
        QStringList args { "passwords", verb };
        if (QLatin1String(verb) == QLatin1String("show"))
            args << "1";
        r = runVmk(args + QStringList { "--program-folder", program, "--pass-file", wrong });
        EXPECT_EQ(r.code, 1) << verb;
        EXPECT_EQ(r.out, "") << verb;
        EXPECT_TRUE(r.err.contains("¡Contraseña incorrecta!")) << r.err.toStdString();
    }
    r = runVmk(QStringList { "passwords", "add", "x", "y", "--program-folder", program, "--pass-file", wrong }, "z\n");
    EXPECT_EQ(r.code, 1);

    // Bad record numbers and ";" fields are refused with the reason.
    for (const char* n : { "0", "4", "1.5", "dos" }) {
        r = runVmk(QStringList { "passwords", "show", n } + where);
        EXPECT_EQ(r.code, 2) << n;
        EXPECT_EQ(r.out, "") << n;
        EXPECT_TRUE(r.err.contains("no existe ese registro")) << r.err.toStdString();
    }
    r = runVmk(QStringList { "passwords", "add", "a;b", "u" } + where, "p\n");
    EXPECT_EQ(r.code, 2);
    EXPECT_TRUE(r.err.contains("a;b")) << r.err.toStdString();
    r = runVmk(QStringList { "passwords", "frob" } + where);
    EXPECT_EQ(r.code, 2);

    // rm N removes record N and saves as the screen's close does.
    r = runVmk(QStringList { "passwords", "rm", "1" } + where);
    EXPECT_EQ(r.code, 0) << r.err.toStdString();
    r = runVmk(QStringList { "passwords", "list" } + where);
    EXPECT_EQ(r.out, "1\tbanco\tbéa\n2\ttercero\t\n");
    EXPECT_EQ(vmk::test::readFile(program + "/PSWADMON.cnf").count("\r\n"), 2);

    // A damaged line is named on standard error and the rest is listed.
    QFile store(program + "/PSWADMON.cnf");
    ASSERT_TRUE(store.open(QIODevice::Append));
    store.write("00FF\r\n");
    store.close();
    r = runVmk(QStringList { "passwords", "list" } + where);
    EXPECT_EQ(r.code, 0);
    EXPECT_EQ(r.out, "1\tbanco\tbéa\n2\ttercero\t\n");
    EXPECT_TRUE(r.err.contains("PSWADMON.cnf")) << r.err.toStdString();

    // Without --pass-file and without a terminal the password cannot be asked.
    r = runVmk({ "passwords", "list", "--program-folder", program });
    EXPECT_EQ(r.code, 2);
    EXPECT_EQ(r.out, "");
}
