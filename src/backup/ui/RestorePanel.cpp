#include "backup/ui/RestorePanel.h"

#include "backup/ui/Form3.h"
#include "components/zip/ZipArchiver.h"
#include "components/zip/ZipCodes.h"
#include "foundation/FileServices.h"
#include "foundation/Messages.h"
#include "foundation/Translate.h"
#include "platform/DriveMap.h"

#include <QCheckBox>
#include <QGridLayout>
#include <QHeaderView>
#include <QLineEdit>
#include <QProgressBar>
#include <QPushButton>
#include <QRadioButton>
#include <QTreeWidget>

namespace vmk
{

namespace
{
constexpr int KeyRole = Qt::UserRole + 1;
}

RestorePanel::RestorePanel(zip::ZipArchiver& zipControl, QWidget* parent)
    : QFrame(parent)
    , m_zip(zipControl)
    , m_restore(zipControl)
    , m_smartRestore(new QTreeWidget(this))
    , m_check1(new QCheckBox(this))
    , m_option1(new QRadioButton(QStringLiteral("Ruta predeterminada"), this))
    , m_option2(new QRadioButton(QStringLiteral("Ruta alternativa"), this))
    , m_text2(new QLineEdit(this))
    , m_command13(new QPushButton(QStringLiteral("..."), this))
    , m_image3(new QPushButton(QStringLiteral("Restaurar"), this))
    , m_image4(new QPushButton(QStringLiteral("Cerrar"), this))
    , m_progressBar(new QProgressBar(this))
{
    setObjectName(QStringLiteral("Frame5"));
    m_smartRestore->setObjectName(QStringLiteral("SmartRestore"));
    m_check1->setObjectName(QStringLiteral("Check1"));
    m_option1->setObjectName(QStringLiteral("Option1"));
    m_option2->setObjectName(QStringLiteral("Option2"));
    m_text2->setObjectName(QStringLiteral("Text2"));
    m_command13->setObjectName(QStringLiteral("Command13"));
    m_image3->setObjectName(QStringLiteral("Image3"));
    m_image4->setObjectName(QStringLiteral("Image4"));
    m_progressBar->setObjectName(QStringLiteral("ProgressBar"));

    m_smartRestore->setColumnCount(3);
    m_smartRestore->setHeaderLabels(
        { QStringLiteral("Archivo"), QStringLiteral("Ruta"), QStringLiteral("Tamaño (bytes)") });
    m_smartRestore->setRootIsDecorated(false);
    m_smartRestore->setUniformRowHeights(true);
    m_smartRestore->header()->setStretchLastSection(false);
    m_option1->setChecked(true);
    m_text2->setVisible(false);
    m_command13->setVisible(false);
    m_check1->setVisible(false);
    m_progressBar->setRange(0, 100);
    m_progressBar->setValue(0);

    auto* grid = new QGridLayout(this);
    grid->addWidget(m_check1, 0, 0, 1, 4);
    grid->addWidget(m_smartRestore, 1, 0, 1, 4);
    grid->addWidget(m_progressBar, 2, 0, 1, 4);
    grid->addWidget(m_option1, 3, 0);
    grid->addWidget(m_option2, 3, 1);
    grid->addWidget(m_text2, 4, 0, 1, 3);
    grid->addWidget(m_command13, 4, 3);
    grid->addWidget(m_image3, 5, 2);
    grid->addWidget(m_image4, 5, 3);

    connect(m_check1, &QCheckBox::clicked, this, &RestorePanel::Check1_Click);
    connect(m_option1, &QRadioButton::clicked, this, &RestorePanel::Option1_Click);
    connect(m_option2, &QRadioButton::clicked, this, &RestorePanel::Option2_Click);
    connect(m_command13, &QPushButton::clicked, this, &RestorePanel::Command13_Click);
    connect(m_image3, &QPushButton::clicked, this, &RestorePanel::Image3_Click);
    connect(m_image4, &QPushButton::clicked, this, &RestorePanel::Image4_Click);
}

void RestorePanel::RestorFiles_Click(const QString& archiveKey, const QString& caption)
{
    m_smartRestore->clear();
    m_progressBar->setValue(0);
    m_progressBar->setVisible(true);
    m_archive = archiveKey;
    m_check1->setText(caption);
    m_check1->setChecked(false);
    m_check1->setVisible(true);

    // The bar follows the listing, and goes at its end.
    auto& listStatus = m_zip.events().listStatus;
    const auto owners = listStatus;
    listStatus = [this](int percent) {
        m_progressBar->setValue(percent);
        if (percent == 100)
            m_progressBar->setVisible(false);
    };
    QList<RestoreRow> rows;
    const int result = m_restore.ListArchive(archiveKey, rows);
    listStatus = owners;
    if (result != zip::ZipOk) {
        m_progressBar->setVisible(false);
        const QString shown = DriveMap::instance().toNative(archiveKey);
        ShowMessage(Translate(QStringLiteral("¡No se pudo leer el archivo de respaldo!")) + "\n"
            + (shown.isEmpty() ? archiveKey : shown) + " (" + QString::number(result) + ")");
        return;
    }
    QList<QTreeWidgetItem*> items;
    items.reserve(rows.size());
    for (const RestoreRow& row : rows) {
        auto* item = new QTreeWidgetItem({ row.text, row.path, QString::number(row.size) });
        item->setData(0, KeyRole, row.key);
        item->setFlags(item->flags() | Qt::ItemIsUserCheckable);
        item->setCheckState(0, Qt::Unchecked);
        items << item;
    }
    // One insert for the whole archive.
    m_smartRestore->addTopLevelItems(items);
}

void RestorePanel::Check1_Click()
{
    const Qt::CheckState state = m_check1->isChecked() ? Qt::Checked : Qt::Unchecked;
    for (int i = 0; i < m_smartRestore->topLevelItemCount(); ++i)
        m_smartRestore->topLevelItem(i)->setCheckState(0, state);
}

void RestorePanel::Option1_Click()
{
    m_text2->setVisible(false);
    m_command13->setVisible(false);
}

void RestorePanel::Option2_Click()
{
    m_text2->setVisible(true);
    m_command13->setVisible(true);
}

void RestorePanel::Command13_Click()
{
    Form3 picker(m_text2, this);
    picker.exec();
}

QStringList RestorePanel::CheckedKeys() const
{
    QStringList keys;
    for (int i = 0; i < m_smartRestore->topLevelItemCount(); ++i) {
        const QTreeWidgetItem* item = m_smartRestore->topLevelItem(i);
        if (item->checkState(0) == Qt::Checked)
            keys << item->data(0, KeyRole).toString();
    }
    return keys;
}

void RestorePanel::Image3_Click()
{
    QString altFolder;
    if (m_option2->isChecked()) {
        altFolder = m_text2->text();
        if (altFolder.isEmpty() || FolderMissing(altFolder)) {
            ShowMessage(QStringLiteral("¡Ruta alternativa inválida!"));
            return;
        }
        if (!altFolder.endsWith('\\'))
            altFolder += '\\';
    }
    emit RestoreStarting();
    // No error and no closing message: the run panel shows the progress and the
    // entries that were left out, each with its reason.
    m_outcome = m_restore.Restore(m_archive, CheckedKeys(), altFolder);
    emit RestoreFinished();
}

void RestorePanel::Image4_Click()
{
    m_check1->setVisible(false);
    emit CloseRequested();
}

} // namespace vmk
