#include "foundation/ui/MsgboxFrmYN.h"

#include "foundation/Globals.h"
#include "foundation/ui/ApplyLanguage.h"
#include "foundation/ui/ClickLabel.h"

#include <QLabel>
#include <QMouseEvent>

namespace vmk
{

MsgboxFrmYN::MsgboxFrmYN(QWidget* parent)
    : RoundedForm(parent)
    , m_label2(new ClickLabel(QStringLiteral("No"), this))
    , m_label3(new ClickLabel(QStringLiteral("Si"), this))
{
    setObjectName(QStringLiteral("MsgboxFrmYN"));
    setWindowTitle(QStringLiteral("Vormak"));
    setModal(true);
    setFixedSize(380, 150);
    m_lblCap = makeCaption(QRect(16, 14, 348, 82));
    m_lblCap->setMouseTracking(true);
    m_label3->setObjectName(QStringLiteral("Label3"));
    m_label3->setGeometry(92, 108, 90, 26);
    m_label2->setObjectName(QStringLiteral("Label2"));
    m_label2->setGeometry(198, 108, 90, 26);
    connect(m_label2, &ClickLabel::clicked, this, &MsgboxFrmYN::Label2_Click);
    connect(m_label3, &ClickLabel::clicked, this, &MsgboxFrmYN::Label3_Click);
    connect(m_label2, &ClickLabel::mouseMoved, this, [this] { underline(m_label2); });
    connect(m_label3, &ClickLabel::mouseMoved, this, [this] { underline(m_label3); });
    ApplyLanguage(this);
}

void MsgboxFrmYN::Label2_Click()
{
    G().MessageAnswer = 7;
    accept();
}

void MsgboxFrmYN::Label3_Click()
{
    G().MessageAnswer = 6;
    accept();
}

void MsgboxFrmYN::underline(ClickLabel* on)
{
    m_label2->setUnderlined(on == m_label2);
    m_label3->setUnderlined(on == m_label3);
}

void MsgboxFrmYN::mouseMoveEvent(QMouseEvent* event)
{
    underline(nullptr);
    RoundedForm::mouseMoveEvent(event);
}

} // namespace vmk
