#include "filemanager/ui/frmDataTree.h"

#include "filemanager/FileTreeModel.h"
#include "filemanager/PopupRule.h"
#include "filemanager/Restaura.h"
#include "filemanager/SelectionMarks.h"
#include "filemanager/Transfer.h"
#include "filemanager/TreeKey.h"
#include "filemanager/ui/FormNewEdit.h"
#include "filemanager/ui/SmartTree.h"
#include "filemanager/ui/TreeIcons.h"
#include "filemanager/ui/frmProperties.h"
#include "foundation/FileServices.h"
#include "foundation/Globals.h"
#include "foundation/Messages.h"
#include "foundation/Translate.h"
#include "foundation/ui/AnimationArea.h"
#include "foundation/ui/ApplyLanguage.h"
#include "foundation/ui/Barra.h"
#include "passwords/ui/FrmPass.h"
#include "platform/Shell.h"

#include <QAction>
#include <QCloseEvent>
#include <QCoreApplication>
#include <QGuiApplication>
#include <QHBoxLayout>
#include <QLabel>
#include <QLineEdit>
#include <QMenu>
#include <QProgressBar>
#include <QPushButton>
#include <QScreen>
#include <QTimer>

namespace vmk
{
namespace
{
const QString kAlertNotDeleted = QStringLiteral("¡Alerta, el archivo no fue eliminado!");
const QString kNoPath = QStringLiteral("No es una carpeta ni un archivo");
const QString kRootKept = QStringLiteral("Una unidad o carpeta raíz no se puede mover, eliminar ni renombrar");

QTimer* oneShot(QObject* parent, const char* name, int ms)
{
    auto* timer = new QTimer(parent);
    timer->setObjectName(QLatin1String(name));
    timer->setSingleShot(true);
    timer->setInterval(ms);
    return timer;
}
} // namespace

frmDataTree::frmDataTree(QWidget* parent)
    : QWidget(parent)
    , m_host(new SmartTree(TreeOptions::frmDataTreeHost(), this))
    , m_device(new SmartTree(TreeOptions::frmDataTreeDevice(), this))
    , m_menu(new QMenu(this))
    , m_barra(std::make_unique<Barra>())
    , m_timer1(oneShot(this, "Timer1", 100))
    , m_timerF(oneShot(this, "TimerF", 1))
    , m_timerD(oneShot(this, "TimerD", 1))
{
    setObjectName(QStringLiteral("frmDataTree"));
    setWindowTitle(QStringLiteral("Vormak 1.20 (Administrador de archivos)"));
    resize(780, 540);
    m_host->setObjectName(QStringLiteral("SmartDataTree"));
    m_device->setObjectName(QStringLiteral("SmartUIFlash"));
    auto* layout = new QHBoxLayout(this);
    layout->addWidget(m_host, 1);
    layout->addWidget(m_device, 1);
    wireTree(m_host, 2);
    wireTree(m_device, 1);

    m_menu->setObjectName(QStringLiteral("menu"));
    m_menu->setToolTipsVisible(true);
    addItem(m_menu, "OpenF", QStringLiteral("Abrir"), &frmDataTree::OpenF_Click);
    addSeparator(m_menu, "linea");
    addItem(m_menu, "Copy", QStringLiteral("Copiar"), &frmDataTree::Copy_Click);
    addItem(m_menu, "Cut", QStringLiteral("Cortar"), &frmDataTree::Cut_Click);
    addItem(m_menu, "Paste", QStringLiteral("Pegar"), &frmDataTree::Paste_Click);
    addItem(m_menu, "PasteEncript", QStringLiteral("Pegar Encriptado"), &frmDataTree::PasteEncript_Click);
    addItem(m_menu, "PasteDecript", QStringLiteral("Pegar Decriptado"), &frmDataTree::PasteDecript_Click);
    addItem(m_menu, "pasteZ", QStringLiteral("Pegar Comprimido"), &frmDataTree::pasteZ_Click);
    addItem(m_menu, "PasteUz", QStringLiteral("Pegar Descomprimido"), &frmDataTree::PasteUz_Click);
    addSeparator(m_menu, "linea2");
    addItem(m_menu, "Delete", QStringLiteral("Eliminar"), &frmDataTree::Delete_Click);
    addItem(m_menu, "Rename", QStringLiteral("Renombrar"), &frmDataTree::Rename_Click);
    addItem(m_menu, "NewFolder", QStringLiteral("Nueva Carpeta"), &frmDataTree::NewFolder_Click);
    addSeparator(m_menu, "Linea1");
    addItem(m_menu, "Properties", QStringLiteral("Propiedades"), &frmDataTree::Properties_Click);
    addSeparator(m_menu, "linea4");
    addItem(m_menu, "Restaura", QStringLiteral("Restaurar"), &frmDataTree::Restaura_Click);

    const struct {
        const char* menu;
        const char* copy;
        const char* copyCaption;
        void (frmDataTree::*copySlot)();
        const char* move;
        const char* moveCaption;
        void (frmDataTree::*moveSlot)();
    } drags[] = {
        { "MenuDrag", "Copydrag", "Copiar", &frmDataTree::Copydrag_Click, "movedrag", "Mover",
            &frmDataTree::movedrag_Click },
        { "MenuDragEnc", "CopyDragEnc", "Copiar Encriptado", &frmDataTree::CopyDragEnc_Click, "MoveDragEnc",
            "Mover Encriptado", &frmDataTree::MoveDragEnc_Click },
        { "MenuDragDec", "CopydragDec", "Copiar Decriptado", &frmDataTree::CopydragDec_Click, "movedragDec",
            "Mover Decriptado", &frmDataTree::movedragDec_Click },
        { "MenuDragZip", "Copydragzip", "Copiar Comprimido", &frmDataTree::Copydragzip_Click, "MoveDragZip",
            "Mover Comprimido", &frmDataTree::MoveDragZip_Click },
        { "MenuDragUzip", "CopydragUzip", "Copiar Descomprimido", &frmDataTree::CopydragUzip_Click, "MoveDragUzip",
            "Mover Descomprimido", &frmDataTree::MoveDragUzip_Click },
    };
    for (const auto& d : drags) {
        auto* popup = new QMenu(this);
        popup->setObjectName(QLatin1String(d.menu));
        addItem(popup, d.copy, QString::fromUtf8(d.copyCaption), d.copySlot);
        addItem(popup, d.move, QString::fromUtf8(d.moveCaption), d.moveSlot);
        m_dragMenus.insert(QLatin1String(d.menu), popup);
    }

    connect(m_timer1, &QTimer::timeout, this, &frmDataTree::Timer1_Timer);
    connect(m_timerF, &QTimer::timeout, this, &frmDataTree::TimerF_Timer);
    connect(m_timerD, &QTimer::timeout, this, &frmDataTree::TimerD_Timer);
}

frmDataTree::~frmDataTree() = default;

QAction* frmDataTree::addItem(QMenu* menu, const char* name, const QString& caption, void (frmDataTree::*slot)())
{
    QAction* action = menu->addAction(caption);
    action->setObjectName(QLatin1String(name));
    // The verb runs after the menu is gone: it may wait for ticks, dispatching events.
    connect(action, &QAction::triggered, this, [this, slot] {
        QMetaObject::invokeMethod(
            this, [this, slot] { (this->*slot)(); }, Qt::QueuedConnection);
    });
    m_items.insert(QLatin1String(name), action);
    return action;
}

QAction* frmDataTree::addSeparator(QMenu* menu, const char* name)
{
    QAction* action = menu->addSeparator();
    action->setObjectName(QLatin1String(name));
    m_items.insert(QLatin1String(name), action);
    return action;
}

void frmDataTree::wireTree(SmartTree* tree, int side)
{
    Q_UNUSED(side);
    tree->setNodeDrags(true);
    connect(
        tree, &SmartTree::MouseUp, this, [this, tree](const QString& key, Qt::MouseButton button, const QPoint& at) {
            if (button != Qt::RightButton || key.isEmpty())
                return;
            tree->SelectKey(key);
            PopupFor(tree, &at);
        });
    connect(tree, &SmartTree::OLEDragOver, this, [this](const QString& key) { m_dropTargetKey = key; });
    connect(tree, &SmartTree::OLEDragDrop, this,
        [this, tree](const QString& key, const QString& sourceTree, const QString& sourceKey, const QPoint& at) {
            OLEDragDrop(tree, key, sourceTree, sourceKey, &at);
        });
    connect(tree, &SmartTree::OLECompleteDrag, this, [this] {
        m_host->setDropHighlight(QString());
        m_device->setDropHighlight(QString());
    });
}

void frmDataTree::Form_Load()
{
    ApplyLanguage(this);
    if (const QScreen* screen = QGuiApplication::primaryScreen()) {
        const QRect area = screen->availableGeometry();
        move(area.center() - rect().center());
    }
    m_timer1->start();
}

void frmDataTree::Timer1_Timer()
{
    m_timer1->stop();
    if (m_filled)
        return;
    m_filled = true;
    m_host->FillRoots();
    m_device->FillRoots();
}

SmartTree* frmDataTree::treeOfSide(int side) const
{
    return side == 1 ? m_device : side == 2 ? m_host : nullptr;
}

bool frmDataTree::isRoot(SmartTree* tree, const QString& key) const
{
    const TreeNode* node = tree ? tree->treeModel()->node(key) : nullptr;
    return node && node->isRoot();
}

void frmDataTree::explainDisabled(SmartTree* tree, const QString& key)
{
    for (QAction* action : std::as_const(m_items)) {
        action->setEnabled(true);
        action->setToolTip(QString());
    }
    auto disable = [this](std::initializer_list<const char*> names, const QString& why) {
        for (const char* name : names) {
            QAction* action = item(QLatin1String(name));
            action->setEnabled(false);
            action->setToolTip(Translate(why));
        }
    };
    if (key == TreeKey::host()) {
        disable({ "OpenF", "Copy", "Cut", "Paste", "PasteEncript", "PasteDecript", "pasteZ", "PasteUz", "Delete",
                    "Rename", "NewFolder", "Properties" },
            kNoPath);
    } else if (isRoot(tree, key)) {
        disable({ "Cut", "Delete", "Rename" }, kRootKept);
    }
}

void frmDataTree::PopupFor(SmartTree* tree, const QPoint* at)
{
    const int side = tree == m_device ? 1 : 2;
    G().TreeSide = side;
    PopupRule::Input in;
    in.side = side;
    in.key = tree->SelectedKey();
    in.marks = tree->marks() ? int(tree->marks()->keys().size()) : 0;
    in.sourcePath = G().SourcePath;
    in.clipboard = int(m_listMultiple.size());
    const QHash<QString, bool> shown = PopupRule::Decide(in);
    for (auto it = shown.begin(); it != shown.end(); ++it)
        if (QAction* action = item(it.key()))
            action->setVisible(it.value());
    explainDisabled(tree, in.key);
    if (at)
        m_menu->popup(*at);
}

QString frmDataTree::OLEDragDrop(
    SmartTree* onto, const QString& dropKey, const QString& sourceTree, const QString& dragKey, const QPoint* at)
{
    G().TreeSide = onto == m_device ? 1 : 2;
    G().DragSide = sourceTree == QLatin1String("SmartUIFlash") ? 1 : 2;
    SmartTree* from = treeOfSide(G().DragSide);
    const TreeNode* source = from->treeModel()->node(dragKey);
    if (dropKey.isEmpty() || dragKey.isEmpty() || !source || !onto->treeModel()->NodeExists(dropKey))
        return {};
    m_dropTargetKey = dropKey;
    m_dragSourceKey = dragKey;
    m_dragSourceText = source->text;
    const QString name = PopupRule::DragMenu(dropKey, dragKey);
    if (name == QLatin1String("MenuDrag"))
        item(QStringLiteral("Paste"))->setVisible(true);
    if (at)
        dragMenu(name)->popup(*at);
    return name;
}

// ---- Copy, cut and the paste verbs ----

void frmDataTree::clipboardFromSelection(bool move)
{
    G().MoveFlag = move;
    SmartTree* tree = treeOfSide(G().TreeSide);
    if (!tree)
        return;
    m_listMultiple.clear();
    if (SelectionMarks* marks = tree->marks(); marks && !marks->keys().isEmpty()) {
        m_listMultiple = marks->keys();
        marks->unmarkAll();
    }
    const QString key = tree->SelectedKey();
    const TreeNode* node = tree->treeModel()->node(key);
    m_sourceKey = key;
    G().SourcePath = TreeKey::pathOf(key);
    G().SourceFolderName = node ? node->text : QString();
    G().SourceLeaf.clear();
}

void frmDataTree::Copy_Click()
{
    clipboardFromSelection(false);
}

void frmDataTree::Cut_Click()
{
    clipboardFromSelection(true);
}

void frmDataTree::prepareItem(int code, const QString& count)
{
    G().CancelRequested = false;
    G().OperationCode = code;
    m_barra->Animation()->Open(G().ProgramFolder
        + (code == TransferDelete ? QStringLiteral("\\Filedel.avi") : QStringLiteral("\\FileCopy.avi")));
    m_barra->LabelC()->setText(count);
    m_barra->Command1()->setEnabled(true);
    // The seal stages and delete report no progress within a file.
    const bool fileBar = code != TransferEncrypt && code != TransferDecrypt && code != TransferDelete;
    m_barra->ProgressBarF()->setVisible(fileBar);
    m_barra->Label(5)->setVisible(fileBar);
    m_barra->SetFileProgress(0);
    m_barra->SetTotalProgress(0);
}

void frmDataTree::waitForTick()
{
    while (m_busy)
        QCoreApplication::processEvents(QEventLoop::AllEvents | QEventLoop::WaitForMoreEvents);
}

void frmDataTree::runClipboard(int code, QTimer* timer, bool fromDrop)
{
    m_count = int(m_listMultiple.size());
    for (m_index = 1; m_index <= m_count; ++m_index) {
        const QString key = m_listMultiple.at(m_index - 1);
        m_sourceKey = key;
        G().SourcePath = TreeKey::pathOf(key);
        if (G().SourcePath.endsWith(u'\\')) {
            const QStringList parts = G().SourcePath.split(u'\\');
            G().SourceFolderName = parts.at(parts.size() - 2);
        } else {
            G().SourceLeaf.clear();
        }
        if (fromDrop)
            G().TargetPath = m_dropTargetKey;
        prepareItem(code, QString::number(m_index) + u'\\' + QString::number(m_count));
        m_busy = true;
        timer->start();
        waitForTick();
    }
    m_listMultiple.clear();
}

void frmDataTree::pasteVerb(int code, bool passPhrase)
{
    if (passPhrase && !passwords::AskOwnerPassword(this))
        return;
    if (m_listMultiple.isEmpty()) {
        m_index = m_count = 0;
        prepareItem(code, QStringLiteral("1\\1"));
        m_timerF->start();
        return;
    }
    runClipboard(code, m_timerF, false);
}

void frmDataTree::Paste_Click()
{
    pasteVerb(TransferCopy, false);
}

void frmDataTree::PasteEncript_Click()
{
    pasteVerb(TransferEncrypt, true);
}

void frmDataTree::PasteDecript_Click()
{
    pasteVerb(TransferDecrypt, true);
}

void frmDataTree::pasteZ_Click()
{
    pasteVerb(TransferCompress, false);
}

void frmDataTree::PasteUz_Click()
{
    pasteVerb(TransferDecompress, false);
}

// ---- Drops ----

void frmDataTree::dragVerb(int code, bool move, bool passPhrase)
{
    if (passPhrase && !passwords::AskOwnerPassword(this))
        return;
    const int side = G().TreeSide;
    G().TreeSide = G().DragSide;
    clipboardFromSelection(move);
    G().TreeSide = side;
    if (m_listMultiple.isEmpty()) {
        m_sourceKey = m_dragSourceKey;
        G().SourcePath = m_dragSourceKey;
        G().SourceFolderName = m_dragSourceText;
        G().TargetPath = m_dropTargetKey;
        G().SourceLeaf.clear();
        m_index = m_count = 0;
        prepareItem(code, QStringLiteral("1\\1"));
        m_timerD->start();
        return;
    }
    runClipboard(code, m_timerD, true);
}

void frmDataTree::Copydrag_Click()
{
    dragVerb(TransferCopy, false, false);
}

void frmDataTree::movedrag_Click()
{
    dragVerb(TransferCopy, true, false);
}

void frmDataTree::CopyDragEnc_Click()
{
    dragVerb(TransferEncrypt, false, true);
}

void frmDataTree::MoveDragEnc_Click()
{
    dragVerb(TransferEncrypt, true, true);
}

void frmDataTree::CopydragDec_Click()
{
    dragVerb(TransferDecrypt, false, true);
}

void frmDataTree::movedragDec_Click()
{
    dragVerb(TransferDecrypt, true, true);
}

void frmDataTree::Copydragzip_Click()
{
    dragVerb(TransferCompress, false, false);
}

void frmDataTree::MoveDragZip_Click()
{
    dragVerb(TransferCompress, true, false);
}

void frmDataTree::CopydragUzip_Click()
{
    dragVerb(TransferDecompress, false, false);
}

void frmDataTree::MoveDragUzip_Click()
{
    dragVerb(TransferDecompress, true, false);
}

// ---- The tick: one item ----

void frmDataTree::TimerF_Timer()
{
    tick(false);
}

void frmDataTree::TimerD_Timer()
{
    tick(true);
}

void frmDataTree::removeFromTrees(const QString& key)
{
    m_device->treeModel()->RemoveNodeTree(key);
    m_host->treeModel()->RemoveNodeTree(key);
}

void frmDataTree::refreshFolder(const QString& key)
{
    for (SmartTree* tree : { m_host, m_device }) {
        for (const QString& k : { key, TreeKey::pathOf(key) }) {
            if (tree->treeModel()->NodeExists(k))
                tree->treeModel()->FillFolder(k);
        }
    }
}

void frmDataTree::tick(bool fromDrop)
{
    (fromDrop ? m_timerD : m_timerF)->stop();
    m_inTick = true;
    m_barra->show();
    QGuiApplication::setOverrideCursor(Qt::WaitCursor);
    if (m_panelTimer)
        m_panelTimer->stop();
    setEnabled(false);
    if (!fromDrop) {
        SmartTree* tree = treeOfSide(G().TreeSide);
        G().TargetPath = tree ? tree->SelectedKey() : QString();
    }
    emit tickStarted();

    const int code = G().OperationCode;
    // The item that a delete or a move takes away: never a drive or a root folder.
    const QString goes = code == TransferDelete ? G().TargetPath : G().MoveFlag ? m_sourceKey : QString();
    const bool rootRefused = !goes.isEmpty() && (isRoot(m_host, goes) || isRoot(m_device, goes));
    if (rootRefused) {
        ShowMessage(Translate(kRootKept) + QStringLiteral("\r\n") + TreeKey::pathOf(goes));
    } else {
        const TransferLabelsHook previous = SetTransferLabelsHook([this](const QString& name, const QString& folder) {
            m_barra->LabelF()->setText(name);
            m_barra->Label(4)->setText(folder);
        });
        TransferItem(
            TreeKey::pathOf(G().SourcePath), TreeKey::pathOf(G().TargetPath), TreeKey::pathOf(G().SourceFolderName));
        SetTransferLabelsHook(previous);
    }
    if (G().CancelRequested)
        m_index = m_count;

    if (!rootRefused) {
        if (code == TransferDelete) {
            const QString target = TreeKey::pathOf(G().TargetPath);
            if (FileExists(target)) {
                ShowMessage(kAlertNotDeleted);
            } else {
                removeFromTrees(G().TargetPath);
                m_host->treeModel()->RemoveNodeTree(target);
            }
        } else {
            refreshFolder(G().TargetPath);
            if (G().MoveFlag) {
                const QString source = TreeKey::pathOf(G().SourcePath);
                if (FileExists(source)) {
                    ShowMessage(kAlertNotDeleted);
                } else {
                    removeFromTrees(G().SourcePath);
                    removeFromTrees(m_sourceKey);
                    m_host->treeModel()->RemoveNodeTree(source);
                }
            }
        }
    }
    afterTick();
}

void frmDataTree::afterTick()
{
    if (m_index >= m_count) {
        m_barra->Animation()->Close();
        m_barra->hide();
        show();
    }
    m_busy = false;
    m_inTick = false;
    if (m_panelTimer)
        m_panelTimer->start();
    setEnabled(true);
    QGuiApplication::restoreOverrideCursor();
}

// ---- Delete, rename, new folder, open, properties ----

void frmDataTree::Delete_Click()
{
    if (ShowMessage(QStringLiteral("¿Realmente desea eliminar el archivo seleccionado?"), 1) == 7)
        return;
    SmartTree* tree = treeOfSide(G().TreeSide);
    if (!tree)
        return;
    const QStringList marked = tree->marks() ? tree->marks()->keys() : QStringList();
    G().CancelRequested = false;
    if (marked.isEmpty()) {
        m_index = m_count = 0;
        prepareItem(TransferDelete, QStringLiteral("1\\1"));
        m_timerF->start();
        return;
    }
    prepareItem(TransferDelete, QString());
    m_count = int(marked.size());
    for (m_index = 1; m_index <= m_count; ++m_index) {
        m_barra->LabelC()->setText(QString::number(m_index) + u'\\' + QString::number(m_count));
        // An item inside a folder deleted before it is gone with it; the selection
        // must never fall on a neighbour instead.
        if (!tree->SelectKey(marked.at(m_index - 1)))
            continue;
        m_busy = true;
        m_timerF->start();
        waitForTick();
    }
    if (tree->marks())
        tree->marks()->unmarkAll();
}

void frmDataTree::Rename_Click()
{
    SmartTree* tree = treeOfSide(G().TreeSide);
    if (!tree)
        return;
    const QString key = tree->SelectedKey();
    const TreeNode* node = tree->treeModel()->node(key);
    if (!node || node->isRoot() || !node->parent)
        return;
    const QString parentKey = node->parent->key;
    auto* form = new FormNewEdit(this);
    form->setAttribute(Qt::WA_DeleteOnClose);
    form->LabelF()->setText(node->text);
    form->LabelF()->setToolTip(tree == m_host ? TreeKey::pathOf(key) : key);
    // The parent's path without bars, so that an entry below the desktop or the
    // documents root is renamed like any other.
    form->RenameParent = TreeKey::pathOf(parentKey);
    const QModelIndex index = tree->treeModel()->indexOf(key);
    form->Picture1()->setPixmap(
        TreeIcons::instance()
            .icon(index.data(FileTreeModel::ImageKeyRole).toString(), index.data(FileTreeModel::KindRole).toInt(),
                index.data(FileTreeModel::PathRole).toString())
            .pixmap(32, 32));
    connect(form, &FormNewEdit::changed, this, [this, parentKey] { refreshFolder(parentKey); });
    m_formNewEdit = form;
    form->show();
}

void frmDataTree::NewFolder_Click()
{
    SmartTree* tree = treeOfSide(G().TreeSide);
    if (!tree)
        return;
    const QString key = tree->SelectedKey();
    const TreeNode* node = tree->treeModel()->node(key);
    if (!node || !TreeKey::isFolder(key))
        return;
    auto* form = new FormNewEdit(this);
    form->setAttribute(Qt::WA_DeleteOnClose);
    if (tree == m_host) {
        form->Label1()->setText(Translate(QStringLiteral("Nuevo nombre:")));
        form->Label2()->setText(QStringLiteral("Dirección:"));
        form->LabelF()->setText(node->text + u'\\');
    } else {
        form->Label2()->setText(Translate(QStringLiteral("Dirección:")));
        form->LabelF()->setText(node->text);
    }
    form->LabelF()->setToolTip(TreeKey::pathOf(key));
    form->Picture1()->setPixmap(TreeIcons::instance()
                                    .icon(TreeKey::folderImage(), int(TreeNode::Kind::Folder), TreeKey::pathOf(key))
                                    .pixmap(32, 32));
    connect(form, &FormNewEdit::changed, this, [this, tree, key] {
        refreshFolder(key);
        tree->Expand(key);
    });
    m_formNewEdit = form;
    form->show();
}

void frmDataTree::OpenF_Click()
{
    SmartTree* tree = treeOfSide(G().TreeSide);
    if (!tree)
        return;
    const QString key = tree->SelectedKey();
    Shell::open(tree == m_host ? TreeKey::pathOf(key) : key);
}

void frmDataTree::Properties_Click()
{
    SmartTree* tree = treeOfSide(G().TreeSide);
    if (!tree)
        return;
    const QString key = tree->SelectedKey();
    ShowFileProperties(tree == m_host ? TreeKey::pathOf(key) : key, this);
}

void frmDataTree::Restaura_Click()
{
    const QString key = m_device->SelectedKey();
    if (key.isEmpty())
        return;
    if (Restaura(key).SealedGone)
        m_device->treeModel()->RemoveNodeTree(key);
}

void frmDataTree::closeEvent(QCloseEvent* event)
{
    // A transfer in progress finishes its item first; Barra's Cancel stops it.
    if (m_inTick || m_busy || m_timerF->isActive() || m_timerD->isActive()) {
        event->ignore();
        return;
    }
    event->accept();
    emit unloaded();
}

} // namespace vmk
