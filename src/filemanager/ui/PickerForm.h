#pragma once

#include "filemanager/TreeOptions.h"

#include <QDialog>
#include <QString>

class QLineEdit;
class QPushButton;
class QVBoxLayout;

namespace vmk
{

class SmartTree;

// The frame every picker shares: a modal form with its own file tree (SmartTree, set
// up by the picker's row of TreeOptions), optional text boxes below it, "Aceptar"
// (Command1) and "Cancelar" (Command2, which only unloads). Each picker says what
// Command1 leaves behind.
class PickerForm : public QDialog
{
    Q_OBJECT
public:
    SmartTree* tree() const { return m_tree; }
    QPushButton* Command1() const { return m_command1; }
    QPushButton* Command2() const { return m_command2; }

    // Event procedures, public so that tests can reach them.
    virtual void Command1_Click() = 0;
    void Command2_Click();

protected:
    PickerForm(const TreeOptions& options, const QString& caption, QWidget* parent);
    // ApplyLanguage, centre on the screen, fill the tree. Each picker calls it last
    // in its constructor, once its own controls exist.
    virtual void Form_Load();
    // A captioned text box between the tree and the buttons.
    QLineEdit* addTextBox(const char* name, const char* labelName, const QString& caption);

private:
    SmartTree* m_tree;
    QVBoxLayout* m_boxes;
    QPushButton* m_command1;
    QPushButton* m_command2;
};

} // namespace vmk
