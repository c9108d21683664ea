// The server panel against real servers on 127.0.0.1 only: pyftpdlib for plain
// FTP (with its ways to misbehave), vsftpd with a certificate of its own for FTPS.
#include "FtpServers.h"
#include "TestSupport.h"

#include "backup/ui/ArchivesPanel.h"
#include "backup/ui/BackTree.h"
#include "backup/ui/FormNewEditS.h"
#include "backup/ui/ServerPanel.h"
#include "components/ftp/Fingerprint.h"
#include "filemanager/FileTreeModel.h"
#include "filemanager/ui/SmartTree.h"
#include "foundation/Globals.h"
#include "foundation/Settings.h"
#include "platform/DriveMap.h"
#include "platform/Pump.h"

#include <QAction>
#include <QApplication>
#include <QDir>
#include <QFileDialog>
#include <QFileInfo>
#include <QLabel>
#include <QLineEdit>
#include <QMenu>
#include <QProgressBar>
#include <QPushButton>
#include <QTemporaryDir>
#include <QTest>
#include <QTimer>
#include <QToolButton>
#include <QTreeWidget>

#include <gtest/gtest.h>

using vmk::ServerPanel;
using vmk::test::randomBytes;
using vmk::test::readFile;
using vmk::test::writeFile;

namespace
{
// A temporary folder as the device T:, the program folder at its root (VMK.cnf
// lies in it), the settings at their defaults, the backups folder made.
class ServerPanelTest : public ::testing::Test
{
protected:
    void SetUp() override
    {
        ASSERT_TRUE(m_dir.isValid());
        m_device = QDir(m_dir.path()).canonicalPath() + QStringLiteral("/device");
        m_remote = QDir(m_dir.path()).canonicalPath() + QStringLiteral("/remote");
        QDir().mkpath(m_device);
        QDir().mkpath(m_remote);
        vmk::DriveMap::instance().setTestDrives({ { u'C', QStringLiteral("/") }, { u'T', m_device } }, u'T');
        vmk::G() = vmk::Globals {};
        vmk::G().ProgramFolder = QStringLiteral("T:\\");
        vmk::G().ProgramDrive = QStringLiteral("T:");
        vmk::S() = vmk::SettingsValues {};
        vmk::ReadSettings();
        ASSERT_EQ(vmk::S().BackupsFolder, QStringLiteral("\\Mis Documentos\\Respaldos\\"));
        m_backups = m_device + QStringLiteral("/Mis Documentos/Respaldos");
        QDir().mkpath(m_backups);
    }
    void TearDown() override
    {
        vmk::SetPumpHook({});
        vmk::DriveMap::instance().resetToHost();
        vmk::G() = vmk::Globals {};
        vmk::S() = vmk::SettingsValues {};
    }
    void useServer(const QString& server, const QString& user, const QString& password)
    {
        vmk::S().FtpServer = server;
        vmk::S().FtpUserName = user;
        vmk::S().FtpPassword = password;
    }

    QTemporaryDir m_dir;
    QString m_device, m_remote, m_backups;
};

QStringList namesIn(const QString& folder)
{
    QStringList names
        = QDir(folder).entryList(QDir::AllEntries | QDir::NoDotAndDotDot | QDir::Hidden | QDir::System, QDir::Name);
    return names;
}

// The nodes as "name" for a file and "name/" for a folder, each checked against its Tag.
QStringList nodesOf(const ServerPanel& panel)
{
    QStringList nodes;
    const QTreeWidget* tree = panel.SmarServer();
    for (int i = 0; i < tree->topLevelItemCount(); ++i) {
        const QTreeWidgetItem* n = tree->topLevelItem(i);
        const int tag = n->data(0, ServerPanel::kTagRole).toInt();
        EXPECT_EQ(n->data(0, ServerPanel::kKeyRole).toString(), n->text(0));
        EXPECT_EQ(tag == 1, !n->icon(0).isNull()) << n->text(0).toStdString();
        nodes << n->text(0) + (tag == 1 ? QStringLiteral("/") : QString());
    }
    return nodes;
}

QTreeWidgetItem* nodeNamed(const ServerPanel& panel, const QString& name)
{
    const QList<QTreeWidgetItem*> found = panel.SmarServer()->findItems(name, Qt::MatchExactly);
    return found.isEmpty() ? nullptr : found.first();
}

void select(ServerPanel& panel, const QString& name)
{
    QTreeWidgetItem* n = nodeNamed(panel, name);
    ASSERT_NE(n, nullptr) << name.toStdString();
    panel.SmarServer()->setCurrentItem(n);
    panel.SmarServer_Click(n);
}

// Answers the modal FormNewEditS as soon as it shows.
void answerNewFolder(const QString& name)
{
    QTimer::singleShot(0, [name] {
        auto* form = qobject_cast<vmk::FormNewEditS*>(QApplication::activeModalWidget());
        ASSERT_NE(form, nullptr);
        EXPECT_TRUE(form->Text1()->text().isEmpty());
        form->Text1()->setText(name);
        form->CMDacept_Click();
    });
}
} // namespace

