#include "backup/ui/ServerPanel.h"

#include "backup/FtpErrorWords.h"
#include "backup/ui/FormNewEditS.h"
#include "components/ftp/Fingerprint.h"
#include "filemanager/TreeNode.h"
#include "filemanager/ui/TreeIcons.h"
#include "foundation/FileServices.h"
#include "foundation/ForceDelete.h"
#include "foundation/Globals.h"
#include "foundation/Messages.h"
#include "foundation/Progress.h"
#include "foundation/Settings.h"
#include "foundation/Translate.h"
#include "foundation/ui/ApplyLanguage.h"
#include "platform/DriveMap.h"
#include "platform/LogicalPath.h"
#include "platform/Pump.h"

#include <QCloseEvent>
#include <QFileDialog>
#include <QHBoxLayout>
#include <QLineEdit>
#include <QMenu>
#include <QPalette>
#include <QProgressBar>
#include <QPushButton>
#include <QStyle>
#include <QToolButton>
#include <QTreeWidget>
#include <QVBoxLayout>

#include <algorithm>

namespace vmk
{
namespace
{
const QString kNoConnection = QStringLiteral("¡No se pudo establecer conexión con el servidor!");
const QString kDeleteQuestion = QStringLiteral("¿Realmente desea eliminar el archivo seleccionado del servidor?");
// How often a transfer lets the screen breathe: often enough for a click on
// Cancelar to be seen at once, seldom enough to cost nothing beside the transfer.
constexpr qint64 kPumpMilliseconds = 40;

QString withCode(const QString& text, int code)
{
    return code ? text + QStringLiteral(" (") + QString::number(code) + u')' : text;
}

// A name the server gave that can be a file of the backups folder as it stands:
// not empty, not "." or "..", no "/" (a hostile listing must not climb out).
bool plainName(const QString& name)
{
    return !name.isEmpty() && name != u"." && name != u".." && !name.contains(u'/');
}
} // namespace

ServerPanel::ServerPanel(QWidget* parent)
    : QFrame(parent)
    , m_tree(new QTreeWidget(this))
    , m_folder(new QLineEdit(this))
    , m_up(new QToolButton(this))
    , m_upload(new QToolButton(this))
    , m_progress(new QProgressBar(this))
    , m_cancel(new QPushButton(QStringLiteral("Cancelar"), this))
    , m_menu(new QMenu(this))
{
    setObjectName(QStringLiteral("Frame4"));
    setFrameShape(QFrame::StyledPanel);

    m_tree->setObjectName(QStringLiteral("SmarServer"));
    m_tree->setHeaderHidden(true);
    m_tree->setRootIsDecorated(false);
    m_tree->setUniformRowHeights(true);
    m_tree->setContextMenuPolicy(Qt::CustomContextMenu);
    m_folder->setObjectName(QStringLiteral("TextServerFolder"));
    // A text box, not a label: the forms' translation pass leaves its path alone.
    m_folder->setReadOnly(true);
    m_folder->setFrame(false);
    QPalette plain = m_folder->palette();
    plain.setColor(QPalette::Base, plain.color(QPalette::Window));
    m_folder->setPalette(plain);
    m_up->setObjectName(QStringLiteral("Command9"));
    m_up->setIcon(style()->standardIcon(QStyle::SP_FileDialogToParent));
    m_up->setToolTip(Translate(QStringLiteral("Carpeta superior")));
    m_up->setAutoRaise(true);
    m_upload->setObjectName(QStringLiteral("Command10"));
    m_upload->setText(QStringLiteral("Subir a Servidor"));
    m_upload->setIcon(style()->standardIcon(QStyle::SP_ArrowUp));
    m_upload->setToolButtonStyle(Qt::ToolButtonTextBesideIcon);
    m_upload->setAutoRaise(true);
    m_progress->setObjectName(QStringLiteral("ProgressBarFTP"));
    m_progress->setRange(0, 100);
    m_progress->setValue(0);
    m_cancel->setObjectName(QStringLiteral("CancelFTP"));
    m_cancel->hide();

    m_menu->setObjectName(QStringLiteral("MenuServer"));
    const auto addVerb = [this](const char* name, const QString& caption, void (ServerPanel::*click)()) {
        QAction* a = m_menu->addAction(caption);
        a->setObjectName(QLatin1String(name));
        connect(a, &QAction::triggered, this, click);
    };
    addVerb("Download", QStringLiteral("Descargar"), &ServerPanel::Download_Click);
    addVerb("DeletefileS", QStringLiteral("Eliminar Archivo"), &ServerPanel::DeletefileS_Click);
    addVerb("NewFolder", QStringLiteral("Nueva Carpeta"), &ServerPanel::NewFolder_Click);
    addVerb("DeleteFolder", QStringLiteral("Eliminar Carpeta"), &ServerPanel::DeleteFolder_Click);

    auto* top = new QHBoxLayout;
    top->addWidget(m_up);
    top->addWidget(m_folder, 1);
    top->addWidget(m_upload);
    auto* bottom = new QHBoxLayout;
    bottom->addWidget(m_progress, 1);
    bottom->addWidget(m_cancel);
    auto* layout = new QVBoxLayout(this);
    layout->addLayout(top);
    layout->addWidget(m_tree, 1);
    layout->addLayout(bottom);

    connect(m_tree, &QTreeWidget::itemClicked, this, [this](QTreeWidgetItem* node) { SmarServer_Click(node); });
    connect(m_tree, &QTreeWidget::itemDoubleClicked, this, [this](QTreeWidgetItem* node) {
        SmarServer_Click(node);
        SmarServer_DblClick();
    });
    connect(m_tree, &QTreeWidget::customContextMenuRequested, this, [this](const QPoint& at) {
        if (!m_busy)
            m_menu->popup(m_tree->viewport()->mapToGlobal(at));
    });
    connect(m_up, &QToolButton::clicked, this, &ServerPanel::Command9_Click);
    connect(m_upload, &QToolButton::clicked, this, &ServerPanel::Command10_Click);
    connect(m_cancel, &QPushButton::clicked, this, &ServerPanel::CancelFTP_Click);
    ApplyLanguage(this);
}

ServerPanel::~ServerPanel()
{
    if (m_watchedWindow)
        m_watchedWindow->removeEventFilter(this);
}

bool ServerPanel::Servidor()
{
    if (m_busy)
        return false;
    clearTree();
    if (!m_ftp.isConnected())
        connectWithSettings();
    if (!m_ftp.isConnected())
        return false;
    listFolder();
    return true;
}

void ServerPanel::connectWithSettings()
{
    m_ftp.setServer(S().FtpServer);
    m_ftp.setUserName(S().FtpUserName);
    m_ftp.setPassword(S().FtpPassword);
    m_ftp.setAcceptedFingerprint(ftp::Fingerprint::parse(S().FtpCertificate));
    SetMousePointer(11);
    bool connected = m_ftp.connect();
    SetMousePointer(0);
    if (connected)
        return;
    const ftp::FtpError refused = m_ftp.lastError();
    const QString why = Translate(kNoConnection) + u'\n' + withCode(FtpErrorWords(refused), refused.curlCode);
    if (refused.failure != ftp::FtpFailure::CertificateUntrusted || refused.fingerprint.isEmpty()) {
        ShowMessage(why);
        return;
    }
    // The one certificate the owner accepts is kept, and only that one.
    if (ShowMessage(why + u'\n' + Translate(QStringLiteral("¿Desea aceptar este certificado?")), 1) != 6)
        return;
    S().FtpCertificate = ftp::Fingerprint::text(refused.fingerprint);
    StoreSettingInFile(QStringLiteral("#FtpCertificate"));
    m_ftp.setAcceptedFingerprint(refused.fingerprint);
    SetMousePointer(11);
    connected = m_ftp.connect();
    SetMousePointer(0);
    if (!connected) {
        const ftp::FtpError& e = m_ftp.lastError();
        ShowMessage(Translate(kNoConnection) + u'\n' + withCode(FtpErrorWords(e), e.curlCode));
    }
}

void ServerPanel::clearTree()
{
    m_serverNode = nullptr;
    m_tree->clear();
}

void ServerPanel::listFolder()
{
    clearTree();
    if (!m_ftp.isConnected())
        return;
    std::optional<QList<ftp::RemoteEntry>> entries = m_ftp.list();
    m_folder->setText(m_ftp.currentFolder());
    if (!entries)
        return;
    // Folders first, then files, each by name as a person reads them.
    std::stable_sort(entries->begin(), entries->end(), [](const ftp::RemoteEntry& a, const ftp::RemoteEntry& b) {
        if (a.folder != b.folder)
            return a.folder;
        return QString::localeAwareCompare(a.name, b.name) < 0;
    });
    for (const ftp::RemoteEntry& e : *entries)
        addNode(e);
}

void ServerPanel::addNode(const ftp::RemoteEntry& entry)
{
    if (entry.name == u"." || entry.name == u"..")
        return;
    // A key already in the tree is not added twice (a flat folder cannot hold it).
    for (int i = 0; i < m_tree->topLevelItemCount(); ++i) {
        if (m_tree->topLevelItem(i)->data(0, kKeyRole).toString() == entry.name)
            return;
    }
    auto* node = new QTreeWidgetItem(m_tree);
    node->setText(0, entry.name);
    node->setData(0, kKeyRole, entry.name);
    node->setData(0, kTagRole, entry.folder ? 1 : 0);
    if (entry.folder)
        node->setIcon(0,
            TreeIcons::instance().icon(QStringLiteral("Folder"), static_cast<int>(TreeNode::Kind::Folder), QString()));
}

QTreeWidgetItem* ServerPanel::selectedNode() const
{
    return m_tree->currentItem();
}

void ServerPanel::SmarServer_Click(QTreeWidgetItem* node)
{
    m_serverNode = node;
}

void ServerPanel::SmarServer_DblClick()
{
    if (m_busy || !m_serverNode || m_serverNode->data(0, kTagRole).toInt() != 1)
        return;
    m_ftp.changeFolder(m_serverNode->data(0, kKeyRole).toString());
    listFolder();
}

void ServerPanel::Command9_Click()
{
    if (m_busy)
        return;
    m_ftp.up();
    listFolder();
}

void ServerPanel::beginBusy()
{
    m_busy = true;
    m_closeAfter = false;
    m_tree->setEnabled(false);
    m_up->setEnabled(false);
    m_upload->setEnabled(false);
    m_progress->setValue(0);
    m_cancel->show();
    m_cancel->setEnabled(true);
    SetMousePointer(11);
    // Closing the window mid-transfer cancels it and closes once it has stopped.
    m_watchedWindow = window();
    m_watchedWindow->installEventFilter(this);
    // The first report of a transfer pumps at once, then every kPumpMilliseconds.
    m_pumpClock.invalidate();
}

void ServerPanel::endBusy()
{
    if (m_watchedWindow)
        m_watchedWindow->removeEventFilter(this);
    SetMousePointer(0);
    m_cancel->hide();
    m_tree->setEnabled(true);
    m_up->setEnabled(true);
    m_upload->setEnabled(true);
    m_busy = false;
    if (m_closeAfter && m_watchedWindow) {
        m_closeAfter = false;
        QPointer<QWidget> w = m_watchedWindow;
        QMetaObject::invokeMethod(
            w,
            [w] {
                if (w)
                    w->close();
            },
            Qt::QueuedConnection);
    }
}

bool ServerPanel::eventFilter(QObject* watched, QEvent* event)
{
    if (m_busy && watched == m_watchedWindow && event->type() == QEvent::Close) {
        m_closeAfter = true;
        m_ftp.cancel();
        event->ignore();
        return true;
    }
    return QFrame::eventFilter(watched, event);
}

ftp::FtpClient::Progress ServerPanel::transferStatus()
{
    return [this](qint64 done, qint64 total) {
        const int percent = total > 0 ? static_cast<int>(std::clamp<qint64>(done * 100 / total, 0, 100)) : 0;
        if (m_progress->value() != percent)
            m_progress->setValue(percent);
        if (!m_pumpClock.isValid() || m_pumpClock.elapsed() >= kPumpMilliseconds) {
            DoEvents();
            m_pumpClock.start();
        }
        return true;
    };
}

void ServerPanel::CancelFTP_Click()
{
    if (m_busy)
        m_ftp.cancel();
}

void ServerPanel::Unpload_Click(const QString& key, const QString& text)
{
    if (m_busy || !m_ftp.isConnected())
        return;
    beginBusy();
    m_ftp.upload(DriveMap::instance().toNative(key), text, transferStatus());
    endBusy();
    listFolder();
}

void ServerPanel::Command10_Click()
{
    if (m_busy || !m_ftp.isConnected())
        return;
    QString key = m_selectedArchive ? m_selectedArchive() : QString();
    if (key.isEmpty()) {
        const QString backups = G().ProgramDrive + S().BackupsFolder;
        QFileDialog picker(this, Translate(QStringLiteral("Subir a Servidor")),
            DriveMap::instance().toNative(LogicalPath::withSlash(backups)), QStringLiteral("*.zip"));
        picker.setObjectName(QStringLiteral("ArchivePicker"));
        picker.setOption(QFileDialog::DontUseNativeDialog);
        picker.setFileMode(QFileDialog::ExistingFile);
        picker.setAcceptMode(QFileDialog::AcceptOpen);
        if (picker.exec() != QDialog::Accepted || picker.selectedFiles().isEmpty())
            return;
        key = DriveMap::instance().toLogical(picker.selectedFiles().constFirst());
    }
    Unpload_Click(key, DriveMap::decodeName(key.section(u'\\', -1)));
}

void ServerPanel::Download_Click()
{
    const QTreeWidgetItem* node = selectedNode();
    if (m_busy || !node)
        return;
    const QString name = node->text(0);
    const QString folder = G().ProgramDrive + S().BackupsFolder;
    if (!plainName(name)) {
        ShowMessage(Translate(QStringLiteral("¡Error al descargar archivo!")) + u'\n' + name + QStringLiteral(": ")
            + Translate(QStringLiteral("nombre no válido en el servidor")));
        return;
    }
    const QString target
        = LogicalPath::withoutSlash(DriveMap::instance().toNative(LogicalPath::withSlash(folder))) + u'/' + name;
    beginBusy();
    const bool done = m_ftp.download(name, target, transferStatus());
    endBusy();
    if (done) {
        ShowMessage(QStringLiteral("¡Descarga finalizada satisfactoriamente!"));
        return;
    }
    const ftp::FtpError& e = m_ftp.lastError();
    ShowMessage(Translate(QStringLiteral("¡Error al descargar archivo!")) + u'\n'
        + withCode(name + QStringLiteral(": ") + FtpErrorWords(e), e.curlCode));
}

void ServerPanel::DeletefileS_Click()
{
    const QTreeWidgetItem* node = selectedNode();
    if (m_busy || !node)
        return;
    const QString key = node->data(0, kKeyRole).toString();
    if (ShowMessage(kDeleteQuestion, 1) != 6 || !m_ftp.isConnected())
        return;
    m_ftp.removeFile(key);
    listFolder();
}

void ServerPanel::DeleteFolder_Click()
{
    const QTreeWidgetItem* node = selectedNode();
    if (m_busy || !node || !m_ftp.isConnected())
        return;
    m_ftp.removeFolder(node->data(0, kKeyRole).toString());
    listFolder();
}

void ServerPanel::NewFolder_Click()
{
    if (m_busy)
        return;
    FormNewEditS form(*this, this);
    form.Text1()->clear();
    form.exec();
}

void ServerPanel::MakeServerFolder(const QString& name)
{
    if (m_busy || !m_ftp.isConnected())
        return;
    m_ftp.makeFolder(name);
    listFolder();
}

bool ServerPanel::Delete_Click(const QString& path)
{
    // The question names the server although the archive is on the device: its
    // words are the ones the owner knows.
    if (ShowMessage(kDeleteQuestion, 1) != 6)
        return false;
    ForceDelete(path);
    return !FileExists(path);
}

void ServerPanel::Form_Unload()
{
    if (m_busy)
        m_ftp.cancel();
    else if (m_ftp.isConnected())
        m_ftp.disconnect();
}

} // namespace vmk
