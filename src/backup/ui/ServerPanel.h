#pragma once

#include "components/ftp/FtpClient.h"

#include <QElapsedTimer>
#include <QFrame>
#include <QPointer>

#include <functional>

class QLineEdit;
class QMenu;
class QProgressBar;
class QPushButton;
class QToolButton;
class QTreeWidget;
class QTreeWidgetItem;

namespace vmk
{

// BackTree's remote store (Frame4): one folder of the FTP server in `#FtpServer`
// at a time, flat, in SmarServer (a folder with the image "Folder" and Tag 1, a
// file with Tag 0), with up, double-click into a folder, and the popup MenuServer
// (download into the device's backups folder, delete a file after a question,
// new folder through FormNewEditS, delete a folder). One connection is kept from
// the first successful Servidor() until the panel unloads.
//
// Only the connection and the download speak to the user; a delete, a new folder
// and an upload fail silently and the listing afterwards shows the true state. A
// certificate that does not verify is refused with its SHA-256 fingerprint, and
// the owner may accept that one certificate: its fingerprint is kept in
// "#FtpCertificate" and the connection is tried again.
//
// A transfer shows its percentage in ProgressBarFTP and keeps the screen alive
// through the pump; meanwhile the panel takes no other verb, CancelFTP stops the
// transfer, and closing the window waits for the transfer to stop.
class ServerPanel : public QFrame
{
    Q_OBJECT
public:
    // Where a node keeps its key (the entry's name) and its Tag (1 folder, 0 file).
    static constexpr int kKeyRole = 0x0100; // Qt::UserRole
    static constexpr int kTagRole = 0x0101;

    explicit ServerPanel(QWidget* parent = nullptr);
    ~ServerPanel() override;

    QTreeWidget* SmarServer() const { return m_tree; }
    // The node last clicked; nullptr after the tree was filled anew.
    QTreeWidgetItem* ServerNode() const { return m_serverNode; }
    QProgressBar* ProgressBarFTP() const { return m_progress; }
    QToolButton* Command9() const { return m_up; }
    QToolButton* Command10() const { return m_upload; }
    QPushButton* CancelFTP() const { return m_cancel; }
    QMenu* MenuServer() const { return m_menu; }
    QLineEdit* TextServerFolder() const { return m_folder; }
    ftp::FtpClient& client() { return m_ftp; }
    // True while a verb talks to the server.
    bool busy() const { return m_busy; }

    // "Servidor": connects with the settings unless connected, then lists the
    // current folder; a failed connection is told. True when connected.
    bool Servidor();
    // Event procedures, public so that tests and BackTree can reach them.
    void SmarServer_Click(QTreeWidgetItem* node);
    void SmarServer_DblClick();
    void Command9_Click();
    void Download_Click();
    void DeletefileS_Click();
    void DeleteFolder_Click();
    void NewFolder_Click();
    void CancelFTP_Click();
    // Sends a local archive (`key`, its full logical path) under its name `text`
    // to the current folder; then lists anew. Only while connected. The device's
    // archive tree calls it from its menu.
    void Unpload_Click(const QString& key, const QString& text);
    // "Subir a Servidor" on the panel: the archive selected in the device's archive
    // tree (the source set below), or else one chosen in the backups folder.
    void Command10_Click();
    // Gives the logical path of the archive selected in the device's archive tree,
    // "" when none is.
    void setSelectedArchive(std::function<QString()> source) { m_selectedArchive = std::move(source); }
    // FormNewEditS's verb on the server: a folder of that name in the current folder.
    void MakeServerFolder(const QString& name);
    // The archive tree's delete of a local archive (logical path), after the same
    // question as the server's delete. True when the file is gone, so that the
    // caller removes its node.
    static bool Delete_Click(const QString& path);
    // The form unloads: a running transfer is cancelled, the connection closed.
    void Form_Unload();

protected:
    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    void connectWithSettings();
    void listFolder();
    void clearTree();
    void addNode(const ftp::RemoteEntry& entry);
    QTreeWidgetItem* selectedNode() const;
    void beginBusy();
    void endBusy();
    ftp::FtpClient::Progress transferStatus();

    ftp::FtpClient m_ftp;
    QTreeWidget* m_tree;
    QLineEdit* m_folder;
    QToolButton* m_up;
    QToolButton* m_upload;
    QProgressBar* m_progress;
    QPushButton* m_cancel;
    QMenu* m_menu;
    QTreeWidgetItem* m_serverNode = nullptr;
    std::function<QString()> m_selectedArchive;
    QPointer<QWidget> m_watchedWindow;
    QElapsedTimer m_pumpClock;
    bool m_busy = false;
    bool m_closeAfter = false;
};

} // namespace vmk