// Connect, listing, into a folder and up, upload then download of the same bytes,
// new folder, delete file (asked) and folder; a second "Servidor" only lists.
TEST_F(ServerPanelTest, BrowsesUploadsDownloadsAndDeletes)
{
    vmk::test::MessageRecorder messages;
    ASSERT_TRUE(QDir().mkpath(m_remote + QStringLiteral("/Respaldos")));
    ASSERT_TRUE(writeFile(m_remote + QStringLiteral("/ene-05-2026,09.15.00.zip"), randomBytes(1000)));
    ASSERT_TRUE(writeFile(m_remote + QStringLiteral("/ leading blank.zip"), "x"));
    vmk::test::PlainFtpServer server(m_remote);
    ASSERT_GT(server.port(), 0);
    useServer(server.server(), QStringLiteral("alice"), QStringLiteral("s3cret"));

    ServerPanel panel;
    EXPECT_EQ(panel.objectName(), "Frame4");
    EXPECT_EQ(panel.SmarServer()->objectName(), "SmarServer");
    ASSERT_TRUE(panel.Servidor()) << messages.texts.join(u'|').toStdString();
    EXPECT_EQ(nodesOf(panel), (QStringList { "Respaldos/", " leading blank.zip", "ene-05-2026,09.15.00.zip" }));
    EXPECT_EQ(panel.TextServerFolder()->text(), "/");
    QStringList verbs;
    for (const QAction* a : panel.MenuServer()->actions())
        verbs << a->objectName();
    EXPECT_EQ(verbs, (QStringList { "Download", "DeletefileS", "NewFolder", "DeleteFolder" }));

    // A name with a leading blank comes down whole.
    select(panel, QStringLiteral(" leading blank.zip"));
    panel.Download_Click();
    EXPECT_EQ(readFile(m_backups + QStringLiteral("/ leading blank.zip")), "x");
    ASSERT_TRUE(QFile::remove(m_backups + QStringLiteral("/ leading blank.zip")));
    messages.texts.clear();
    messages.kinds.clear();

    // A double click on a file does nothing; on a folder it goes in.
    select(panel, QStringLiteral("ene-05-2026,09.15.00.zip"));
    panel.SmarServer_DblClick();
    EXPECT_EQ(panel.TextServerFolder()->text(), "/");
    select(panel, QStringLiteral("Respaldos"));
    panel.SmarServer_DblClick();
    EXPECT_EQ(panel.TextServerFolder()->text(), "/Respaldos/");
    EXPECT_TRUE(nodesOf(panel).isEmpty());
    EXPECT_EQ(panel.ServerNode(), nullptr);

    // Upload of a device archive, then download of it gives the same bytes.
    const QString archive = QStringLiteral("feb-02-2026,11.00.00.zip");
    const QByteArray bytes = randomBytes(3 << 20);
    ASSERT_TRUE(writeFile(m_backups + u'/' + archive, bytes));
    panel.Unpload_Click(QStringLiteral("T:\\Mis Documentos\\Respaldos\\") + archive, archive);
    EXPECT_EQ(nodesOf(panel), QStringList { archive });
    EXPECT_EQ(readFile(m_remote + QStringLiteral("/Respaldos/") + archive), bytes);
    EXPECT_EQ(panel.ProgressBarFTP()->value(), 100);
    ASSERT_TRUE(QFile::remove(m_backups + u'/' + archive));
    select(panel, archive);
    panel.Download_Click();
    EXPECT_EQ(readFile(m_backups + u'/' + archive), bytes);
    EXPECT_EQ(namesIn(m_backups), QStringList { archive });
    ASSERT_EQ(messages.texts, QStringList { "¡Descarga finalizada satisfactoriamente!" });
    EXPECT_EQ(messages.kinds, QList<int> { 0 });

    // "Subir a Servidor": the archive selected in the device's tree, else one picked
    // in the backups folder.
    const QString second = QStringLiteral("mar-03-2026,12.00.00.zip");
    ASSERT_TRUE(writeFile(m_backups + u'/' + second, "second"));
    panel.setSelectedArchive([second] { return QStringLiteral("T:\\Mis Documentos\\Respaldos\\") + second; });
    panel.Command10_Click();
    EXPECT_EQ(readFile(m_remote + QStringLiteral("/Respaldos/") + second), "second");
    ASSERT_TRUE(QFile::remove(m_remote + QStringLiteral("/Respaldos/") + second));
    panel.setSelectedArchive({});
    QString pickerFolder;
    QTimer::singleShot(0, [&] {
        auto* picker = qobject_cast<QFileDialog*>(QApplication::activeModalWidget());
        ASSERT_NE(picker, nullptr);
        pickerFolder = picker->directory().absolutePath();
        picker->selectFile(second);
        static_cast<QDialog*>(picker)->accept();
    });
    panel.Command10_Click();
    EXPECT_EQ(pickerFolder, m_backups);
    EXPECT_EQ(readFile(m_remote + QStringLiteral("/Respaldos/") + second), "second");
    EXPECT_EQ(nodesOf(panel), (QStringList { archive, second }));
    ASSERT_TRUE(QFile::remove(m_remote + QStringLiteral("/Respaldos/") + second));
    panel.Command9_Click();
    select(panel, QStringLiteral("Respaldos"));
    panel.SmarServer_DblClick();
    EXPECT_EQ(messages.texts.size(), 1);

    // New folder through FormNewEditS; an empty name makes none.
    answerNewFolder(QStringLiteral("nueva carpeta"));
    panel.NewFolder_Click();
    EXPECT_TRUE(QFileInfo(m_remote + QStringLiteral("/Respaldos/nueva carpeta")).isDir());
    EXPECT_EQ(nodesOf(panel), (QStringList { "nueva carpeta/", archive }));
    answerNewFolder(QString());
    panel.NewFolder_Click();
    EXPECT_EQ(namesIn(m_remote + QStringLiteral("/Respaldos")), (QStringList { archive, "nueva carpeta" }));
    EXPECT_EQ(QApplication::activeModalWidget(), nullptr);

    // Delete of a file asks; no keeps it, yes removes it.
    messages.texts.clear();
    messages.kinds.clear();
    messages.script({ 7, 6 });
    select(panel, archive);
    panel.DeletefileS_Click();
    EXPECT_TRUE(QFileInfo::exists(m_remote + QStringLiteral("/Respaldos/") + archive));
    select(panel, archive);
    panel.DeletefileS_Click();
    EXPECT_FALSE(QFileInfo::exists(m_remote + QStringLiteral("/Respaldos/") + archive));
    EXPECT_EQ(messages.texts, QStringList(2, "¿Realmente desea eliminar el archivo seleccionado del servidor?"));
    EXPECT_EQ(messages.kinds, (QList<int> { 1, 1 }));
    EXPECT_EQ(nodesOf(panel), QStringList { "nueva carpeta/" });
    // Delete of a folder asks nothing.
    select(panel, QStringLiteral("nueva carpeta"));
    panel.DeleteFolder_Click();
    EXPECT_TRUE(namesIn(m_remote + QStringLiteral("/Respaldos")).isEmpty());
    EXPECT_TRUE(nodesOf(panel).isEmpty());
    EXPECT_EQ(messages.texts.size(), 2);

    // Up, and "Servidor" again: the kept connection lists the current folder.
    panel.Command9_Click();
    EXPECT_EQ(panel.TextServerFolder()->text(), "/");
    EXPECT_EQ(nodesOf(panel), (QStringList { "Respaldos/", " leading blank.zip", "ene-05-2026,09.15.00.zip" }));
    select(panel, QStringLiteral("Respaldos"));
    panel.SmarServer_DblClick();
    ASSERT_TRUE(panel.Servidor());
    EXPECT_EQ(panel.TextServerFolder()->text(), "/Respaldos/");
    EXPECT_EQ(panel.client().staleRetries(), 0);
    EXPECT_EQ(messages.texts.size(), 2);

    // Unloading closes the connection.
    panel.Form_Unload();
    EXPECT_FALSE(panel.client().isConnected());
}

