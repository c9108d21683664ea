#pragma once

#include <QDialog>

class QCheckBox;
class QLabel;
class QLineEdit;
class QPushButton;

namespace vmk::passwords
{

// The lock on the owner's password, shown modally by every caller, which goes on
// only when PasswordOk is true afterwards. A wrong password leaves it open with a
// message, with no count of tries. Before any password has been chosen it asks the
// owner to choose one and type it again (Text2), and that choice unlocks.
class FrmPass : public QDialog
{
    Q_OBJECT
public:
    explicit FrmPass(QWidget* parent = nullptr);

    // True while the form asks for a first password.
    bool choosing() const { return m_choosing; }

    QLineEdit* Text1() const { return m_text1; }
    QLineEdit* Text2() const { return m_text2; }
    QCheckBox* Check1() const { return m_check1; }
    QPushButton* CMDacept() const { return m_accept; }
    QPushButton* CMDcancel() const { return m_cancel; }

    // Event procedures, public so that tests can reach them.
    void Check1_Click();
    void CMDacept_Click();
    void CMDcancel_Click();

private:
    void Form_Load();

    bool m_choosing = false;
    QLineEdit* m_text1;
    QLineEdit* m_text2;
    QLabel* m_label2;
    QCheckBox* m_check1;
    QPushButton* m_accept;
    QPushButton* m_cancel;
};

// Shows the lock modally and returns PasswordOk.
bool AskOwnerPassword(QWidget* parent = nullptr);

} // namespace vmk::passwords
