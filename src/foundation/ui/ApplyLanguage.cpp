#include "foundation/ui/ApplyLanguage.h"

#include "foundation/Globals.h"
#include "foundation/Translate.h"

#include <QAbstractButton>
#include <QAction>
#include <QFont>
#include <QGroupBox>
#include <QLabel>
#include <QMenu>
#include <QTabWidget>
#include <QTableWidget>
#include <QTreeWidget>
#include <QVariant>
#include <QWidget>

#include <functional>

namespace vmk
{
namespace
{

const char* const kDesign = "vmkDesignText";
const char* const kShown = "vmkShownText";

// One caption of one object. The design text is kept with the text we last put there:
// if code has set the caption since, that new text becomes the design text.
void translateCaption(
    QObject* holder, const QString& slot, const QString& current, const std::function<void(const QString&)>& set)
{
    const QByteArray designName = QByteArray(kDesign) + slot.toLatin1();
    const QByteArray shownName = QByteArray(kShown) + slot.toLatin1();
    const QVariant design = holder->property(designName.constData());
    const QVariant shown = holder->property(shownName.constData());
    QString original = current;
    if (design.isValid() && shown.isValid() && shown.toString() == current)
        original = design.toString();
    const bool known = design.isValid();
    // In Spanish a caption is left alone unless an earlier pass translated it.
    if (G().LanguageIndex == 0 && !(known && original != current))
        return;
    const QString text = Translate(original);
    holder->setProperty(designName.constData(), original);
    holder->setProperty(shownName.constData(), text);
    if (text != current)
        set(text);
}

void translateAction(QAction* action)
{
    if (action->isSeparator())
        return;
    translateCaption(action, QString(), action->text(), [action](const QString& t) { action->setText(t); });
    if (QMenu* menu = action->menu()) {
        for (QAction* sub : menu->actions())
            translateAction(sub);
    }
}

void translateTreeHeader(QTreeWidget* tree)
{
    QTreeWidgetItem* header = tree->headerItem();
    if (!header)
        return;
    for (int c = 0; c < header->columnCount(); ++c) {
        translateCaption(tree, QStringLiteral("Column%1").arg(c), header->text(c),
            [header, c](const QString& t) { header->setText(c, t); });
    }
}

void translateTableHeader(QTableWidget* table)
{
    for (int c = 0; c < table->columnCount(); ++c) {
        QTableWidgetItem* item = table->horizontalHeaderItem(c);
        if (!item)
            continue;
        translateCaption(
            table, QStringLiteral("Column%1").arg(c), item->text(), [item](const QString& t) { item->setText(t); });
    }
}

void translateTabs(QTabWidget* tabs)
{
    for (int i = 0; i < tabs->count(); ++i) {
        translateCaption(tabs, QStringLiteral("Tab%1").arg(i), tabs->tabText(i),
            [tabs, i](const QString& t) { tabs->setTabText(i, t); });
    }
}

void translateControl(QWidget* w)
{
    if (auto* label = qobject_cast<QLabel*>(w)) {
        // A label that shows a picture has no caption to translate.
        if (label->pixmap().isNull())
            translateCaption(w, QString(), label->text(), [label](const QString& t) { label->setText(t); });
    } else if (auto* button = qobject_cast<QAbstractButton*>(w)) {
        translateCaption(w, QString(), button->text(), [button](const QString& t) { button->setText(t); });
    } else if (auto* group = qobject_cast<QGroupBox*>(w)) {
        translateCaption(w, QString(), group->title(), [group](const QString& t) { group->setTitle(t); });
    } else if (auto* menu = qobject_cast<QMenu*>(w)) {
        translateCaption(w, QString(), menu->title(), [menu](const QString& t) { menu->setTitle(t); });
    }
    if (auto* tree = qobject_cast<QTreeWidget*>(w))
        translateTreeHeader(tree);
    else if (auto* table = qobject_cast<QTableWidget*>(w))
        translateTableHeader(table);
    else if (auto* tabs = qobject_cast<QTabWidget*>(w))
        translateTabs(tabs);
}

void applyFont(QWidget* w, const char* family)
{
    QFont font = w->font();
    font.setFamily(QString::fromLatin1(family));
    font.setPointSize(9);
    w->setFont(font);
}

} // namespace

const char* FormFontFamily()
{
    return G().LanguageIndex == 6 ? "WenQuanYi Micro Hei" : "DejaVu Sans";
}

void ApplyLanguage(QWidget* form)
{
    if (!form)
        return;
    translateCaption(
        form, QStringLiteral("Title"), form->windowTitle(), [form](const QString& t) { form->setWindowTitle(t); });

    const char* family = FormFontFamily();
    // The title label keeps its design font; pin every attribute of it so that
    // the fonts set on its containers do not reach it.
    const QList<QWidget*> controls = form->findChildren<QWidget*>();
    for (QWidget* w : controls) {
        if (w->objectName() == QLatin1String("LabelEspecial")) {
            QFont own = w->font();
            own.setResolveMask(QFont::AllPropertiesResolved);
            w->setFont(own);
        }
    }
    for (QWidget* w : controls) {
        w->update();
        if (w->objectName() != QLatin1String("LabelEspecial"))
            applyFont(w, family);
        translateControl(w);
        for (QAction* action : w->actions())
            translateAction(action);
    }
    for (QAction* action : form->actions())
        translateAction(action);
    for (QAction* action : form->findChildren<QAction*>())
        translateAction(action);
}

} // namespace vmk
