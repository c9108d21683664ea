#include "passwords/ui/FormNewlink.h"

#include "foundation/ui/ApplyLanguage.h"
#include "passwords/PasswordStore.h"
#include "passwords/ui/PassTree.h"

#include <QGridLayout>
#include <QHBoxLayout>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QTimer>

namespace vmk::passwords
{

FormNewlink::FormNewlink(PassTree& tree, QWidget* parent)
    : QWidget(parent, Qt::Window)
    , m_tree(tree)
    , m_text1(new QLineEdit(this))
    , m_text2(new QLineEdit(this))
    , m_text3(new QLineEdit(this))
    , m_accept(new QPushButton(QStringLiteral("Aceptar"), this))
    , m_cancel(new QPushButton(QStringLiteral("Cancelar"), this))
    , m_close(new QPushButton(QStringLiteral("Cerrar"), this))
{
    setObjectName(QStringLiteral("FormNewlink"));
    setWindowTitle(QStringLiteral("Contraseñas"));
    setAttribute(Qt::WA_DeleteOnClose);
    auto* grid = new QGridLayout(this);
    const QString captions[3] = { QStringLiteral("Sitio"), QStringLiteral("Usuario"), QStringLiteral("Contraseña") };
    QLineEdit* boxes[3] = { m_text1, m_text2, m_text3 };
    for (int i = 0; i < 3; ++i) {
        auto* label = new QLabel(captions[i], this);
        label->setObjectName(QStringLiteral("Label%1").arg(i + 1));
        boxes[i]->setObjectName(QStringLiteral("Text%1").arg(i + 1));
        boxes[i]->setMinimumWidth(240);
        grid->addWidget(label, i, 0);
        grid->addWidget(boxes[i], i, 1);
    }
    m_accept->setObjectName(QStringLiteral("CMDacept"));
    m_cancel->setObjectName(QStringLiteral("CMDcancel"));
    m_close->setObjectName(QStringLiteral("Command1"));
    auto* buttons = new QHBoxLayout;
    buttons->addStretch();
    buttons->addWidget(m_accept);
    buttons->addWidget(m_cancel);
    buttons->addWidget(m_close);
    grid->addLayout(buttons, 3, 0, 1, 2);
    // New and edit by design; a view swaps the buttons.
    m_close->setVisible(false);
    connect(m_accept, &QPushButton::clicked, this, &FormNewlink::CMDacept_Click);
    connect(m_cancel, &QPushButton::clicked, this, &FormNewlink::CMDcancel_Click);
    connect(m_close, &QPushButton::clicked, this, &FormNewlink::Command1_Click);
    ApplyLanguage(this);
}

void FormNewlink::CMDacept_Click()
{
    PswNodes& nodes = m_tree.nodes();
    if (!PV().PendingLink.isEmpty()) {
        // The index was taken when the form opened; whatever stands there now goes.
        const int i = PV().PendingLink.toInt();
        nodes.Remove(i + 1);
        nodes.Remove(i);
        m_tree.Refresh();
    }
    PV().PendingLink = m_text1->text() + u';' + m_text2->text() + u';' + m_text3->text();
    m_tree.Timer1()->start();
    close();
}

void FormNewlink::CMDcancel_Click()
{
    close();
}

void FormNewlink::Command1_Click()
{
    close();
}

} // namespace vmk::passwords