// A refused login shows the panel's message with the server's own reason; the
// download of a session that the server drops mid-transfer is told and leaves no
// file, an upload then leaves none on the server, and the panel goes on working.
TEST_F(ServerPanelTest, RefusedLoginAndDroppedTransfers)
{
    ASSERT_TRUE(writeFile(m_remote + QStringLiteral("/served.zip"), randomBytes(1 << 20)));
    {
        vmk::test::MessageRecorder messages;
        vmk::test::PlainFtpServer server(m_remote);
        ASSERT_GT(server.port(), 0);
        useServer(server.server(), QStringLiteral("alice"), QStringLiteral("wrong"));
        ServerPanel panel;
        EXPECT_FALSE(panel.Servidor());
        EXPECT_EQ(panel.SmarServer()->topLevelItemCount(), 0);
        ASSERT_EQ(messages.texts.size(), 1);
        EXPECT_EQ(messages.texts[0],
            "¡No se pudo establecer conexión con el servidor!\n"
            "el servidor rechazó el usuario o la contraseña: 530 Authentication failed. (67)");
        // Nothing is done on the server without a connection.
        panel.Unpload_Click(QStringLiteral("T:\\nada.zip"), QStringLiteral("nada.zip"));
        panel.MakeServerFolder(QStringLiteral("x"));
        EXPECT_EQ(namesIn(m_remote), QStringList { "served.zip" });
        // In English the words of both lines are translated, the server's reason kept.
        vmk::G().LanguageIndex = 1;
        EXPECT_FALSE(panel.Servidor());
        ASSERT_EQ(messages.texts.size(), 2);
        EXPECT_TRUE(messages.texts[1].startsWith("Could not establish connection with the server!\n"))
            << messages.texts[1].toStdString();
        EXPECT_TRUE(messages.texts[1].endsWith(": 530 Authentication failed. (67)")) << messages.texts[1].toStdString();
        ServerPanel english;
        EXPECT_EQ(english.MenuServer()->actions().first()->text(), "Download");
        EXPECT_EQ(english.Command10()->text(), "Upload to Server");
        vmk::G().LanguageIndex = 0;
        // No server in the settings: told in words as well.
        useServer(QString(), QStringLiteral("alice"), QStringLiteral("s3cret"));
        EXPECT_FALSE(panel.Servidor());
        ASSERT_EQ(messages.texts.size(), 3);
        EXPECT_EQ(
            messages.texts[2], "¡No se pudo establecer conexión con el servidor!\ndirección de servidor no válida");
    }

    vmk::test::MessageRecorder messages;
    vmk::test::PlainFtpServer server(m_remote, { QStringLiteral("--drop-after"), QStringLiteral("65536") });
    ASSERT_GT(server.port(), 0);
    useServer(server.server(), QStringLiteral("alice"), QStringLiteral("s3cret"));
    ServerPanel panel;
    ASSERT_TRUE(panel.Servidor());
    select(panel, QStringLiteral("served.zip"));
    panel.Download_Click();
    ASSERT_EQ(messages.texts.size(), 1);
    EXPECT_TRUE(messages.texts[0].startsWith("¡Error al descargar archivo!\nserved.zip: "))
        << messages.texts[0].toStdString();
    EXPECT_TRUE(messages.texts[0].endsWith(u')')) << messages.texts[0].toStdString();
    EXPECT_TRUE(namesIn(m_backups).isEmpty());

    ASSERT_TRUE(writeFile(m_backups + QStringLiteral("/big.zip"), randomBytes(1 << 20)));
    panel.Unpload_Click(QStringLiteral("T:\\Mis Documentos\\Respaldos\\big.zip"), QStringLiteral("big.zip"));
    EXPECT_EQ(messages.texts.size(), 1); // a send's failure is not told
    EXPECT_EQ(namesIn(m_remote), QStringList { "served.zip" });
    EXPECT_EQ(nodesOf(panel), QStringList { "served.zip" });
}

