#include "backup/ui/ArchivesPanel.h"

#include "filemanager/FileTreeModel.h"
#include "filemanager/TreeKey.h"
#include "filemanager/ui/SmartTree.h"
#include "foundation/Globals.h"
#include "foundation/Settings.h"
#include "foundation/Translate.h"

#include <QAction>
#include <QHBoxLayout>
#include <QLabel>
#include <QMenu>
#include <QPushButton>
#include <QVBoxLayout>

namespace vmk
{

ArchivesPanel::ArchivesPanel(QWidget* parent)
    : QFrame(parent)
    , m_smartUI1(new SmartTree(TreeOptions::SmartUI1(), this))
    , m_menu(new QMenu(this))
    , m_image10(new QPushButton(QStringLiteral("Servidor"), this))
    , m_back(new QPushButton(QStringLiteral("Regresar"), this))
{
    setObjectName(QStringLiteral("Frame1"));
    auto* caption = new QLabel(QStringLiteral("Lista de respaldos"), this);
    caption->setObjectName(QStringLiteral("Label1"));
    m_smartUI1->setObjectName(QStringLiteral("SmartUI1"));
    m_smartUI1->setContextMenuPolicy(Qt::CustomContextMenu);
    m_menu->setObjectName(QStringLiteral("menu"));
    m_restorFiles = m_menu->addAction(QStringLiteral("Restaurar"));
    m_restorFiles->setObjectName(QStringLiteral("RestorFiles"));
    m_delete = m_menu->addAction(QStringLiteral("Eliminar"));
    m_delete->setObjectName(QStringLiteral("Delete"));
    m_unpload = m_menu->addAction(QStringLiteral("Subir a Servidor"));
    m_unpload->setObjectName(QStringLiteral("Unpload"));
    m_image10->setObjectName(QStringLiteral("Image10"));
    m_back->setObjectName(QStringLiteral("BackToSelection"));
    auto* layout = new QVBoxLayout(this);
    layout->addWidget(caption);
    layout->addWidget(m_smartUI1);
    auto* buttons = new QHBoxLayout;
    buttons->addStretch();
    buttons->addWidget(m_image10);
    buttons->addWidget(m_back);
    layout->addLayout(buttons);

    connect(m_smartUI1, &QWidget::customContextMenuRequested, this, &ArchivesPanel::popupMenu);
    connect(m_restorFiles, &QAction::triggered, this, [this] { chosen(&ArchivesPanel::RestorFilesChosen); });
    connect(m_delete, &QAction::triggered, this, [this] { chosen(&ArchivesPanel::DeleteChosen); });
    connect(m_unpload, &QAction::triggered, this, [this] { chosen(&ArchivesPanel::UnploadChosen); });
    connect(m_image10, &QPushButton::clicked, this, &ArchivesPanel::ServerRequested);
    connect(m_back, &QPushButton::clicked, this, &ArchivesPanel::BackRequested);
}

QString ArchivesPanel::BackupsFolderKey()
{
    QString key = G().ProgramDrive + S().BackupsFolder;
    if (!key.endsWith('\\'))
        key += '\\';
    return key;
}

void ArchivesPanel::FillArchives()
{
    FileTreeModel* model = m_smartUI1->treeModel();
    if (!m_rootKey.isEmpty())
        model->RemoveNodeTree(m_rootKey);
    m_rootKey = BackupsFolderKey();
    model->AddFolderRoot(m_rootKey, Translate(QStringLiteral("Respaldos")));
    m_smartUI1->Expand(m_rootKey);
}

void ArchivesPanel::popupMenu(const QPoint& at)
{
    const QModelIndex index = m_smartUI1->indexAt(at);
    if (!index.isValid())
        return;
    m_smartUI1->setCurrentIndex(index);
    m_menu->popup(m_smartUI1->viewport()->mapToGlobal(at));
}

void ArchivesPanel::chosen(void (ArchivesPanel::*signal)(const QString&, const QString&))
{
    const QString key = m_smartUI1->SelectedKey();
    // The items act on an archive: the folder itself is none.
    if (key.isEmpty() || TreeKey::isFolder(key))
        return;
    const TreeNode* node = m_smartUI1->treeModel()->node(key);
    emit(this->*signal)(key, node ? node->text : QString());
}

} // namespace vmk
