#pragma once

#include "passwords/PswNodes.h"
#include "passwords/ui/FormNewlink.h"

#include <QPointer>
#include <QWidget>

class QTimer;
class QToolButton;
class QTreeWidget;

namespace vmk::passwords
{

// The password manager's window: the records of PSWADMON.cnf as a tree (each site
// with its user and the masked password beneath), with new, edit, view, delete
// and a copy of a password to the clipboard that is cleared again after 30
// seconds. The store is read at load and written when the window closes; edit,
// view and copy ask for the owner's password first.
class PassTree : public QWidget
{
    Q_OBJECT
public:
    explicit PassTree(QWidget* parent = nullptr);
    ~PassTree() override;

    PswNodes& nodes() { return m_nodes; }
    QTreeWidget* PswAddTree() const { return m_tree; }
    QTimer* Timer1() const { return m_timer1; }
    QTimer* TimerClip() const { return m_timerClip; }
    FormNewlink* newlinkForm() const { return m_newlink; }

    // Shows the collection again in the tree, keeping the selected index.
    void Refresh();
    // The index of the selected node; 0 when nothing is selected.
    int SelectedIndex() const;
    void SelectIndex(int index);

    // Event procedures, public so that tests can reach them.
    void Image3_Click(); // new
    void Image1_Click(); // edit
    void Image5_Click(); // view
    void Image2_Click(); // delete
    void Image4_Click(); // copy the password
    void Timer1_Timer();
    void TimerClip_Timer();

signals:
    // The window has saved the store and is gone: the panel comes back.
    void unloaded();

protected:
    void closeEvent(QCloseEvent* event) override;

private:
    void Form_Load();
    void Form_Unload();
    QToolButton* addVerb(const char* name, const QString& caption, int icon, void (PassTree::*click)());
    FormNewlink* openNewlink();
    void fillNewlink(int record, bool edit);

    PswNodes m_nodes;
    QTreeWidget* m_tree;
    QTimer* m_timer1;
    QTimer* m_timerClip;
    QPointer<FormNewlink> m_newlink;
    QString m_copied; // the password put on the clipboard, to clear only that
    bool m_unloaded = false;
};

} // namespace vmk::passwords