// Cancelar stops a transfer; while it runs the screen is pumped, the panel takes
// no other verb, and closing the window cancels and closes once it has stopped.
TEST_F(ServerPanelTest, CancelAndCloseDuringATransfer)
{
    vmk::test::MessageRecorder messages;
    ASSERT_TRUE(writeFile(m_remote + QStringLiteral("/served.zip"), randomBytes(8 << 20)));
    vmk::test::PlainFtpServer server(m_remote);
    ASSERT_GT(server.port(), 0);
    useServer(server.server(), QStringLiteral("alice"), QStringLiteral("s3cret"));
    ServerPanel panel;
    panel.show();
    ASSERT_TRUE(panel.Servidor());

    int pumped = 0;
    vmk::SetPumpHook([&] {
        ++pumped;
        EXPECT_TRUE(panel.busy());
        EXPECT_FALSE(panel.SmarServer()->isEnabled());
        EXPECT_TRUE(panel.CancelFTP()->isVisible());
        // Verbs that arrive meanwhile are passed over.
        EXPECT_FALSE(panel.Servidor());
        panel.Download_Click();
        panel.Command9_Click();
        panel.CancelFTP()->click();
    });
    select(panel, QStringLiteral("served.zip"));
    panel.Download_Click();
    EXPECT_GE(pumped, 1);
    EXPECT_FALSE(panel.busy());
    EXPECT_TRUE(panel.SmarServer()->isEnabled());
    EXPECT_FALSE(panel.CancelFTP()->isVisible());
    ASSERT_EQ(messages.texts.size(), 1);
    EXPECT_EQ(messages.texts[0], "¡Error al descargar archivo!\nserved.zip: la operación se canceló (42)");
    EXPECT_TRUE(namesIn(m_backups).isEmpty());

    // Closing the window mid-transfer: the transfer stops, then the window closes.
    vmk::SetPumpHook([&] { panel.close(); });
    select(panel, QStringLiteral("served.zip"));
    panel.Download_Click();
    vmk::SetPumpHook({});
    EXPECT_TRUE(panel.isVisible());
    QApplication::processEvents();
    EXPECT_FALSE(panel.isVisible());
    EXPECT_TRUE(namesIn(m_backups).isEmpty());
    EXPECT_EQ(messages.texts.size(), 2);
}

