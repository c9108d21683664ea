#include "foundation/ui/BarraUpdate.h"

#include "foundation/Globals.h"
#include "foundation/ui/AnimationArea.h"
#include "foundation/ui/ApplyLanguage.h"

#include <QLabel>
#include <QProgressBar>
#include <QPushButton>

namespace vmk
{

BarraUpdate::BarraUpdate(QWidget* parent)
    : QDialog(parent, Qt::Dialog | Qt::WindowTitleHint | Qt::CustomizeWindowHint)
    , m_progressBar1(new QProgressBar(this))
    , m_picFiles(new AnimationArea(this))
    , m_label1(new QLabel(QStringLiteral("Por favor espere..."), this))
    , m_command1(new QPushButton(QStringLiteral("Cancelar"), this))
{
    setObjectName(QStringLiteral("BarraUpdate"));
    setWindowTitle(QStringLiteral("Vormak"));
    setModal(false);
    setFixedSize(380, 170);

    m_picFiles->setObjectName(QStringLiteral("PicFiles"));
    m_picFiles->setGeometry(10, 8, 360, 52);
    m_picFiles->Open(QStringLiteral("\\Update.avi"));
    m_label1->setObjectName(QStringLiteral("Label1"));
    m_label1->setGeometry(12, 66, 356, 20);
    m_progressBar1->setObjectName(QStringLiteral("ProgressBar1"));
    m_progressBar1->setRange(0, 100);
    m_progressBar1->setValue(0);
    m_progressBar1->setTextVisible(false);
    m_progressBar1->setGeometry(12, 92, 356, 20);
    m_command1->setObjectName(QStringLiteral("Command1"));
    m_command1->setGeometry(140, 126, 100, 28);
    connect(m_command1, &QPushButton::clicked, this, &BarraUpdate::Command1_Click);

    m_timer1.setObjectName(QStringLiteral("Timer1"));
    m_timer1.setInterval(30);
    connect(&m_timer1, &QTimer::timeout, this, &BarraUpdate::Timer1_Timer);
    m_timer1.start();

    ApplyLanguage(this);
}

void BarraUpdate::Timer1_Timer()
{
    int value = m_progressBar1->value() + 5;
    if (value == 100)
        value = 0;
    m_progressBar1->setValue(value);
}

void BarraUpdate::Command1_Click()
{
    m_command1->setEnabled(false);
    G().CancelRequested = true;
}

} // namespace vmk
