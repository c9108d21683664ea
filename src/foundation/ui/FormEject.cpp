#include "foundation/ui/FormEject.h"

#include "foundation/Translate.h"
#include "foundation/ui/ApplyLanguage.h"
#include "foundation/ui/ClickLabel.h"

#include <QFont>
#include <QLabel>

namespace vmk
{

FormEject::FormEject(QWidget* parent)
    : RoundedForm(parent)
    , m_label1(new ClickLabel(QStringLiteral("Aceptar"), this))
{
    setObjectName(QStringLiteral("FormEject"));
    setWindowTitle(QStringLiteral("Vormak"));
    setModal(false);
    setFixedSize(340, 120);
    m_lblCap = makeCaption(QRect(16, 14, 308, 56));
    m_label1->setObjectName(QStringLiteral("Label1"));
    m_label1->setGeometry(125, 80, 90, 26);
    // This form does not run the whole language pass: only its notice is translated.
    for (QWidget* w : { static_cast<QWidget*>(m_lblCap), static_cast<QWidget*>(m_label1) }) {
        QFont f = w->font();
        f.setFamily(QString::fromLatin1(FormFontFamily()));
        f.setPointSize(9);
        w->setFont(f);
    }
    m_lblCap->setText(Translate(QStringLiteral("Terminando servicios...")));
    connect(m_label1, &ClickLabel::clicked, this, &FormEject::Label1_Click);
}

void FormEject::Label1_Click()
{
    close();
}

} // namespace vmk
