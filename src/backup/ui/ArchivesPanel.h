#pragma once

#include <QFrame>
#include <QString>

class QAction;
class QMenu;

namespace vmk
{

class SmartTree;

// BackTree's panel of archives (Frame1): the tree SmartUI1 over the backups folder
// of the device, and its popup `menu` with RestorFiles, Delete and Unpload. The
// panel only says which archive a menu item is for; BackTree acts on it.
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

private:
    void popupMenu(const QPoint& at);
    void chosen(void (ArchivesPanel::*signal)(const QString&, const QString&));

    SmartTree* m_smartUI1;
    QMenu* m_menu;
    QAction* m_restorFiles;
    QAction* m_delete;
    QAction* m_unpload;
    QString m_rootKey;
};

} // namespace vmk
