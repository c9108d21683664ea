#include "backup/ui/RunPanel.h"

#include "backup/SkipReason.h"
#include "foundation/Translate.h"

#include <QGridLayout>
#include <QHeaderView>
#include <QLabel>
#include <QProgressBar>
#include <QTreeWidget>
#include <QVBoxLayout>

namespace vmk
{

RunPanel::RunPanel(QWidget* parent)
    : QFrame(parent)
    , m_label12(new QLabel(this))
    , m_progress(new QProgressBar(this))
    , m_listView1(new QTreeWidget(this))
{
    setObjectName(QStringLiteral("Frame2"));
    auto* layout = new QVBoxLayout(this);
    m_label12->setObjectName(QStringLiteral("Label12"));
    QFont stageFont = m_label12->font();
    stageFont.setBold(true);
    m_label12->setFont(stageFont);
    layout->addWidget(m_label12);

    auto* counters = new QGridLayout;
    layout->addLayout(counters);
    m_total = addCounter("lblFilesTotal", "Label8", QStringLiteral("Total"), 0, 0);
    m_processed = addCounter("lblFilesProcessed", "Label9", QStringLiteral("Procesados"), 1, 0);
    m_skipped = addCounter("lblFilesSkipped", "Label10", QStringLiteral("No procesados"), 2, 0);
    m_status = addCounter("lblstatus", "Label11", QStringLiteral("Porcentaje"), 0, 2);
    m_scanned = addCounter("Label14", "Label13", QStringLiteral("Analizados"), 1, 2);
    m_infected = addCounter("Label16", "Label15", QStringLiteral("Infectados"), 2, 2);
    counters->setColumnStretch(1, 1);
    counters->setColumnStretch(3, 1);

    m_progress->setObjectName(QStringLiteral("ProgressBar1"));
    m_progress->setRange(0, 100);
    layout->addWidget(m_progress);

    m_listView1->setObjectName(QStringLiteral("ListView1"));
    m_listView1->setRootIsDecorated(false);
    m_listView1->setUniformRowHeights(true);
    m_listView1->setHeaderLabels({ QStringLiteral("Archivos no procesados"), QStringLiteral("Razón") });
    m_listView1->header()->resizeSection(0, 380);
    layout->addWidget(m_listView1, 1);
}

QLabel* RunPanel::addCounter(const char* name, const char* captionName, const QString& caption, int row, int column)
{
    auto* grid = static_cast<QGridLayout*>(layout()->itemAt(1)->layout());
    auto* label = new QLabel(caption, this);
    label->setObjectName(QLatin1String(captionName));
    auto* value = new QLabel(QStringLiteral("0"), this);
    value->setObjectName(QLatin1String(name));
    grid->addWidget(label, row, column);
    grid->addWidget(value, row, column + 1);
    return value;
}

void RunPanel::Reset()
{
    for (QLabel* counter : { m_total, m_processed, m_skipped, m_status, m_scanned, m_infected })
        counter->setText(QStringLiteral("0"));
    m_listView1->clear();
    m_progress->setValue(0);
    m_progress->setVisible(true);
}

void RunPanel::ShowStage(const QString& word)
{
    m_label12->setText(Translate(word));
}

void RunPanel::GlobalStatus(int total, int processed, int skipped, int percent)
{
    ShowStage(QStringLiteral("Comprimiendo"));
    m_status->setText(QString::number(percent));
    m_total->setText(QString::number(total));
    m_processed->setText(QString::number(processed));
    m_skipped->setText(QString::number(skipped));
    m_progress->setValue(percent);
}

void RunPanel::SkippingFile(const QString& name, int reason)
{
    auto* row = new QTreeWidgetItem(m_listView1, { name, SkipReason(reason) });
    row->setToolTip(0, name);
}

void RunPanel::TempFileProgress(int percent)
{
    ShowStage(QStringLiteral("Creando archivo temporal"));
    m_progress->setValue(percent);
}

void RunPanel::WriteProgress(int percent)
{
    ShowStage(QStringLiteral("Escribiendo al dispositivo"));
    m_progress->setValue(percent);
}

void RunPanel::CountScanned(bool infected)
{
    if (infected)
        m_infected->setText(QString::number(m_infected->text().toInt() + 1));
    m_scanned->setText(QString::number(m_scanned->text().toInt() + 1));
}

} // namespace vmk
