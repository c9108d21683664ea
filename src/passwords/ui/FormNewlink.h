#pragma once

#include <QWidget>

class QLineEdit;
class QPushButton;

namespace vmk::passwords
{

class PassTree;

// The entry form of one record, shown modeless over PassTree for a new record, an
// edit or a view. Aceptar (CMDacept) leaves the finished line in PendingLink and
// starts PassTree's Timer1, which adds it once this form is gone; when PendingLink
// held an index, the record standing at that index is removed first.
class FormNewlink : public QWidget
{
    Q_OBJECT
public:
    explicit FormNewlink(PassTree& tree, QWidget* parent = nullptr);

    QLineEdit* Text1() const { return m_text1; }
    QLineEdit* Text2() const { return m_text2; }
    QLineEdit* Text3() const { return m_text3; }
    QPushButton* CMDacept() const { return m_accept; }
    QPushButton* CMDcancel() const { return m_cancel; }
    QPushButton* Command1() const { return m_close; }

    // Event procedures, public so that tests can reach them.
    void CMDacept_Click();
    void CMDcancel_Click();
    void Command1_Click();

private:
    PassTree& m_tree;
    QLineEdit* m_text1;
    QLineEdit* m_text2;
    QLineEdit* m_text3;
    QPushButton* m_accept;
    QPushButton* m_cancel;
    QPushButton* m_close;
};

} // namespace vmk::passwords
