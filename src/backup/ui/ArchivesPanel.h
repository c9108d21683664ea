#pragma once

#include <QFrame>
#include <QString>

class QAction;
class QMenu;
class QPushButton;

namespace vmk
{

class SmartTree;

// BackTree's panel of archives (Frame1): the tree SmartUI1 over the backups folder
// of the device, its popup `menu` with RestorFiles, Delete and Unpload, Image10
// "Servidor" and a way back to the selection. The panel only says what was asked
// and for which archive; BackTree acts on it.
class ArchivesPanel : public QFrame
{
    Q_OBJECT
public:
    explicit ArchivesPanel(QWidget* parent = nullptr);

    SmartTree* SmartUI1() const { return m_smartUI1; }
    QMenu* menu() const { return m_menu; }
    QAction* RestorFiles() const { return m_restorFiles; }
    QAction* Delete() const { return m_delete; }
    QAction* Unpload() const { return m_unpload; }
    QPushButton* Image10() const { return m_image10; }
    QPushButton* BackToSelection() const { return m_back; }

    // Clears SmartUI1 and fills it with the backups folder: ProgramDrive followed
    // by #BackupsFolder.
    void FillArchives();
    // The backups folder as a folder key ("E:\Mis Documentos\Respaldos\").
    static QString BackupsFolderKey();

signals:
    // A menu item was chosen on an archive: its key (the full path) and its text.
    void RestorFilesChosen(const QString& archiveKey, const QString& caption);
    void DeleteChosen(const QString& archiveKey, const QString& caption);
    void UnploadChosen(const QString& archiveKey, const QString& caption);
    // Image10: the archives and the remote store side by side.
    void ServerRequested();
    // Back to the selection (Frame3).
    void BackRequested();

private:
    void popupMenu(const QPoint& at);
    void chosen(void (ArchivesPanel::*signal)(const QString&, const QString&));

    SmartTree* m_smartUI1;
    QMenu* m_menu;
    QAction* m_restorFiles;
    QAction* m_delete;
    QAction* m_unpload;
    QPushButton* m_image10;
    QPushButton* m_back;
    QString m_rootKey;
};

} // namespace vmk
