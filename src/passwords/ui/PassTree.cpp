#include "passwords/ui/PassTree.h"

#include "foundation/ui/ApplyLanguage.h"
#include "passwords/PasswordStore.h"
#include "passwords/ui/FormNewlink.h"
#include "passwords/ui/FrmPass.h"

#include <QApplication>
#include <QClipboard>
#include <QCloseEvent>
#include <QGuiApplication>
#include <QHBoxLayout>
#include <QHeaderView>
#include <QLineEdit>
#include <QPushButton>
#include <QScreen>
#include <QStyle>
#include <QTimer>
#include <QToolButton>
#include <QTreeWidget>
#include <QVBoxLayout>

namespace vmk::passwords
{
namespace
{
constexpr int kClipboardSeconds = 30;
}

PassTree::PassTree(QWidget* parent)
    : QWidget(parent, Qt::Window)
    , m_tree(new QTreeWidget(this))
    , m_timer1(new QTimer(this))
    , m_timerClip(new QTimer(this))
{
    setObjectName(QStringLiteral("PassTree"));
    setWindowTitle(QStringLiteral("Vormak 1.20 (Administrador de contraseñas)"));
    resize(460, 420);
    m_tree->setObjectName(QStringLiteral("PswAddTree"));
    m_tree->setHeaderHidden(true);
    m_tree->setRootIsDecorated(true);

    auto* verbs = new QHBoxLayout;
    addVerb("Image3", QStringLiteral("Nuevo"), QStyle::SP_FileDialogNewFolder, &PassTree::Image3_Click);
    addVerb("Image1", QStringLiteral("Editar"), QStyle::SP_FileDialogDetailedView, &PassTree::Image1_Click);
    addVerb("Image5", QStringLiteral("Ver"), QStyle::SP_FileDialogContentsView, &PassTree::Image5_Click);
    addVerb("Image2", QStringLiteral("Eliminar"), QStyle::SP_TrashIcon, &PassTree::Image2_Click);
    addVerb("Image4", QStringLiteral("Copiar"), QStyle::SP_DialogSaveButton, &PassTree::Image4_Click);
    for (QToolButton* b : findChildren<QToolButton*>())
        verbs->addWidget(b);
    verbs->addStretch();
    auto* layout = new QVBoxLayout(this);
    layout->addLayout(verbs);
    layout->addWidget(m_tree);

    m_timer1->setObjectName(QStringLiteral("Timer1"));
    m_timer1->setInterval(100);
    m_timer1->setSingleShot(false);
    connect(m_timer1, &QTimer::timeout, this, &PassTree::Timer1_Timer);
    m_timerClip->setObjectName(QStringLiteral("TimerClip"));
    m_timerClip->setInterval(kClipboardSeconds * 1000);
    m_timerClip->setSingleShot(true);
    connect(m_timerClip, &QTimer::timeout, this, &PassTree::TimerClip_Timer);
    Form_Load();
}

PassTree::~PassTree()
{
    delete m_newlink;
}

QToolButton* PassTree::addVerb(const char* name, const QString& caption, int icon, void (PassTree::*click)())
{
    auto* b = new QToolButton(this);
    b->setObjectName(QLatin1String(name));
    b->setText(caption);
    b->setIcon(style()->standardIcon(static_cast<QStyle::StandardPixmap>(icon)));
    b->setIconSize(QSize(32, 32));
    b->setToolButtonStyle(Qt::ToolButtonTextUnderIcon);
    b->setAutoRaise(true);
    b->setMinimumWidth(72);
    connect(b, &QToolButton::clicked, this, click);
    return b;
}

void PassTree::Form_Load()
{
    if (const QScreen* s = screen() ? screen() : QGuiApplication::primaryScreen())
        move(s->availableGeometry().center() - rect().center());
    ApplyLanguage(this);
    LoadPasswordStore(m_nodes);
    Refresh();
}

void PassTree::Form_Unload()
{
    if (m_unloaded)
        return;
    m_unloaded = true;
    if (m_newlink)
        m_newlink->close();
    // A password copied a moment ago does not outlive the window.
    if (m_timerClip->isActive()) {
        m_timerClip->stop();
        TimerClip_Timer();
    }
    SavePasswordStore(m_nodes);
    emit unloaded();
}

void PassTree::closeEvent(QCloseEvent* event)
{
    Form_Unload();
    event->accept();
}

void PassTree::Refresh()
{
    const int selected = SelectedIndex();
    m_tree->clear();
    QHash<int, QTreeWidgetItem*> items;
    for (int i = 1; i <= m_nodes.Count(); ++i) {
        const int parent = m_nodes.Parent(i);
        auto* item
            = parent && items.contains(parent) ? new QTreeWidgetItem(items[parent]) : new QTreeWidgetItem(m_tree);
        item->setText(0, m_nodes.Text(i));
        item->setData(0, Qt::UserRole, i);
        items.insert(i, item);
    }
    SelectIndex(selected && m_nodes.Exists(selected) ? selected : 1);
}

int PassTree::SelectedIndex() const
{
    const QTreeWidgetItem* item = m_tree->currentItem();
    return item ? item->data(0, Qt::UserRole).toInt() : 0;
}

void PassTree::SelectIndex(int index)
{
    QTreeWidgetItemIterator it(m_tree);
    for (; *it; ++it) {
        if ((*it)->data(0, Qt::UserRole).toInt() == index) {
            m_tree->setCurrentItem(*it);
            return;
        }
    }
}

FormNewlink* PassTree::openNewlink()
{
    if (!m_newlink)
        m_newlink = new FormNewlink(*this);
    return m_newlink;
}

void PassTree::Image3_Click()
{
    PV().PendingLink.clear();
    FormNewlink* form = openNewlink();
    form->show();
    form->raise();
}

void PassTree::fillNewlink(int record, bool edit)
{
    FormNewlink* form = openNewlink();
    form->Text1()->setText(m_nodes.Text(record));
    form->Text2()->setText(m_nodes.Text(record + 1));
    form->Text3()->setText(m_nodes.Tag(record + 2));
    form->CMDacept()->setVisible(edit);
    form->CMDcancel()->setVisible(edit);
    form->Command1()->setVisible(!edit);
    form->show();
    form->raise();
}

void PassTree::Image1_Click()
{
    if (!AskOwnerPassword(this) || m_nodes.Count() < 1)
        return;
    const int i = RecordOf(m_nodes, SelectedIndex());
    PV().PendingLink = QString::number(i);
    fillNewlink(i, true);
}

void PassTree::Image5_Click()
{
    if (!AskOwnerPassword(this))
        return;
    PV().PendingLink.clear();
    if (m_nodes.Count() < 1)
        return;
    fillNewlink(RecordOf(m_nodes, SelectedIndex()), false);
}

void PassTree::Image2_Click()
{
    // No question asked; each removal that fails is passed over.
    const int i = RecordOf(m_nodes, SelectedIndex());
    if (i < 1)
        return;
    m_nodes.Remove(i + 2);
    m_nodes.Remove(i + 1);
    m_nodes.Remove(i);
    Refresh();
}

void PassTree::Image4_Click()
{
    if (m_nodes.Count() < 1 || !AskOwnerPassword(this))
        return;
    const int i = RecordOf(m_nodes, SelectedIndex());
    if (i < 1)
        return;
    m_copied = m_nodes.Tag(i + 2);
    QGuiApplication::clipboard()->setText(m_copied);
    m_timerClip->start();
}

void PassTree::Timer1_Timer()
{
    m_timer1->stop();
    agregalink(m_nodes, PV().PendingLink);
    Refresh();
}

void PassTree::TimerClip_Timer()
{
    // Only our own copy is cleared: whatever the user copied since stays.
    QClipboard* clipboard = QGuiApplication::clipboard();
    if (!m_copied.isEmpty() && clipboard->text() == m_copied)
        clipboard->clear();
    m_copied.clear();
}

} // namespace vmk::passwords