// FormNewEditS with another prompt makes a local folder; the archive tree's delete
// asks the server's question and removes the local file only on yes.
TEST_F(ServerPanelTest, LocalFolderAndLocalDelete)
{
    vmk::test::MessageRecorder messages;
    ServerPanel panel;
    {
        vmk::FormNewEditS form(panel);
        form.Label4()->setText(QStringLiteral("Dirección:"));
        form.LabelF()->setToolTip(QStringLiteral("T:\\Mis Documentos\\"));
        form.Text1()->setText(QStringLiteral("local nueva"));
        form.CMDacept_Click();
    }
    EXPECT_TRUE(QFileInfo(m_device + QStringLiteral("/Mis Documentos/local nueva")).isDir());

    ASSERT_TRUE(writeFile(m_backups + QStringLiteral("/a.zip"), "a"));
    messages.script({ 7, 6 });
    EXPECT_FALSE(ServerPanel::Delete_Click(QStringLiteral("T:\\Mis Documentos\\Respaldos\\a.zip")));
    EXPECT_TRUE(QFileInfo::exists(m_backups + QStringLiteral("/a.zip")));
    EXPECT_TRUE(ServerPanel::Delete_Click(QStringLiteral("T:\\Mis Documentos\\Respaldos\\a.zip")));
    EXPECT_FALSE(QFileInfo::exists(m_backups + QStringLiteral("/a.zip")));
    EXPECT_EQ(messages.texts, QStringList(2, "¿Realmente desea eliminar el archivo seleccionado del servidor?"));
}

