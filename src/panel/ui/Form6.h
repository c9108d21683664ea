#pragma once

#include "filemanager/ui/PickerForm.h"

namespace vmk
{

// Picks a folder of the program's own drive for the settings dialog's "..." buttons.
// Opening it clears PickedFolder; Aceptar leaves the folder's path from the drive
// root ("\VMK\Cuarentena\") there, or "" when it does not exist; the drive itself is
// refused. PickedFolder is the #OtherLocation setting's variable, so both change.
class Form6 : public PickerForm
{
    Q_OBJECT
public:
    explicit Form6(QWidget* parent = nullptr);

    void Command1_Click() override;

protected:
    void Form_Load() override;
};

} // namespace vmk
