#include "scanner/ui/scanTree.h"

#include "filemanager/FileTreeModel.h"
#include "filemanager/QuarantineVerb.h"
#include "filemanager/Transfer.h"
#include "filemanager/TreeKey.h"
#include "filemanager/ui/SmartTree.h"
#include "foundation/Globals.h"
#include "foundation/Translate.h"
#include "foundation/ui/AnimationArea.h"
#include "foundation/ui/ApplyLanguage.h"
#include "foundation/ui/Barra.h"
#include "foundation/ui/ClickLabel.h"
#include "platform/LogicalPath.h"
#include "scanner/ThreatActions.h"

#include <QCloseEvent>

#include <QAbstractItemModel>
#include <QFrame>
#include <QGridLayout>
#include <QGuiApplication>
#include <QHBoxLayout>
#include <QHeaderView>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QScreen>
#include <QTableView>
#include <QThread>
#include <QTimer>
#include <QVBoxLayout>

#include <algorithm>

namespace vmk
{
namespace
{
// The marker of the tab on show, and of the others (the system's window colour).
const QColor kTabOn(0xff, 0xff, 0x80);

QStringList hostChildrenOfKind(const FileTreeModel& model, TreeNode::Kind kind)
{
    QStringList keys;
    for (const QString& key : model.childKeys(TreeKey::host())) {
        const TreeNode* node = model.node(key);
        if (node && node->kind == kind)
            keys << key;
    }
    return keys;
}

QTableView* makeList(QWidget* parent, const char* name)
{
    auto* view = new QTableView(parent);
    view->setObjectName(QLatin1String(name));
    view->setSelectionBehavior(QAbstractItemView::SelectRows);
    view->setEditTriggers(QAbstractItemView::NoEditTriggers);
    view->verticalHeader()->setVisible(false);
    // One row height for all: twenty thousand rows lay out without measuring each.
    view->verticalHeader()->setSectionResizeMode(QHeaderView::Fixed);
    view->verticalHeader()->setDefaultSectionSize(20);
    view->horizontalHeader()->setStretchLastSection(true);
    view->setWordWrap(false);
    return view;
}
} // namespace

scanTree::scanTree(QWidget* parent)
    : QWidget(parent)
    , m_timer(new QTimer(this))
    , m_refresh(new QTimer(this))
    , m_frame3(new QFrame(this))
    , m_frame5(new QFrame(this))
    , m_frame1(new QFrame(m_frame5))
    , m_label3(new QLabel(QStringLiteral("Analizando"), this))
{
    setObjectName(QStringLiteral("scanTree"));
    setWindowTitle(QStringLiteral("Vormak 1.20 (Analizador)"));
    resize(640, 480);

    m_timer->setObjectName(QStringLiteral("Timer"));
    m_timer->setSingleShot(true);
    m_timer->setInterval(10);
    connect(m_timer, &QTimer::timeout, this, &scanTree::Timer_Timer);

    m_frame3->setObjectName(QStringLiteral("Frame3"));
    auto* frame3Layout = new QVBoxLayout(m_frame3);
    frame3Layout->setContentsMargins(0, 0, 0, 0);

    // Frame5: the three tabs, the counters (Frame1), the two lists and the verbs.
    m_frame5->setObjectName(QStringLiteral("Frame5"));
    auto* frame5Layout = new QVBoxLayout(m_frame5);
    frame5Layout->setContentsMargins(0, 0, 0, 0);
    auto* tabRow = new QHBoxLayout;
    const char* tabNames[3] = { "Label12", "Label13", "Label14" };
    const char* shapeNames[3] = { "Shape6", "Shape7", "Shape8" };
    const QString tabWords[3]
        = { QStringLiteral("Estadísticos"), QStringLiteral("Eventos"), QStringLiteral("Infectados") };
    for (int i = 0; i < 3; ++i) {
        m_shapes[i] = new QFrame(m_frame5);
        m_shapes[i]->setObjectName(QLatin1String(shapeNames[i]));
        m_shapes[i]->setFixedSize(12, 12);
        m_shapes[i]->setFrameShape(QFrame::Box);
        m_shapes[i]->setAutoFillBackground(true);
        m_tabs[i] = new ClickLabel(tabWords[i], m_frame5);
        m_tabs[i]->setObjectName(QLatin1String(tabNames[i]));
        m_tabs[i]->setCursor(Qt::PointingHandCursor);
        tabRow->addWidget(m_shapes[i]);
        tabRow->addWidget(m_tabs[i]);
        tabRow->addSpacing(16);
    }
    tabRow->addStretch();
    connect(m_tabs[0], &ClickLabel::clicked, this, &scanTree::Label12_Click);
    connect(m_tabs[1], &ClickLabel::clicked, this, &scanTree::Label13_Click);
    connect(m_tabs[2], &ClickLabel::clicked, this, &scanTree::Label14_Click);
    frame5Layout->addLayout(tabRow);

    m_frame1->setObjectName(QStringLiteral("Frame1"));
    m_frame1->setFrameShape(QFrame::StyledPanel);
    auto* grid = new QGridLayout(m_frame1);
    m_textFolder = addCounter(m_frame1, "textfolder", "Label1", QStringLiteral("Carpeta"), 0);
    m_textScan = addCounter(m_frame1, "TextScan", "Label2", QStringLiteral("Archivo"), 1);
    m_txtScanTot = addCounter(m_frame1, "txtscantot", "Label4", QStringLiteral("Analizados"), 2);
    m_txtNTot = addCounter(m_frame1, "TxtNtot", "Label5", QStringLiteral("No infectados"), 3);
    m_txtSkipTot = addCounter(m_frame1, "txtskiptot", "Label6", QStringLiteral("No procesados"), 4);
    m_txtInfFiles = addCounter(m_frame1, "txtinfFiles", "Label7", QStringLiteral("Infectados"), 5);
    m_txtInfTot = addCounter(m_frame1, "txtinftot", "Label8", QStringLiteral("Alertas"), 6);
    grid->setRowStretch(7, 1);
    frame5Layout->addWidget(m_frame1, 1);

    m_listView = makeList(m_frame5, "ListView");
    m_listViewInf = makeList(m_frame5, "ListViewInf");
    frame5Layout->addWidget(m_listView, 1);
    frame5Layout->addWidget(m_listViewInf, 1);
    m_listView->setModel(&m_session.ListView());
    m_listViewInf->setModel(&m_session.ListViewInf());
    m_listView->horizontalHeader()->resizeSection(0, 440);
    for (int c = 0; c < 3; ++c)
        m_listViewInf->horizontalHeader()->resizeSection(c, 150);
    // The newest row in sight, as each batch of rows arrives.
    for (QTableView* view : { m_listView, m_listViewInf })
        connect(view->model(), &QAbstractItemModel::rowsInserted, view, [view] { view->scrollToBottom(); });
    // The engine may scan ahead on the machine's cores; rows stay in the walk's order.
    m_session.setJobs(std::clamp(QThread::idealThreadCount(), 1, 4));
    // The boxes follow the session every kFlushIntervalMs, as the rows do (the pump
    // runs the timer, during a pause too): a box rewritten for every file of a fast
    // walk would cost a repaint per file.
    m_refresh->setInterval(ScanSession::kFlushIntervalMs);
    connect(m_refresh, &QTimer::timeout, this, [this] {
        showCounters();
        showCurrent();
    });
    // An emptied file name (a pause after a target) is shown at once.
    connect(&m_session, &ScanSession::currentChanged, this, [this] {
        if (m_session.TextScan().isEmpty())
            showCurrent();
    });
    connect(&m_session, &ScanSession::finished, this, &scanTree::sessionFinished);

    m_command6 = new QPushButton(QStringLiteral("Eliminar"), m_frame5);
    m_command6->setObjectName(QStringLiteral("Command6"));
    m_command7 = new QPushButton(QStringLiteral("Desinfectar"), m_frame5);
    m_command7->setObjectName(QStringLiteral("Command7"));
    m_command8 = new QPushButton(QStringLiteral("Cuarentena"), m_frame5);
    m_command8->setObjectName(QStringLiteral("Command8"));
    connect(m_command6, &QPushButton::clicked, this, &scanTree::Command6_Click);
    connect(m_command7, &QPushButton::clicked, this, &scanTree::Command7_Click);
    connect(m_command8, &QPushButton::clicked, this, &scanTree::Command8_Click);
    auto* verbs = new QHBoxLayout;
    verbs->addStretch();
    verbs->addWidget(m_command6);
    verbs->addWidget(m_command7);
    verbs->addWidget(m_command8);
    frame5Layout->addLayout(verbs);

    // The session's controls under both frames.
    m_label3->setObjectName(QStringLiteral("Label3"));
    m_image5 = addButton("Image5", QStringLiteral("Comenzar"));
    m_image2 = addButton("Image2", QStringLiteral("Pausar"));
    m_image1 = addButton("Image1", QStringLiteral("Continuar"));
    m_image3 = addButton("Image3", QStringLiteral("Abortar"));
    m_image4 = addButton("Image4", QStringLiteral("Regresar"));
    connect(m_image5, &QPushButton::clicked, this, &scanTree::Image5_Click);
    connect(m_image2, &QPushButton::clicked, this, &scanTree::Image2_Click);
    connect(m_image1, &QPushButton::clicked, this, &scanTree::Image1_Click);
    connect(m_image3, &QPushButton::clicked, this, &scanTree::Image3_Click);
    connect(m_image4, &QPushButton::clicked, this, &scanTree::Image4_Click);
    auto* controls = new QHBoxLayout;
    controls->addWidget(m_label3);
    controls->addStretch();
    for (QPushButton* b : { m_image5, m_image2, m_image1, m_image3, m_image4 })
        controls->addWidget(b);

    auto* layout = new QVBoxLayout(this);
    layout->addWidget(m_frame3, 1);
    layout->addWidget(m_frame5, 1);
    layout->addLayout(controls);

    m_selection.setHooks({
        [this](const QString& key) { return m_tree->treeModel()->checked(key) != Qt::Unchecked; },
        [this](const QString& key, bool checked) {
            m_tree->treeModel()->setChecked(key, checked ? Qt::Checked : Qt::Unchecked);
        },
        [this](const QString& key) {
            const TreeNode* node = m_tree->treeModel()->node(key);
            return node && node->parent ? node->parent->key : QString();
        },
        [this](const QString& key) { return m_tree->IsExpanded(key); },
        [this](const QString& key) { m_tree->Collapse(key); },
        [this](const QString& key) { m_tree->Reexpand(key); },
        [this] { return m_tree->SelectedKey(); },
        [this] { return hostChildrenOfKind(*m_tree->treeModel(), TreeNode::Kind::Drive); },
        [this] { return hostChildrenOfKind(*m_tree->treeModel(), TreeNode::Kind::SpecialRoot); },
        [this] { m_timer->start(); },
    });
}

scanTree::~scanTree() = default;

QLineEdit* scanTree::addCounter(
    QWidget* parent, const char* name, const char* labelName, const QString& caption, int row)
{
    auto* label = new QLabel(caption, parent);
    label->setObjectName(QLatin1String(labelName));
    auto* box = new QLineEdit(parent);
    box->setObjectName(QLatin1String(name));
    box->setReadOnly(true);
    label->setBuddy(box);
    auto* grid = static_cast<QGridLayout*>(parent->layout());
    grid->addWidget(label, row, 0);
    grid->addWidget(box, row, 1);
    return box;
}

QPushButton* scanTree::addButton(const char* name, const QString& caption)
{
    auto* button = new QPushButton(caption, this);
    button->setObjectName(QLatin1String(name));
    return button;
}

void scanTree::Form_Load()
{
    ApplyLanguage(this);
    if (const QScreen* s = screen() ? screen() : QGuiApplication::primaryScreen())
        move(s->availableGeometry().center() - rect().center());

    // Each load starts from empty lists and a tree read anew, in the form ScanHost names.
    m_selection.Clear();
    m_timer->stop();
    delete m_tree;
    m_tree = new SmartTree(TreeOptions::scanTree(G().ScanHost), m_frame3);
    m_tree->setObjectName(QStringLiteral("SmartDataTree"));
    m_frame3->layout()->addWidget(m_tree);
    m_tree->treeModel()->setChildCheckRule([this](const QString& childKey, Qt::CheckState parentState) {
        return m_selection.ChildTick(childKey, parentState != Qt::Unchecked) ? Qt::Checked : Qt::Unchecked;
    });
    connect(m_tree, &SmartTree::NodeCheck, this, &scanTree::NodeCheck);
    m_tree->FillRoots();

    // Selecting: the tree and Start.
    m_frame3->setVisible(true);
    m_frame5->setVisible(false);
    m_label3->setVisible(false);
    m_image5->setVisible(true);
    for (QPushButton* b : { m_image2, m_image1, m_image3, m_image4 })
        b->setVisible(false);
    SelectView(1);
}

void scanTree::NodeCheck(const QString& key, bool checked)
{
    m_selection.NodeCheck(key, checked, G().ScanHost);
}

void scanTree::Timer_Timer()
{
    m_timer->stop();
    m_selection.Timer_Timer();
}

void scanTree::SelectView(int view)
{
    m_view = view;
    for (int i = 0; i < 3; ++i) {
        QPalette p = m_shapes[i]->palette();
        p.setColor(QPalette::Window, i + 1 == view ? kTabOn : palette().color(QPalette::Base));
        m_shapes[i]->setPalette(p);
    }
    m_frame1->setVisible(view == 1);
    m_listView->setVisible(view == 2);
    m_listViewInf->setVisible(view == 3);
    for (QPushButton* b : { m_command6, m_command7, m_command8 })
        b->setVisible(view == 3);
}

void scanTree::Label12_Click()
{
    SelectView(1);
}

void scanTree::Label13_Click()
{
    SelectView(2);
}

void scanTree::Label14_Click()
{
    SelectView(3);
}

void scanTree::Image5_Click()
{
    if (m_session.running())
        return;
    for (QLineEdit* counter : { m_txtInfTot, m_txtInfFiles, m_txtNTot, m_txtSkipTot, m_txtScanTot })
        counter->setText(QStringLiteral("0"));
    m_frame1->setVisible(m_view == 1);
    m_frame5->setVisible(true);
    m_frame3->setVisible(false);
    m_label3->setVisible(true);
    m_image5->setVisible(false);
    m_image2->setVisible(true);
    m_image3->setVisible(true);
    // Runs to the closing message, pumping; the buttons act from inside the pump.
    m_refresh->start();
    m_session.Start(m_selection.ListAdd());
    m_refresh->stop();
}

void scanTree::showCurrent()
{
    m_textFolder->setText(m_session.textfolder());
    m_textScan->setText(m_session.TextScan());
}

void scanTree::showCounters()
{
    m_txtScanTot->setText(QString::number(m_session.txtscantot()));
    m_txtNTot->setText(QString::number(m_session.TxtNtot()));
    m_txtSkipTot->setText(QString::number(m_session.txtskiptot()));
    m_txtInfFiles->setText(QString::number(m_session.txtinfFiles()));
    m_txtInfTot->setText(QString::number(m_session.txtinftot()));
}

void scanTree::sessionFinished()
{
    // Before the closing words: the counters stand and only Back is left.
    m_refresh->stop();
    showCounters();
    m_textScan->setText(QStringLiteral("-----"));
    m_textFolder->setText(QStringLiteral("-----"));
    m_label3->setVisible(false);
    for (QPushButton* b : { m_image1, m_image2, m_image5, m_image3 })
        b->setVisible(false);
    m_image4->setVisible(true);
}

void scanTree::Image2_Click()
{
    m_image2->setVisible(false);
    m_image1->setVisible(true);
    m_session.Pause();
}

void scanTree::Image1_Click()
{
    m_image1->setVisible(false);
    m_image2->setVisible(true);
    m_session.Continue();
}

void scanTree::Image3_Click()
{
    m_session.Stop();
    for (QPushButton* b : { m_image3, m_image2, m_image1 })
        b->setVisible(false);
    m_image4->setVisible(true);
}

void scanTree::Image4_Click()
{
    m_image5->setVisible(true);
    m_image4->setVisible(false);
    m_label3->setVisible(false);
    m_frame3->setVisible(true);
    m_frame5->setVisible(false);
}

void scanTree::Command6_Click()
{
    DeleteTickedThreats(m_session.ListViewInf());
}

void scanTree::Command7_Click()
{
    DisinfectTickedThreats(m_session.ListViewInf());
}

void scanTree::Command8_Click()
{
    // Barra shows the sealing of each file; the verb itself knows no window.
    Barra barra(this);
    barra.Animation()->Open(LogicalPath::withSlash(G().ProgramFolder) + QStringLiteral("FileCopy.avi"));
    barra.LabelC()->setText(QStringLiteral("1\\1"));
    const TransferLabelsHook previous = SetTransferLabelsHook([&barra](const QString& name, const QString& folder) {
        barra.LabelF()->setText(name);
        barra.Label(4)->setText(folder);
    });
    barra.show();
    QuarantineTickedThreats(m_session.ListViewInf());
    SetTransferLabelsHook(previous);
    barra.close();
}

void scanTree::closeEvent(QCloseEvent* event)
{
    // A running session runs out at its next poll.
    m_session.Stop();
    event->accept();
    emit Closed();
}

} // namespace vmk
