#pragma once

#include <QDialog>

class QLabel;
class QLineEdit;
class QPushButton;

namespace vmk
{

class ServerPanel;

// The name of a new folder, shown modal over the server panel. Aceptar (CMDacept)
// makes the folder on the server when Label4 holds its design prompt "Nombre:";
// with any other prompt it makes a local folder at LabelF's tool tip followed by
// the name. An empty name makes nothing; either button closes the form.
class FormNewEditS : public QDialog
{
    Q_OBJECT
public:
    explicit FormNewEditS(ServerPanel& panel, QWidget* parent = nullptr);

    QLabel* Label4() const { return m_label4; }
    QLabel* LabelF() const { return m_labelF; }
    QLineEdit* Text1() const { return m_text1; }
    QPushButton* CMDacept() const { return m_accept; }
    QPushButton* CMDcancel() const { return m_cancel; }

    // Event procedures, public so that tests can reach them.
    void CMDacept_Click();
    void CMDcancel_Click();

private:
    ServerPanel& m_panel;
    QLabel* m_label4;
    QLabel* m_labelF;
    QLineEdit* m_text1;
    QPushButton* m_accept;
    QPushButton* m_cancel;
};

} // namespace vmk
