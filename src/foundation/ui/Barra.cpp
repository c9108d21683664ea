#include "foundation/ui/Barra.h"

#include "foundation/Globals.h"
#include "foundation/Progress.h"
#include "foundation/ui/AnimationArea.h"
#include "foundation/ui/ApplyLanguage.h"

#include <QLabel>
#include <QProgressBar>
#include <QPushButton>

namespace vmk
{
namespace
{

QLabel* makeLabel(QWidget* parent, const char* name, const QString& text, const QRect& geometry)
{
    auto* label = new QLabel(text, parent);
    label->setObjectName(QString::fromLatin1(name));
    label->setGeometry(geometry);
    return label;
}

QProgressBar* makeBar(QWidget* parent, const char* name, const QRect& geometry)
{
    auto* bar = new QProgressBar(parent);
    bar->setObjectName(QString::fromLatin1(name));
    bar->setRange(0, 100);
    bar->setValue(0);
    bar->setGeometry(geometry);
    return bar;
}

} // namespace

Barra::Barra(QWidget* parent)
    : QDialog(parent, Qt::Dialog | Qt::WindowTitleHint | Qt::CustomizeWindowHint)
{
    setObjectName(QStringLiteral("Barra"));
    setWindowTitle(QStringLiteral("Vormak"));
    setModal(false);
    setFixedSize(420, 268);

    m_animation = new AnimationArea(this);
    m_animation->setGeometry(10, 8, 400, 52);
    m_labels[0] = makeLabel(this, "Label1", QStringLiteral("Tarea:"), QRect(12, 66, 70, 18));
    m_labelC = makeLabel(this, "LabelC", QStringLiteral("-"), QRect(86, 66, 320, 18));
    m_labels[1] = makeLabel(this, "Label2", QStringLiteral("Archivo:"), QRect(12, 86, 70, 18));
    m_labelF = makeLabel(this, "LabelF", QStringLiteral("-"), QRect(86, 86, 320, 18));
    m_labels[2] = makeLabel(this, "Label3", QStringLiteral("De:"), QRect(12, 106, 70, 18));
    m_labels[3] = makeLabel(this, "Label4", QStringLiteral("-"), QRect(86, 106, 320, 18));
    m_labels[4] = makeLabel(this, "Label5", QStringLiteral("Archivo actual"), QRect(12, 130, 396, 18));
    m_progressBarF = makeBar(this, "ProgressBarF", QRect(12, 150, 396, 20));
    m_labels[5] = makeLabel(this, "Label6", QStringLiteral("Porcentaje Total"), QRect(12, 176, 396, 18));
    m_progressBarT = makeBar(this, "ProgressBarT", QRect(12, 196, 396, 20));
    for (QLabel* l : { m_labelF, m_labelC, m_labels[3] })
        l->setTextFormat(Qt::PlainText);
    m_labelF->setTextInteractionFlags(Qt::NoTextInteraction);

    m_command1 = new QPushButton(QStringLiteral("Cancelar"), this);
    m_command1->setObjectName(QStringLiteral("Command1"));
    m_command1->setGeometry(160, 228, 100, 28);
    connect(m_command1, &QPushButton::clicked, this, &Barra::Command1_Click);

    ApplyLanguage(this);
}

Barra::~Barra()
{
    connectProgress(false);
}

QLabel* Barra::Label(int n) const
{
    return n >= 1 && n <= 6 ? m_labels[n - 1] : nullptr;
}

void Barra::Command1_Click()
{
    m_command1->setEnabled(false);
    G().CancelRequested = true;
}

void Barra::SetFileProgress(int percent)
{
    m_progressBarF->setValue(qBound(0, percent, 100));
}

void Barra::SetTotalProgress(int percent)
{
    m_progressBarT->setValue(qBound(0, percent, 100));
}

void Barra::showEvent(QShowEvent* event)
{
    QDialog::showEvent(event);
    connectProgress(true);
}

void Barra::hideEvent(QHideEvent* event)
{
    connectProgress(false);
    QDialog::hideEvent(event);
}

void Barra::connectProgress(bool on)
{
    if (on == m_hooked)
        return;
    if (on) {
        m_previousF = SetProgressBarFHook([this](int percent) { SetFileProgress(percent); });
        m_previousT = SetProgressBarTHook([this](int percent) { SetTotalProgress(percent); });
    } else {
        SetProgressBarFHook(m_previousF);
        SetProgressBarTHook(m_previousT);
        m_previousF = nullptr;
        m_previousT = nullptr;
    }
    m_hooked = on;
}

} // namespace vmk
