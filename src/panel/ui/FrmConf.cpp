#include "panel/ui/FrmConf.h"

#include "foundation/Globals.h"
#include "foundation/Messages.h"
#include "foundation/SettingKey.h"
#include "foundation/Settings.h"
#include "foundation/Translate.h"
#include "foundation/WalkGuard.h"
#include "foundation/ui/ApplyLanguage.h"
#include "foundation/ui/ClickLabel.h"
#include "panel/ui/Form6.h"
#include "passwords/OwnerPassword.h"
#include "scanner/Antivir.h"

#include <QCheckBox>
#include <QCloseEvent>
#include <QComboBox>
#include <QFrame>
#include <QGridLayout>
#include <QGuiApplication>
#include <QHBoxLayout>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QRadioButton>
#include <QScreen>
#include <QVBoxLayout>

namespace vmk::panel
{
namespace
{
const QString kPageStyle = QStringLiteral("QLabel{color:#0b4d5c;font-weight:bold;padding:6px 4px;}");
const QString kCurrentPageStyle
    = QStringLiteral("QLabel{color:#0b4d5c;font-weight:bold;padding:6px 4px;background:#d8efe8;border-radius:3px;}");
const QString kButtonStyle = QStringLiteral("QLabel{color:#0b4d5c;font-weight:bold;padding:4px 12px;"
                                            "border:1px solid #8aa7b3;border-radius:3px;background:#eef4f6;}");

template<typename T> T* named(T* w, const char* name)
{
    w->setObjectName(QLatin1String(name));
    return w;
}

QLabel* caption(QWidget* parent, const char* name, const QString& text)
{
    return named(new QLabel(text, parent), name);
}

QCheckBox* check(QWidget* parent, const char* name, const QString& text)
{
    return named(new QCheckBox(text, parent), name);
}

QLineEdit* box(QWidget* parent, const char* name)
{
    auto* e = named(new QLineEdit(parent), name);
    e->setMinimumWidth(220);
    return e;
}

QComboBox* combo(QWidget* parent, const char* name, const QStringList& items, bool editable)
{
    auto* c = named(new QComboBox(parent), name);
    c->setEditable(editable);
    c->addItems(items);
    return c;
}

QRadioButton* option(QWidget* parent, const char* name, const QString& text)
{
    return named(new QRadioButton(text, parent), name);
}

// A row of widgets in one cell, so captions such as "Abortar después de" read on.
QWidget* inRow(QWidget* parent, std::initializer_list<QWidget*> widgets)
{
    auto* row = new QWidget(parent);
    auto* h = new QHBoxLayout(row);
    h->setContentsMargins(0, 0, 0, 0);
    for (QWidget* w : widgets) {
        w->setParent(row);
        h->addWidget(w);
    }
    h->addStretch();
    return row;
}
} // namespace

FrmConf::FrmConf(QWidget* parent)
    : QWidget(parent, Qt::Window)
{
    setObjectName(QStringLiteral("FrmConf"));
    setWindowTitle(QStringLiteral("Configuración"));

    // The page labels on the left, the pages on the right, Aceptar and Cancelar below.
    auto* pages = new QVBoxLayout;
    const std::pair<const char*, QString> labels[5] = { { "Label6", QStringLiteral("Analizador") },
        { "Label7", QStringLiteral("Adm. Archivos") }, { "Label8", QStringLiteral("Respaldos") },
        { "Label9", QStringLiteral("Cuarentena") }, { "Label11", QStringLiteral("Extras") } };
    void (FrmConf::*clicks[5])() = { &FrmConf::Label6_Click, &FrmConf::Label7_Click, &FrmConf::Label8_Click,
        &FrmConf::Label9_Click, &FrmConf::Label11_Click };
    for (int i = 0; i < 5; ++i) {
        auto* l = named(new ClickLabel(labels[i].second, this), labels[i].first);
        l->setStyleSheet(kPageStyle);
        l->setCursor(Qt::PointingHandCursor);
        connect(l, &ClickLabel::clicked, this, clicks[i]);
        pages->addWidget(l);
    }
    pages->addStretch();
    // The pages share one place; only the chosen one is shown.
    auto* frames = new QGridLayout;

    // Frame1: the scanner.
    QFrame* f = addFrame("Frame1");
    auto* g = new QGridLayout(f);
    g->addWidget(check(f, "Check1", QStringLiteral("Analizar archivos comprimidos")), 0, 0, 1, 2);
    g->addWidget(caption(f, "Label24", QStringLiteral("Tamaño maximo de archivos")), 1, 0);
    g->addWidget(inRow(f,
                     { combo(f, "Combo5",
                           { QStringLiteral("Unlimited"), QStringLiteral("50M"), QStringLiteral("100M"),
                               QStringLiteral("250M"), QStringLiteral("500M"), QStringLiteral("1G") },
                           true),
                         caption(f, "Label34", QStringLiteral("M=Megabytes   G=Gigabytes")) }),
        1, 1);
    g->addWidget(caption(f, "Label2", QStringLiteral("Abortar después de ")), 2, 0);
    g->addWidget(inRow(f,
                     { combo(f, "Combo1",
                           { QStringLiteral("Never"), QStringLiteral("30"), QStringLiteral("60"), QStringLiteral("120"),
                               QStringLiteral("240"), QStringLiteral("480") },
                           true),
                         caption(f, "Label3", QStringLiteral("segundos")) }),
        2, 1);
    g->addWidget(check(f, "Check5", QStringLiteral("Analizar formato de bases de datos de correos")), 3, 0, 1, 2);
    const std::pair<const char*, QString> kinds[7] = { { "Check3", QStringLiteral("Virus") },
        { "Check7", QStringLiteral("Backdoors") }, { "Check4", QStringLiteral("Spyware") },
        { "Check6", QStringLiteral("Adware") }, { "Check8", QStringLiteral("Marcadores") },
        { "Check9", QStringLiteral("Bromas pesadas") }, { "Check10", QStringLiteral("Juegos") } };
    for (int i = 0; i < 7; ++i)
        g->addWidget(check(f, kinds[i].first, kinds[i].second), 4 + i / 2, i % 2);
    // Virus and Backdoors are always searched for: shown ticked, with no handler.
    control<QCheckBox>("Check3")->setChecked(true);
    control<QCheckBox>("Check7")->setChecked(true);
    g->setRowStretch(8, 1);
    frames->addWidget(f, 0, 0);

    // Frame3: the file manager.
    f = addFrame("Frame3");
    g = new QGridLayout(f);
    g->addWidget(check(f, "Check13", QStringLiteral("Analizar archivos en todas las operaciones")), 0, 0, 1, 3);
    g->addWidget(caption(f, "Label18", QStringLiteral("Carpeta compimida")), 1, 0);
    g->addWidget(box(f, "Text6"), 1, 1);
    g->addWidget(named(new QPushButton(QStringLiteral("..."), f), "Command2"), 1, 2);
    g->addWidget(caption(f, "Label19", QStringLiteral("Algoritmo de compresión")), 2, 0);
    g->addWidget(
        combo(f, "Combo2", { QStringLiteral("BWT"), QStringLiteral("PkZip"), QStringLiteral("BZip2") }, false), 2, 1);
    g->addWidget(caption(f, "Label20", QStringLiteral("Carpeta encriptada")), 3, 0);
    g->addWidget(box(f, "Text7"), 3, 1);
    g->addWidget(named(new QPushButton(QStringLiteral("..."), f), "Command3"), 3, 2);
    g->addWidget(caption(f, "Label21", QStringLiteral("Algoritmo de encripción")), 4, 0);
    g->addWidget(combo(f, "Combo3", { QStringLiteral("Rijndael (AES)"), QStringLiteral("Two-Fish") }, false), 4, 1);
    g->addWidget(caption(f, "Label22", QStringLiteral("Contraseña")), 5, 0);
    QLineEdit* text8 = box(f, "Text8");
    g->addWidget(text8, 5, 1);
    addMaskSwitch(g, 5, 2, "Check16", text8);
    g->addWidget(option(f, "Option7", QStringLiteral("Vía sistema operativo")), 6, 0, 1, 3);
    g->addWidget(option(f, "Option6", QStringLiteral("Mover a papelera de reciclaje")), 7, 0, 1, 3);
    g->addWidget(option(f, "Option8", QStringLiteral("Modo seguro")), 8, 0, 1, 3);
    g->setRowStretch(9, 1);
    frames->addWidget(f, 0, 0);

    // Frame5: backups.
    f = addFrame("Frame5");
    g = new QGridLayout(f);
    g->addWidget(check(f, "Check17", QStringLiteral("Analizar archivos antes de respaldar")), 0, 0, 1, 3);
    g->addWidget(caption(f, "Label25", QStringLiteral("Carpeta de respaldos")), 1, 0);
    g->addWidget(box(f, "Text9"), 1, 1);
    g->addWidget(named(new QPushButton(QStringLiteral("..."), f), "Command5"), 1, 2);
    g->addWidget(caption(f, "Label10", QStringLiteral("Algoritmo de compresión")), 2, 0);
    g->addWidget(
        combo(f, "Combo6", { QStringLiteral("BWT"), QStringLiteral("PkZip"), QStringLiteral("BZip2") }, false), 2, 1);
    g->addWidget(caption(f, "Label30", QStringLiteral("Servidor")), 3, 0);
    g->addWidget(box(f, "Text13"), 3, 1);
    g->addWidget(caption(f, "Label27", QStringLiteral("Usuario")), 4, 0);
    g->addWidget(box(f, "Text10"), 4, 1);
    g->addWidget(caption(f, "Label29", QStringLiteral("Contraseña")), 5, 0);
    QLineEdit* text12 = box(f, "Text12");
    g->addWidget(text12, 5, 1);
    addMaskSwitch(g, 5, 2, "Check19", text12);
    g->setRowStretch(6, 1);
    frames->addWidget(f, 0, 0);

    // Frame4: quarantine.
    f = addFrame("Frame4");
    g = new QGridLayout(f);
    g->addWidget(caption(f, "Label28", QStringLiteral("Carpeta de cuarentena")), 0, 0);
    g->addWidget(box(f, "Text11"), 0, 1);
    g->addWidget(named(new QPushButton(QStringLiteral("..."), f), "Command7"), 0, 2);
    g->addWidget(caption(f, "Label31", QStringLiteral("Mover archivos desinfectados a")), 1, 0);
    g->addWidget(box(f, "Text14"), 1, 1);
    g->addWidget(named(new QPushButton(QStringLiteral("..."), f), "Command4"), 1, 2);
    g->addWidget(check(f, "Check15", QStringLiteral("Borrar archivos después de")), 2, 0);
    g->addWidget(
        inRow(f, { combo(f, "Combo4", { QStringLiteral("60") }, true), caption(f, "Label23", QStringLiteral("días")) }),
        2, 1);
    g->addWidget(check(f, "Check14", QStringLiteral("Analizar después de actualizar")), 3, 0, 1, 3);
    g->setRowStretch(4, 1);
    frames->addWidget(f, 0, 0);

    // Frame2: update source and proxy, out of reach in this build.
    f = addFrame("Frame2");
    g = new QGridLayout(f);
    g->addWidget(option(f, "Option4", QStringLiteral("Internet")), 0, 0);
    g->addWidget(option(f, "Option5", QStringLiteral("Otra")), 1, 0);
    g->addWidget(box(f, "Text1"), 1, 1);
    g->addWidget(named(new QPushButton(QStringLiteral("..."), f), "Command1"), 1, 2);
    g->addWidget(check(f, "Check11", QStringLiteral("Proxy")), 2, 0);
    g->addWidget(check(f, "Check12", QStringLiteral("Autentificación")), 2, 1);
    const std::pair<const char*, QString> proxy[4]
        = { { "Label35", QStringLiteral("Dirección") }, { "Label36", QStringLiteral("Puerto") },
              { "Label37", QStringLiteral("Usuario") }, { "Label38", QStringLiteral("Contraseña") } };
    const char* proxyBoxes[4] = { "Text2", "Text3", "Text4", "Text5" };
    for (int i = 0; i < 4; ++i) {
        g->addWidget(caption(f, proxy[i].first, proxy[i].second), 3 + i, 0);
        g->addWidget(box(f, proxyBoxes[i]), 3 + i, 1);
    }
    addMaskSwitch(g, 6, 2, "Check18", control<QLineEdit>("Text5"));
    g->setRowStretch(7, 1);
    frames->addWidget(f, 0, 0);

    // The "..." buttons and the boxes they fill.
    const std::pair<const char*, const char*> pickers[6] = { { "Command1", "Text1" }, { "Command2", "Text6" },
        { "Command3", "Text7" }, { "Command4", "Text14" }, { "Command5", "Text9" }, { "Command7", "Text11" } };
    for (const auto& [button, textBox] : pickers) {
        QPushButton* b = control<QPushButton>(button);
        b->setFixedWidth(32);
        connect(b, &QPushButton::clicked, this, [this, textBox] { PickFolder(textBox); });
    }

    auto* accept = named(new ClickLabel(QStringLiteral("Aceptar"), this), "Label32");
    auto* cancel = named(new ClickLabel(QStringLiteral("Cancelar"), this), "Label33");
    for (ClickLabel* l : { accept, cancel }) {
        l->setStyleSheet(kButtonStyle);
        l->setCursor(Qt::PointingHandCursor);
    }
    connect(accept, &ClickLabel::clicked, this, &FrmConf::Label32_Click);
    connect(cancel, &ClickLabel::clicked, this, &FrmConf::Label33_Click);
    auto* buttons = new QHBoxLayout;
    buttons->addStretch();
    buttons->addWidget(accept);
    buttons->addWidget(cancel);

    auto* body = new QHBoxLayout;
    body->addLayout(pages);
    auto* rule = new QFrame(this);
    rule->setFrameShape(QFrame::VLine);
    rule->setFrameShadow(QFrame::Sunken);
    body->addWidget(rule);
    body->addLayout(frames, 1);
    auto* layout = new QVBoxLayout(this);
    layout->addLayout(body, 1);
    layout->addLayout(buttons);

    // Text8 is the owner's password, not a setting of the file.
    connect(text8, &QLineEdit::textChanged, this, [this](const QString& t) {
        G().PassPhrase = t;
        m_passTyped = true;
    });
    for (const SettingKey* k : SettingKeysBy(&SettingKey::DialogOrder))
        bind(*k);
    Form_Load();
}

QFrame* FrmConf::addFrame(const char* name)
{
    auto* f = named(new QFrame(this), name);
    f->setFrameShape(QFrame::StyledPanel);
    f->setMinimumSize(520, 340);
    f->setVisible(false);
    m_frames.insert(QLatin1String(name), f);
    return f;
}

void FrmConf::addMaskSwitch(QGridLayout* grid, int row, int column, const char* name, QLineEdit* masked)
{
    QCheckBox* c = check(grid->parentWidget(), name, QStringLiteral("Oculto"));
    c->setChecked(true);
    grid->addWidget(c, row, column);
    connect(c, &QCheckBox::toggled, masked,
        [masked](bool on) { masked->setEchoMode(on ? QLineEdit::Password : QLineEdit::Normal); });
}

// Each control writes its setting at every change, as its row of the table says.
void FrmConf::bind(const SettingKey& k)
{
    QString* text = k.TextVariable ? &(S().*(k.TextVariable)) : nullptr;
    int* number = k.IntVariable ? &(S().*(k.IntVariable)) : nullptr;
    const char* name = k.DialogControls[0];
    switch (k.Binding) {
    case DialogBinding::Check:
        connect(control<QCheckBox>(name), &QCheckBox::toggled, this,
            [text](bool on) { *text = QString::number(on ? 1 : 0); });
        break;
    case DialogBinding::CheckNumber:
        connect(control<QCheckBox>(name), &QCheckBox::toggled, this, [number](bool on) { *number = on ? 1 : 0; });
        break;
    case DialogBinding::ComboZeroText: {
        QComboBox* c = control<QComboBox>(name);
        connect(c, &QComboBox::activated, this,
            [c, text](int index) { *text = index == 0 ? QStringLiteral("0") : c->itemText(index); });
        break;
    }
    case DialogBinding::ListIndex:
        connect(control<QComboBox>(name), &QComboBox::currentIndexChanged, this, [number](int index) {
            if (index >= 0)
                *number = index;
        });
        break;
    case DialogBinding::Text:
        connect(control<QLineEdit>(name), &QLineEdit::textChanged, this, [text](const QString& t) { *text = t; });
        break;
    case DialogBinding::Int16Text:
        // A text that is no number keeps the last good value; Aceptar then says so.
        connect(control<QComboBox>(name), &QComboBox::editTextChanged, this, [this, number](const QString& t) {
            const auto n = SettingInt16(t);
            m_daysValid = n.has_value();
            if (n)
                *number = *n;
        });
        break;
    case DialogBinding::OptionGroup:
        for (int i = 0; i < int(k.DialogControls.size()) && k.DialogControls[i]; ++i) {
            connect(control<QRadioButton>(k.DialogControls[i]), &QRadioButton::toggled, this, [text, i](bool on) {
                if (on)
                    *text = QString::number(i);
            });
        }
        break;
    case DialogBinding::None:
        break;
    }
}

// The control shows its setting; its handler writes the same value back.
void FrmConf::fill(const SettingKey& k)
{
    const QString value = k.clearText(S());
    const char* name = k.DialogControls[0];
    switch (k.Binding) {
    case DialogBinding::Check:
    case DialogBinding::CheckNumber:
        control<QCheckBox>(name)->setChecked(value.trimmed().toInt() != 0);
        break;
    case DialogBinding::ComboZeroText: {
        QComboBox* c = control<QComboBox>(name);
        c->setCurrentText(value == QStringLiteral("0") ? c->itemText(0) : value);
        break;
    }
    case DialogBinding::ListIndex: {
        QComboBox* c = control<QComboBox>(name);
        const int index = value.toInt();
        if (index >= 0 && index < c->count())
            c->setCurrentIndex(index);
        break;
    }
    case DialogBinding::Text:
        control<QLineEdit>(name)->setText(value);
        break;
    case DialogBinding::Int16Text:
        control<QComboBox>(name)->setEditText(value);
        break;
    case DialogBinding::OptionGroup:
        // Compared with each option's value: a value none has leaves all off.
        for (int i = 0; i < int(k.DialogControls.size()) && k.DialogControls[i]; ++i) {
            if (value == QString::number(i))
                control<QRadioButton>(k.DialogControls[i])->setChecked(true);
        }
        break;
    case DialogBinding::None:
        break;
    }
}

void FrmConf::Form_Load()
{
    ApplyLanguage(this);
    showFrame("Frame1");
    adjustSize();
    if (const QScreen* s = screen() ? screen() : QGuiApplication::primaryScreen())
        move(s->availableGeometry().center() - rect().center());
    for (const char* masked : { "Text8", "Text12", "Text5" })
        control<QLineEdit>(masked)->setEchoMode(QLineEdit::Password);
    for (const SettingKey* k : SettingKeysBy(&SettingKey::DialogOrder))
        fill(*k);
    control<QLineEdit>("Text8")->setText(G().PassPhrase);
    m_passTyped = false;
    showFrame("Frame1");
}

QFrame* FrmConf::visibleFrame() const
{
    for (QFrame* f : m_frames) {
        if (!f->isHidden())
            return f;
    }
    return nullptr;
}

void FrmConf::showFrame(const char* frame)
{
    for (auto it = m_frames.cbegin(); it != m_frames.cend(); ++it)
        it.value()->setVisible(it.key() == QLatin1String(frame));
    // The label of the page in view stands out.
    const std::pair<const char*, const char*> labels[4]
        = { { "Label6", "Frame1" }, { "Label7", "Frame3" }, { "Label8", "Frame5" }, { "Label9", "Frame4" } };
    for (const auto& [label, page] : labels) {
        const bool current = QLatin1String(page) == QLatin1String(frame);
        control<QLabel>(label)->setStyleSheet(current ? kCurrentPageStyle : kPageStyle);
    }
}

void FrmConf::Label6_Click()
{
    showFrame("Frame1");
}

void FrmConf::Label7_Click()
{
    showFrame("Frame3");
}

void FrmConf::Label8_Click()
{
    showFrame("Frame5");
}

void FrmConf::Label9_Click()
{
    showFrame("Frame4");
}

void FrmConf::Label11_Click()
{
    // "Extras" has no page of its own in this build.
}

void FrmConf::PickFolder(const char* textBox)
{
    Form6 picker(this);
    picker.exec();
    if (!G().PickedFolder.isEmpty())
        control<QLineEdit>(textBox)->setText(G().PickedFolder);
}

// A stage folder must lie strictly below the device root, like every folder a
// walk may delete in.
bool FrmConf::folderAccepted(const char* textBox, const QString& refusal)
{
    const QString folder = G().ProgramDrive + control<QLineEdit>(textBox)->text();
    const WalkGuard::Refusal why = WalkGuard::check(folder);
    if (why == WalkGuard::Accepted)
        return true;
    ShowMessage(Translate(refusal) + QStringLiteral("\r\n") + Translate(WalkGuard::refusalText(why))
        + QStringLiteral("\r\n") + folder);
    return false;
}

void FrmConf::Label32_Click()
{
    if (!folderAccepted("Text6", QStringLiteral("Carpeta Comprimida inválida"))
        || !folderAccepted("Text7", QStringLiteral("Carpeta Encriptada inválida")))
        return;
    if (!m_daysValid) {
        ShowMessage(Translate(QStringLiteral("¡El número de días debe ser un número entero!")) + QStringLiteral("\r\n")
            + QStringLiteral("#DeleteFilesAfter: ") + control<QComboBox>("Combo4")->currentText());
        return;
    }
    if (m_passTyped) {
        if (G().PassPhrase.isEmpty()) {
            ShowMessage(QStringLiteral("¡La contraseña no puede quedar vacía!"));
            return;
        }
        if (!passwords::OwnerPassword::renewCheck())
            return;
    }
    PushEngineOptions();
    if (!WriteSettings()) {
        ShowMessage(Translate(QStringLiteral("¡No se pudo guardar la configuración!")) + QStringLiteral("\r\n")
            + SettingsFilePath());
        return;
    }
    close();
}

void FrmConf::Label33_Click()
{
    ReloadSettings();
    close();
}

void FrmConf::closeEvent(QCloseEvent* event)
{
    if (!m_unloaded) {
        m_unloaded = true;
        emit unloaded();
    }
    event->accept();
}

} // namespace vmk::panel