// A certificate that does not verify: the panel shows its fingerprint and asks.
// No leaves nothing accepted; yes keeps the fingerprint in the settings and
// connects, and a later panel connects without asking.
TEST_F(ServerPanelTest, CertificateQuestionNoThenYes)
{
    vmk::test::TlsFtpServer server;
    if (server.skipReason())
        GTEST_SKIP() << server.skipReason();
    const QString fingerprint = server.fingerprintText().mid(server.fingerprintText().indexOf(u'=') + 1);
    ASSERT_EQ(vmk::ftp::Fingerprint::parse(fingerprint).size(), 32);
    useServer(server.server(), server.user(), vmk::test::TlsFtpServer::password());

    vmk::test::MessageRecorder messages;
    messages.script({ 7 });
    {
        ServerPanel panel;
        EXPECT_FALSE(panel.Servidor());
        ASSERT_EQ(messages.texts.size(), 1);
        EXPECT_EQ(messages.kinds[0], 1);
        EXPECT_EQ(messages.texts[0],
            "¡No se pudo establecer conexión con el servidor!\n"
            "el certificado del servidor no es de confianza: SHA-256 "
                + fingerprint + " (60)\n¿Desea aceptar este certificado?");
        EXPECT_TRUE(vmk::S().FtpCertificate.isEmpty());
        vmk::S() = vmk::SettingsValues {};
        vmk::ReadSettings();
        EXPECT_TRUE(vmk::S().FtpCertificate.isEmpty());
        useServer(server.server(), server.user(), vmk::test::TlsFtpServer::password());

        messages.script({ 6 });
        ASSERT_TRUE(panel.Servidor()) << messages.texts.join(u'|').toStdString();
        EXPECT_EQ(messages.texts.size(), 2);
        EXPECT_TRUE(panel.client().isSecure());
        EXPECT_TRUE(nodesOf(panel).isEmpty());
        answerNewFolder(QStringLiteral("Respaldos"));
        panel.NewFolder_Click();
        EXPECT_EQ(nodesOf(panel), QStringList { "Respaldos/" });
        EXPECT_EQ(vmk::S().FtpCertificate, fingerprint);
    }
    // Kept sealed in VMK.cnf, read back at the next start.
    const QByteArray file = readFile(m_device + QStringLiteral("/VMK.cnf"));
    EXPECT_TRUE(file.contains("#FtpCertificate=")) << file.toStdString();
    EXPECT_FALSE(file.contains(fingerprint.toLatin1()));
    vmk::S() = vmk::SettingsValues {};
    vmk::ReadSettings();
    EXPECT_EQ(vmk::S().FtpCertificate, fingerprint);
    useServer(server.server(), server.user(), vmk::test::TlsFtpServer::password());

    ServerPanel again;
    ASSERT_TRUE(again.Servidor());
    EXPECT_EQ(messages.texts.size(), 2);
    const QByteArray bytes = randomBytes(200000);
    ASSERT_TRUE(writeFile(m_backups + QStringLiteral("/c.zip"), bytes));
    select(again, QStringLiteral("Respaldos"));
    again.SmarServer_DblClick();
    again.Unpload_Click(QStringLiteral("T:\\Mis Documentos\\Respaldos\\c.zip"), QStringLiteral("c.zip"));
    EXPECT_EQ(readFile(server.home() + QStringLiteral("/Respaldos/c.zip")), bytes);
    EXPECT_EQ(nodesOf(again), QStringList { "c.zip" });
}

