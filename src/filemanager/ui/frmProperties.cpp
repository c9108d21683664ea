#include "filemanager/ui/frmProperties.h"

#include "foundation/Messages.h"
#include "foundation/Translate.h"
#include "foundation/ui/ApplyLanguage.h"

#include <QDialogButtonBox>
#include <QGridLayout>
#include <QLabel>
#include <QLocale>
#include <QPushButton>

namespace vmk
{
namespace
{
QString dateWords(const QDateTime& when)
{
    return when.isValid() ? QLocale::c().toString(when.toLocalTime(), QStringLiteral("yyyy-MM-dd HH:mm:ss"))
                          : QStringLiteral("-----");
}
} // namespace

frmProperties::frmProperties(const FileVerbs::Facts& facts, QWidget* parent)
    : QDialog(parent)
{
    setObjectName(QStringLiteral("frmProperties"));
    setWindowTitle(QStringLiteral("Propiedades"));
    setModal(false);
    QString size = FileVerbs::SizeWords(facts.bytes);
    if (facts.folder) {
        size += QStringLiteral(" (") + QString::number(facts.files) + u' ' + Translate(QStringLiteral("archivos"))
            + (facts.partial ? QStringLiteral(", +") : QString()) + u')';
    }
    const QString type = facts.link
        ? Translate(QStringLiteral("Enlace simbólico")) + QStringLiteral(" · ") + Translate(facts.type)
        : Translate(facts.type);
    const struct {
        const char* caption;
        const char* name;
        QString text;
    } rows[] = {
        { "Ruta:", "LblPath", facts.path },
        { "Tipo:", "LblType", type },
        { "Tamaño:", "LblSize", size },
        { "Creado:", "LblCreated", dateWords(facts.created) },
        { "Modificado:", "LblModified", dateWords(facts.modified) },
        { "Último acceso:", "LblAccessed", dateWords(facts.accessed) },
        { "Permisos:", "LblPermissions", facts.permissions },
        { "Propietario:", "LblOwner", facts.owner + u':' + facts.group },
    };
    auto* grid = new QGridLayout(this);
    int row = 0;
    for (const auto& r : rows) {
        auto* caption = new QLabel(QString::fromUtf8(r.caption), this);
        caption->setObjectName(QLatin1String(r.name) + QStringLiteral("Caption"));
        auto* value = new QLabel(r.text, this);
        value->setObjectName(QLatin1String(r.name));
        value->setTextFormat(Qt::PlainText);
        value->setTextInteractionFlags(Qt::TextSelectableByMouse);
        value->setWordWrap(true);
        grid->addWidget(caption, row, 0, Qt::AlignTop);
        grid->addWidget(value, row, 1, Qt::AlignTop);
        ++row;
    }
    auto* ok = new QPushButton(QStringLiteral("Aceptar"), this);
    ok->setObjectName(QStringLiteral("CMDacept"));
    connect(ok, &QPushButton::clicked, this, &QDialog::close);
    grid->addWidget(ok, row, 1, Qt::AlignRight);
    grid->setColumnStretch(1, 1);
    setMinimumWidth(460);
    // The values are data, not captions: only the captions go through the table.
    ApplyLanguage(this);
    for (const auto& r : rows)
        findChild<QLabel*>(QLatin1String(r.name))->setText(r.text);
}

QString frmProperties::value(const char* name) const
{
    const QLabel* label = findChild<QLabel*>(QLatin1String(name));
    return label ? label->text() : QString();
}

frmProperties* ShowFileProperties(const QString& path, QWidget* parent)
{
    const FileVerbs::Facts facts = FileVerbs::ReadFacts(path);
    if (!facts.exists) {
        ShowMessage(QStringLiteral("Error, el archivo o carpeta no existe"));
        return nullptr;
    }
    auto* form = new frmProperties(facts, parent);
    form->setAttribute(Qt::WA_DeleteOnClose);
    form->show();
    return form;
}

} // namespace vmk
