#pragma once

#include <QDialog>

class QLabel;
class QLineEdit;
class QPushButton;

namespace vmk
{

// The name dialog of the file manager, in two modes told apart by the prompt
// label (Label2): reading "Nombre:" it renames the entry in LabelF's tool tip to
// RenameParent + Text1; reading anything else ("Dirección:") it makes the folder
// LabelF's tool tip + Text1. An empty Text1 does nothing; the form closes either way.
class FormNewEdit : public QDialog
{
    Q_OBJECT
public:
    explicit FormNewEdit(QWidget* parent = nullptr);

    QLabel* Label1() const { return m_label1; } // beside the text box: "Nuevo nombre:"
    QLabel* Label2() const { return m_label2; } // the prompt: "Nombre:" or "Dirección:"
    QLabel* LabelF() const { return m_labelF; } // the entry's name; its tool tip the path
    QLabel* Picture1() const { return m_picture; }
    QLineEdit* Text1() const { return m_text1; }
    QPushButton* CMDacept() const { return m_accept; }
    QPushButton* CMDcancel() const { return m_cancel; }

    // The logical folder that holds the entry being renamed (bars already removed).
    QString RenameParent;

    bool renameMode() const;
    void CMDacept_Click();
    void CMDcancel_Click();

signals:
    // The entry was renamed or the folder made: `folder` is the logical folder whose
    // listing changed.
    void changed(const QString& folder);

private:
    QLabel* m_label1;
    QLabel* m_label2;
    QLabel* m_labelF;
    QLabel* m_picture;
    QLineEdit* m_text1;
    QPushButton* m_accept;
    QPushButton* m_cancel;
};

} // namespace vmk
