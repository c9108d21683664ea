#pragma once

#include "filemanager/ui/PickerForm.h"

class QLineEdit;

namespace vmk
{

// Picks a folder of the host for the restore's alternative route: Aceptar writes the
// selected folder's path into BackTree's Text2, or "" when it does not exist.
class Form3 : public PickerForm
{
    Q_OBJECT
public:
    // `text2`: the text box that receives the choice (BackTree's Text2).
    explicit Form3(QLineEdit* text2, QWidget* parent = nullptr);

    void Command1_Click() override;

private:
    QLineEdit* m_text2;
};

} // namespace vmk
