#pragma once

#include "foundation/ui/RoundedForm.h"

class QLabel;

namespace vmk
{

class ClickLabel;

// The notice: the message in LblCap and one button, Label1, whose click closes the form.
// Always shown modally (by ShowMessage with kind 0).
class MsgboxFrm : public RoundedForm
{
    Q_OBJECT
public:
    explicit MsgboxFrm(QWidget* parent = nullptr);

    QLabel* LblCap() const { return m_lblCap; }
    ClickLabel* Label1() const { return m_label1; }

    void Label1_Click();

private:
    QLabel* m_lblCap = nullptr;
    ClickLabel* m_label1;
};

} // namespace vmk
