#include "TestSupport.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QTemporaryDir>

#include <gtest/gtest.h>

using vmk::test::readFile;
using vmk::test::runVmk;
using vmk::test::VmkRun;
using vmk::test::writeFile;

namespace
{
// A device folder with the program in VMK/, and a host folder beside it.
struct CliDevice {
    CliDevice()
    {
        root = QDir(dir.path()).canonicalPath();
        QDir().mkpath(root + "/dev/VMK");
        QDir().mkpath(root + "/host/Docs");
    }
    VmkRun run(QStringList args) const
    {
        return runVmk(QStringList { "quarantine" } + args
            + QStringList { "--device", root + "/dev", "--program-folder", root + "/dev/VMK" });
    }
    QString ledger() const { return root + "/dev/VMK/QFP.txt"; }
    QString item(const QString& name) const { return root + "/dev/Mis Documentos/Cuarentena/" + name; }

    QTemporaryDir dir;
    QString root;
};
} // namespace

TEST(VmkQuarantine, AddListRestoreAndPurge)
{
    CliDevice d;
    const QString docs = d.root + "/host/Docs";
    ASSERT_TRUE(writeFile(docs + "/run.exe", "MZ the original"));
    ASSERT_TRUE(writeFile(docs + "/q\"uote*.exe", "odd"));
    ASSERT_TRUE(writeFile(d.root + "/host/Gone/b.exe", "b"));
    ASSERT_TRUE(QFile::link(docs + "/run.exe", docs + "/link.exe"));

    VmkRun r = d.run({ "add", docs + "/run.exe", docs + "/q\"uote*.exe", d.root + "/host/Gone/b.exe" });
    EXPECT_EQ(r.code, 0) << r.err.toStdString();
    EXPECT_FALSE(QFileInfo::exists(docs + "/run.exe"));
    EXPECT_TRUE(QFileInfo(d.item("run.exe")).isFile());
    EXPECT_TRUE(QFileInfo(d.item("q\"uote*.exe")).isFile());
    // The link was the original's name until it went: now dangling, it is refused all the same.
    r = d.run({ "add", docs + "/link.exe" });
    EXPECT_EQ(r.code, 1);
    EXPECT_TRUE(r.err.contains("¡Un enlace no se pone en cuarentena!")) << r.err.toStdString();
    EXPECT_TRUE(QFileInfo(docs + "/link.exe").isSymLink());

    const QString host = "C:" + QString(d.root + "/host/").replace('/', '\\');
    r = d.run({ "list" });
    EXPECT_EQ(r.code, 0);
    EXPECT_EQ(r.out, "run.exe\t" + host + "Docs\\\nq\"uote*.exe\t" + host + "Docs\\\nb.exe\t" + host + "Gone\\\n");

    // A damaged line is named with its number, and the others are listed.
    QFile f(d.ledger());
    ASSERT_TRUE(f.open(QIODevice::Append));
    f.write("damaged line\r\n");
    f.close();
    r = d.run({ "list" });
    EXPECT_EQ(r.out.count('\n'), 3);
    EXPECT_TRUE(r.err.contains(d.ledger() + ":4: La línea no tiene separador \"|\"")) << r.err.toStdString();

    // Restore: the original bytes in their folder; a gone folder keeps its line and says so.
    QDir(d.root + "/host/Gone").removeRecursively();
    r = d.run({ "restore", "run.exe", "b.exe", "nothing.exe" });
    EXPECT_EQ(r.code, 1);
    EXPECT_EQ(readFile(docs + "/run.exe"), QByteArray("MZ the original"));
    EXPECT_FALSE(QFileInfo::exists(d.item("run.exe")));
    EXPECT_TRUE(QFileInfo::exists(d.item("b.exe")));
    EXPECT_TRUE(r.err.contains(host + "Gone\\: ¡La ruta de restauración no existe!")) << r.err.toStdString();
    EXPECT_TRUE(r.err.contains("nothing.exe: no está en el registro de cuarentena")) << r.err.toStdString();
    EXPECT_EQ(readFile(d.ledger()),
        ("q\"uote*.exe|" + host + "Docs\\\r\nb.exe|" + host + "Gone\\\r\ndamaged line\r\n").toUtf8());
    r = d.run({ "restore", "q\"uote*.exe" });
    EXPECT_EQ(r.code, 0) << r.err.toStdString();
    EXPECT_EQ(readFile(docs + "/q\"uote*.exe"), QByteArray("odd"));

    // The purge runs by the device's settings: items sealed today stay.
    r = d.run({ "purge" });
    EXPECT_EQ(r.code, 0) << r.err.toStdString();
    EXPECT_TRUE(r.out.contains("Removed files: 0"));
    EXPECT_TRUE(QFileInfo::exists(d.item("b.exe")));

    r = d.run({ "restore" });
    EXPECT_EQ(r.code, 2);
    r = d.run({ "list", "extra" });
    EXPECT_EQ(r.code, 2);
}
