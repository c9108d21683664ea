#pragma once

#include "foundation/ui/RoundedForm.h"

class QLabel;

namespace vmk
{

class ClickLabel;

// The question: the message in LblCap, Label2 answers "No" (7) and Label3 "Si" (6) into
// G().MessageAnswer. Closed any other way, it leaves the earlier answer in force.
class MsgboxFrmYN : public RoundedForm
{
    Q_OBJECT
public:
    explicit MsgboxFrmYN(QWidget* parent = nullptr);

    QLabel* LblCap() const { return m_lblCap; }
    ClickLabel* Label2() const { return m_label2; }
    ClickLabel* Label3() const { return m_label3; }

    void Label2_Click();
    void Label3_Click();

protected:
    void mouseMoveEvent(QMouseEvent* event) override;

private:
    void underline(ClickLabel* on);

    QLabel* m_lblCap = nullptr;
    ClickLabel* m_label2;
    ClickLabel* m_label3;
};

} // namespace vmk
