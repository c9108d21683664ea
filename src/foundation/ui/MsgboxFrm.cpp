#include "foundation/ui/MsgboxFrm.h"

#include "foundation/ui/ApplyLanguage.h"
#include "foundation/ui/ClickLabel.h"

#include <QLabel>

namespace vmk
{

MsgboxFrm::MsgboxFrm(QWidget* parent)
    : RoundedForm(parent)
    , m_label1(new ClickLabel(QStringLiteral("Aceptar"), this))
{
    setObjectName(QStringLiteral("MsgboxFrm"));
    setWindowTitle(QStringLiteral("Vormak"));
    setModal(true);
    setFixedSize(380, 150);
    m_lblCap = makeCaption(QRect(16, 14, 348, 82));
    m_label1->setObjectName(QStringLiteral("Label1"));
    m_label1->setGeometry(145, 108, 90, 26);
    connect(m_label1, &ClickLabel::clicked, this, &MsgboxFrm::Label1_Click);
    ApplyLanguage(this);
}

void MsgboxFrm::Label1_Click()
{
    accept();
}

} // namespace vmk
