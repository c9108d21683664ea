#pragma once

#include "foundation/ui/RoundedForm.h"

class QLabel;

namespace vmk
{

class ClickLabel;

// The notice shown, without modality, while the program shuts down: LblCap reads the
// translation of "Terminando servicios..."; Label1 closes the form.
class FormEject : public RoundedForm
{
    Q_OBJECT
public:
    explicit FormEject(QWidget* parent = nullptr);

    QLabel* LblCap() const { return m_lblCap; }
    ClickLabel* Label1() const { return m_label1; }

    void Label1_Click();

private:
    QLabel* m_lblCap = nullptr;
    ClickLabel* m_label1;
};

} // namespace vmk