// BackTree's "Servidor" puts the archives and the remote store side by side and
// connects through the panel; a second click only lists again; closing the form
// closes the connection.
TEST_F(ServerPanelTest, BackTreeServerButton)
{
    vmk::test::MessageRecorder messages;
    ASSERT_TRUE(writeFile(m_remote + QStringLiteral("/a.zip"), "a"));
    vmk::test::PlainFtpServer server(m_remote);
    ASSERT_GT(server.port(), 0);
    useServer(server.server(), QStringLiteral("alice"), QStringLiteral("s3cret"));

    vmk::BackTree form;
    form.show();
    auto* panel = qobject_cast<ServerPanel*>(form.panel(vmk::BackTree::Panel::Frame4));
    ASSERT_NE(panel, nullptr);
    EXPECT_EQ(panel->objectName(), "Frame4");
    form.button("Image2")->click();
    EXPECT_TRUE(form.isShown(vmk::BackTree::Panel::Frame1));
    EXPECT_TRUE(form.isShown(vmk::BackTree::Panel::Frame4));
    EXPECT_FALSE(form.isShown(vmk::BackTree::Panel::Frame3));
    EXPECT_TRUE(panel->client().isConnected());
    EXPECT_EQ(nodesOf(*panel), QStringList { "a.zip" });
    ASSERT_TRUE(writeFile(m_remote + QStringLiteral("/b.zip"), "b"));
    form.Image2_Click();
    EXPECT_EQ(nodesOf(*panel), (QStringList { "a.zip", "b.zip" }));
    EXPECT_EQ(panel->client().staleRetries(), 0);

    // The archive tree beside it: its menu's Unpload and "Subir a Servidor" send the
    // archive chosen there; its Delete asks, removes the file and drops the node.
    ASSERT_TRUE(writeFile(m_backups + QStringLiteral("/local.zip"), "local bytes"));
    ASSERT_TRUE(writeFile(m_backups + QStringLiteral("/other.zip"), "other bytes"));
    auto* archives = qobject_cast<vmk::ArchivesPanel*>(form.panel(vmk::BackTree::Panel::Frame1));
    ASSERT_NE(archives, nullptr);
    archives->FillArchives();
    const QString folderKey = vmk::ArchivesPanel::BackupsFolderKey();
    ASSERT_TRUE(archives->SmartUI1()->SelectKey(folderKey + QStringLiteral("local.zip")));
    archives->Unpload()->trigger();
    EXPECT_EQ(readFile(m_remote + QStringLiteral("/local.zip")), QByteArray("local bytes"));
    ASSERT_TRUE(archives->SmartUI1()->SelectKey(folderKey + QStringLiteral("other.zip")));
    panel->Command10_Click();
    EXPECT_EQ(readFile(m_remote + QStringLiteral("/other.zip")), QByteArray("other bytes"));
    EXPECT_TRUE(messages.texts.isEmpty()) << messages.texts.join(u'|').toStdString();
    messages.script({ 6 });
    archives->Delete()->trigger();
    EXPECT_FALSE(QFileInfo::exists(m_backups + QStringLiteral("/other.zip")));
    EXPECT_FALSE(archives->SmartUI1()->treeModel()->NodeExists(folderKey + QStringLiteral("other.zip")));
    EXPECT_TRUE(QFileInfo::exists(m_backups + QStringLiteral("/local.zip")));
    EXPECT_EQ(messages.texts.size(), 1);
    messages.texts.clear();

    form.close();
    EXPECT_FALSE(panel->client().isConnected());
    EXPECT_TRUE(messages.texts.isEmpty());
}

// A picture of the panel connected to a loopback server, for a look by eye: set
// VMK_SHOTS to a folder.
TEST_F(ServerPanelTest, Pictures)
{
    const QString dir = qEnvironmentVariable("VMK_SHOTS");
    if (dir.isEmpty())
        GTEST_SKIP() << "VMK_SHOTS not set";
    QDir().mkpath(dir);
    vmk::test::MessageRecorder messages;
    for (const char* folder : { "Oficina", "Respaldos 2025" })
        ASSERT_TRUE(QDir().mkpath(m_remote + u'/' + QLatin1String(folder)));
    for (const char* name : { "ene-15-2026,18.30.05.zip", "feb-01-2026,09.12.44.zip", "notas del servidor.txt" })
        ASSERT_TRUE(writeFile(m_remote + u'/' + QLatin1String(name), randomBytes(4000)));
    ASSERT_TRUE(writeFile(m_backups + QStringLiteral("/mar-03-2026,12.00.00.zip"), randomBytes(600000)));
    vmk::test::PlainFtpServer server(m_remote);
    ASSERT_GT(server.port(), 0);
    useServer(server.server(), QStringLiteral("alice"), QStringLiteral("s3cret"));

    ServerPanel panel;
    panel.resize(380, 340);
    panel.show();
    ASSERT_TRUE(panel.Servidor());
    panel.Unpload_Click(
        QStringLiteral("T:\\Mis Documentos\\Respaldos\\mar-03-2026,12.00.00.zip"), "mar-03-2026,12.00.00.zip");
    select(panel, QStringLiteral("feb-01-2026,09.12.44.zip"));
    ASSERT_TRUE(QTest::qWaitForWindowExposed(&panel));
    QTest::qWait(50);
    panel.grab();
    QTest::qWait(50);
    EXPECT_TRUE(panel.grab().save(dir + "/ftp-server-panel.png"));
    EXPECT_TRUE(messages.texts.isEmpty());
}
