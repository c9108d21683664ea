#include "backup/ui/BackTree.h"

#include "backup/BackupRun.h"
#include "backup/BackupValues.h"
#include "backup/SelectionFile.h"
#include "backup/ui/BackTreePanels.h"
#include "backup/ui/Form4.h"
#include "backup/ui/Form5.h"
#include "backup/ui/RunPanel.h"
#include "filemanager/FileTreeModel.h"
#include "filemanager/TreeKey.h"
#include "filemanager/ui/SmartTree.h"
#include "foundation/FileServices.h"
#include "foundation/Globals.h"
#include "foundation/Messages.h"
#include "foundation/Settings.h"
#include "foundation/Translate.h"
#include "foundation/ui/ApplyLanguage.h"

#include <QCloseEvent>
#include <QGuiApplication>
#include <QHBoxLayout>
#include <QLabel>
#include <QPushButton>
#include <QScreen>
#include <QTimer>
#include <QVBoxLayout>

#include <algorithm>

namespace vmk
{

BackTree::BackTree(QWidget* parent)
    : QWidget(parent)
    , m_timer(new QTimer(this))
    , m_frame3(new QWidget(this))
    , m_frame2(new RunPanel(this))
    , m_frame1(MakeFrame1(*this))
    , m_frame5(MakeFrame5(*this))
    , m_frame4(MakeFrame4(*this))
    , m_panels(new QHBoxLayout)
{
    setObjectName(QStringLiteral("BackTree"));
    setWindowTitle(QStringLiteral("Vormak 1.20 (Respaldos)"));
    resize(640, 480);

    m_timer->setObjectName(QStringLiteral("Timer"));
    m_timer->setSingleShot(true);
    m_timer->setInterval(10);
    connect(m_timer, &QTimer::timeout, this, &BackTree::Timer_Timer);

    // Frame3: a caption over the host tree (the tree is made at each load).
    m_frame3->setObjectName(QStringLiteral("Frame3"));
    auto* frame3Layout = new QVBoxLayout(m_frame3);
    frame3Layout->setContentsMargins(0, 0, 0, 0);
    auto* caption = new QLabel(QStringLiteral("Configuración de respaldos..."), m_frame3);
    caption->setObjectName(QStringLiteral("Label1"));
    frame3Layout->addWidget(caption);

    for (QWidget* frame : { m_frame3, static_cast<QWidget*>(m_frame2), m_frame1, m_frame5, m_frame4 }) {
        frame->setParent(this);
        m_panels->addWidget(frame, 1);
    }

    // The buttons under the panels; which are in view depends on the panel and the run.
    addButton("Image11", QStringLiteral("Comenzar"));
    addButton("Image12", QStringLiteral("Abrir"));
    addButton("Image7", QStringLiteral("Guardar"));
    addButton("Image4", QStringLiteral("Lista de respaldos"));
    addButton("Image2", QStringLiteral("Servidor"));
    addButton("Image6", QStringLiteral("Abortar"));
    addButton("Image8", QStringLiteral("Terminar"));
    connect(button("Image11"), &QPushButton::clicked, this, &BackTree::Image11_Click);
    connect(button("Image12"), &QPushButton::clicked, this, &BackTree::Image12_Click);
    connect(button("Image7"), &QPushButton::clicked, this, &BackTree::Image7_Click);
    connect(button("Image4"), &QPushButton::clicked, this, &BackTree::Image4_Click);
    connect(button("Image2"), &QPushButton::clicked, this, &BackTree::Image2_Click);
    connect(button("Image6"), &QPushButton::clicked, this, &BackTree::Image6_Click);
    connect(button("Image8"), &QPushButton::clicked, this, &BackTree::Image8_Click);
    auto* buttons = new QHBoxLayout;
    buttons->addStretch();
    for (QPushButton* b : m_buttons)
        buttons->addWidget(b);

    auto* layout = new QVBoxLayout(this);
    layout->addLayout(m_panels, 1);
    layout->addLayout(buttons);

    // The component's events that a backup and a restore share.
    zip::ZipEvents& events = m_zip.events();
    events.globalStatus = [this](int total, int processed, int skipped, int percent) {
        m_frame2->GlobalStatus(total, processed, skipped, percent);
    };
    events.skippingFile = [this](const QString& name, int reason) { m_frame2->SkippingFile(name, reason); };
    events.tempFileProgress = [this](int percent) { m_frame2->TempFileProgress(percent); };
    events.writeProgress = [this](int percent) {
        m_frame2->WriteProgress(percent);
        // The archive is whole on the device.
        if (percent == 100)
            ShowMessage(QStringLiteral("¡Proceso de respaldo concluido!"));
    };
    events.processCompleted = [this] { ProcessCompleted(); };
}

BackTree::~BackTree() = default;

QPushButton* BackTree::addButton(const char* name, const QString& caption)
{
    auto* b = new QPushButton(caption, this);
    b->setObjectName(QLatin1String(name));
    m_buttons << b;
    return b;
}

QPushButton* BackTree::button(const char* name) const
{
    for (QPushButton* b : m_buttons) {
        if (b->objectName() == QLatin1String(name))
            return b;
    }
    return nullptr;
}

void BackTree::Form_Load()
{
    ApplyLanguage(this);
    if (const QScreen* s = screen() ? screen() : QGuiApplication::primaryScreen())
        move(s->availableGeometry().center() - rect().center());

    // Each load starts from empty lists and a tree read anew.
    m_selection = BackupSelection();
    m_selection.setHooks({
        [this](const QString& key, bool checked) {
            m_tree->treeModel()->setChecked(key, checked ? Qt::Checked : Qt::Unchecked);
        },
        [this](const QString& key) {
            const TreeNode* node = m_tree->treeModel()->node(key);
            return node && node->parent ? node->parent->key : QString();
        },
        [this](const QString& key) { return m_tree->IsExpanded(key); },
        [this](const QString& key) { m_tree->Reexpand(key); },
        [this] { m_timer->start(); },
    });
    m_selection.setDeviceRoot(TreeKey::deviceRoot(G().ProgramDrive));
    m_timer->stop();
    delete m_tree;
    m_tree = new SmartTree(TreeOptions::BackTree(), m_frame3);
    m_tree->setObjectName(QStringLiteral("SmartDataTree"));
    m_frame3->layout()->addWidget(m_tree);
    m_tree->treeModel()->setChildCheckRule([this](const QString& childKey, Qt::CheckState parentState) {
        return m_selection.ChildTick(childKey, parentState != Qt::Unchecked) ? Qt::Checked : Qt::Unchecked;
    });
    connect(m_tree, &SmartTree::NodeCheck, this, &BackTree::NodeCheck);
    m_tree->FillRoots();

    m_restoreMode = false;
    ShowPanels({ Panel::Frame3 });
}

void BackTree::ShowPanels(std::initializer_list<Panel> panels)
{
    for (Panel p : { Panel::Frame3, Panel::Frame2, Panel::Frame1, Panel::Frame5, Panel::Frame4 })
        panel(p)->setVisible(std::find(panels.begin(), panels.end(), p) != panels.end());
    // The buttons of the selection stand with Frame3 only; the run's with Frame2.
    const bool selecting = isShown(Panel::Frame3);
    showSelectionButtons(selecting);
    if (!isShown(Panel::Frame2))
        showRunButtons(false, false);
}

QWidget* BackTree::panel(Panel which) const
{
    switch (which) {
    case Panel::Frame3:
        return m_frame3;
    case Panel::Frame2:
        return m_frame2;
    case Panel::Frame1:
        return m_frame1;
    case Panel::Frame5:
        return m_frame5;
    case Panel::Frame4:
        return m_frame4;
    }
    return nullptr;
}

bool BackTree::isShown(Panel which) const
{
    return !panel(which)->isHidden();
}

void BackTree::showSelectionButtons(bool on)
{
    for (const char* name : { "Image11", "Image12", "Image7", "Image4", "Image2" })
        button(name)->setVisible(on);
}

void BackTree::showRunButtons(bool running, bool finished)
{
    button("Image6")->setVisible(running);
    button("Image8")->setVisible(finished);
    // Guardar (the selection) comes back after a backup, never after a restore.
    if (isShown(Panel::Frame2))
        button("Image7")->setVisible(finished && !m_restoreMode);
    m_frame2->Label12()->setVisible(running);
}

void BackTree::NodeCheck(const QString& key, bool checked)
{
    m_selection.NodeCheck(key, checked);
}

void BackTree::Timer_Timer()
{
    m_timer->stop();
    m_selection.Timer_Timer();
}

void BackTree::Image7_Click()
{
    Form4 picker(this);
    picker.exec();
    const QString file = BV().BackupSelectionFile;
    if (file.isEmpty())
        return;
    if (const QString failure = SelectionFile::Save(file, m_selection.ListAdd(), m_selection.ListExc());
        !failure.isEmpty())
        ShowMessage(failure);
}

void BackTree::Image12_Click()
{
    Form5 picker(this);
    picker.exec();
    const QString file = BV().BackupSelectionFile;
    m_tree->Collapse(TreeKey::host());
    if (!file.isEmpty() && FileExists(file)) {
        const SelectionFile::Lists lists = SelectionFile::Load(file);
        if (!lists.failure.isEmpty())
            ShowMessage(lists.failure);
        for (const QString& path : lists.add)
            m_selection.AddToListAdd(path);
        for (const QString& path : lists.exclude)
            m_selection.AddToListExc(path);
    }
    m_tree->Expand(TreeKey::host());
}

void BackTree::PrepareRun()
{
    ShowPanels({ Panel::Frame2 });
    showRunButtons(true, false);
    m_frame2->Reset();
    m_zip.setAbort(false);
}

void BackTree::Image11_Click()
{
    if (m_running)
        return;
    m_running = true;
    m_restoreMode = false;
    PrepareRun();
    m_frame2->ShowStage(QStringLiteral("Comenzando"));

    BackupRun::Hooks hooks;
    hooks.stage = [this](const QString& word) { m_frame2->ShowStage(word); };
    hooks.scanned = [this](bool infected) { m_frame2->CountScanned(infected); };
    hooks.excludeInfected = [](const QString& file) {
        return ShowMessage(file + QStringLiteral("\r\n")
                       + Translate(QStringLiteral("¡Archivo infectado! ¿Desea excluir este archivo?")),
                   4)
            == 6;
    };
    BackupRun run(m_zip);
    const BackupRun::Outcome outcome
        = run.Run(m_selection.ListAdd(), m_selection.ListExc(), G().ProgramDrive + S().BackupsFolder, hooks);
    m_archivedMB = run.ArchivedBytesMB();
    m_lastArchive = outcome.failure == BackupRun::Failure::None ? outcome.archive : QString();
    m_running = false;
    switch (outcome.failure) {
    case BackupRun::Failure::None:
        break;
    case BackupRun::Failure::FolderMissing:
        // Nothing was done: Guardar and Terminar come back, the stage word goes.
        showRunButtons(false, true);
        ShowMessage(QStringLiteral("¡La carpeta de respaldos no existe!"));
        break;
    case BackupRun::Failure::NoFreeName:
        showRunButtons(false, true);
        ShowMessage(Translate(QStringLiteral("¡No queda ningún nombre libre para el respaldo!"))
            + QStringLiteral("\r\n") + outcome.archive);
        break;
    case BackupRun::Failure::Component:
        ShowMessage(Translate(QStringLiteral("¡Error de compresion!")) + QStringLiteral("\r\n(")
            + QString::number(outcome.result) + u')');
        break;
    }
}

void BackTree::ProcessCompleted()
{
    showRunButtons(false, true);
}

void BackTree::Image6_Click()
{
    m_zip.setAbort(true);
}

void BackTree::Image8_Click()
{
    ShowPanels({ m_restoreMode ? Panel::Frame5 : Panel::Frame3 });
    m_restoreMode = false;
}

void BackTree::Image4_Click()
{
    ShowPanels({ Panel::Frame1 });
    emit ArchivesShown();
}

void BackTree::Image2_Click()
{
    ShowPanels({ Panel::Frame1, Panel::Frame4 });
    emit ServerShown();
}

void BackTree::closeEvent(QCloseEvent* event)
{
    // A running archive stops at its next step and leaves nothing behind.
    m_zip.setAbort(true);
    event->accept();
    emit Closed();
}

} // namespace vmk
