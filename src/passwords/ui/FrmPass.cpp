#include "passwords/ui/FrmPass.h"

#include "foundation/Globals.h"
#include "foundation/Messages.h"
#include "foundation/ui/ApplyLanguage.h"
#include "passwords/OwnerPassword.h"

#include <QCheckBox>
#include <QGridLayout>
#include <QGuiApplication>
#include <QHBoxLayout>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QScreen>

namespace vmk::passwords
{

FrmPass::FrmPass(QWidget* parent)
    : QDialog(parent)
    , m_choosing(!OwnerPassword::isChosen())
    , m_text1(new QLineEdit(this))
    , m_text2(new QLineEdit(this))
    , m_label2(new QLabel(QStringLiteral("Confirmar contraseña"), this))
    , m_check1(new QCheckBox(QStringLiteral("Oculto"), this))
    , m_accept(new QPushButton(QStringLiteral("Aceptar"), this))
    , m_cancel(new QPushButton(QStringLiteral("Cancelar"), this))
{
    setObjectName(QStringLiteral("FrmPass"));
    setWindowTitle(QStringLiteral("Contraseña"));
    setModal(true);
    m_text1->setObjectName(QStringLiteral("Text1"));
    m_text2->setObjectName(QStringLiteral("Text2"));
    m_label2->setObjectName(QStringLiteral("Label2"));
    m_check1->setObjectName(QStringLiteral("Check1"));
    m_accept->setObjectName(QStringLiteral("CMDacept"));
    m_cancel->setObjectName(QStringLiteral("CMDcancel"));

    auto* grid = new QGridLayout(this);
    if (m_choosing) {
        auto* intro = new QLabel(QStringLiteral("Elija la contraseña del propietario"), this);
        intro->setObjectName(QStringLiteral("Label3"));
        grid->addWidget(intro, 0, 0, 1, 2);
    }
    auto* label1 = new QLabel(QStringLiteral("Contraseña"), this);
    label1->setObjectName(QStringLiteral("Label1"));
    grid->addWidget(label1, 1, 0);
    grid->addWidget(m_text1, 1, 1);
    grid->addWidget(m_label2, 2, 0);
    grid->addWidget(m_text2, 2, 1);
    m_label2->setVisible(m_choosing);
    m_text2->setVisible(m_choosing);
    grid->addWidget(m_check1, 3, 1);
    auto* buttons = new QHBoxLayout;
    buttons->addStretch();
    buttons->addWidget(m_accept);
    buttons->addWidget(m_cancel);
    grid->addLayout(buttons, 4, 0, 1, 2);
    m_text1->setMinimumWidth(220);
    m_check1->setChecked(true);
    // Enter is the box's own (Text1_KeyPress); a default button would accept twice.
    m_accept->setAutoDefault(false);
    m_cancel->setAutoDefault(false);

    connect(m_check1, &QCheckBox::clicked, this, &FrmPass::Check1_Click);
    connect(m_accept, &QPushButton::clicked, this, &FrmPass::CMDacept_Click);
    connect(m_cancel, &QPushButton::clicked, this, &FrmPass::CMDcancel_Click);
    // Enter in the box accepts, as the button does.
    connect(m_text1, &QLineEdit::returnPressed, this, &FrmPass::CMDacept_Click);
    connect(m_text2, &QLineEdit::returnPressed, this, &FrmPass::CMDacept_Click);
    Form_Load();
}

void FrmPass::Form_Load()
{
    ApplyLanguage(this);
    adjustSize();
    if (const QScreen* s = screen() ? screen() : QGuiApplication::primaryScreen())
        move(s->availableGeometry().center() - rect().center());
    G().PasswordOk = false;
    m_text1->setEchoMode(QLineEdit::Password);
    m_text2->setEchoMode(QLineEdit::Password);
}

void FrmPass::Check1_Click()
{
    const auto mode = m_check1->isChecked() ? QLineEdit::Password : QLineEdit::Normal;
    m_text1->setEchoMode(mode);
    m_text2->setEchoMode(mode);
}

void FrmPass::CMDacept_Click()
{
    if (m_choosing) {
        if (m_text1->text().isEmpty()) {
            ShowMessage(QStringLiteral("¡La contraseña no puede quedar vacía!"));
            return;
        }
        if (m_text1->text() != m_text2->text()) {
            ShowMessage(QStringLiteral("¡Las contraseñas no coinciden!"));
            return;
        }
        if (!OwnerPassword::choose(m_text1->text(), true))
            return;
    } else if (!OwnerPassword::check(m_text1->text())) {
        ShowMessage(QStringLiteral("¡Contraseña incorrecta!"));
        return;
    }
    G().PasswordOk = true;
    accept();
}

void FrmPass::CMDcancel_Click()
{
    reject();
}

bool AskOwnerPassword(QWidget* parent)
{
    FrmPass form(parent);
    form.exec();
    return G().PasswordOk;
}

} // namespace vmk::passwords
