#pragma once

#include "filemanager/ui/PickerForm.h"

class QLineEdit;

namespace vmk
{

// Picks a saved backup selection file on the host: Aceptar leaves the selected
// node's path in BackupSelectionFile, or "" when it does not exist; an empty name
// is refused.
class Form5 : public PickerForm
{
    Q_OBJECT
public:
    explicit Form5(QWidget* parent = nullptr);

    QLineEdit* Text1() const { return m_text1; } // "Nombre": the clicked file's name
    void Command1_Click() override;

private:
    QLineEdit* m_text1;
};

} // namespace vmk
