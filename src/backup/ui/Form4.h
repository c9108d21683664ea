#pragma once

#include "filemanager/ui/PickerForm.h"

class QLineEdit;

namespace vmk
{

// Names the file a backup selection is saved to: a folder of the host and a name.
// Aceptar leaves the folder's path and the name in BackupSelectionFile, or "" when
// the folder does not exist; an empty name is refused.
class Form4 : public PickerForm
{
    Q_OBJECT
public:
    explicit Form4(QWidget* parent = nullptr);

    QLineEdit* Text1() const { return m_text1; } // "Nombre"
    QLineEdit* Text2() const { return m_text2; } // "Carpeta": the clicked folder
    void Command1_Click() override;

private:
    QLineEdit* m_text1;
    QLineEdit* m_text2;
};

} // namespace vmk
