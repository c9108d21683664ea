#include "foundation/ui/MessageForms.h"

#include "foundation/Globals.h"
#include "foundation/Messages.h"
#include "foundation/Translate.h"
#include "foundation/ui/ClickLabel.h"
#include "foundation/ui/MsgboxFrm.h"
#include "foundation/ui/MsgboxFrmYN.h"

#include <QApplication>
#include <QLabel>

namespace vmk
{
namespace
{

// ShowMessage has translated the text already.
int answerWithForms(const QString& text, int kind)
{
    QWidget* owner = QApplication::activeWindow();
    if (kind == 0) {
        MsgboxFrm form(owner);
        form.LblCap()->setText(text);
        form.exec();
        return 0;
    }
    MsgboxFrmYN form(owner);
    form.Label2()->setText(Translate(QStringLiteral("No")));
    form.Label3()->setText(Translate(QStringLiteral("Si")));
    form.LblCap()->setText(text);
    form.exec();
    return G().MessageAnswer;
}

} // namespace

void InstallMessageForms()
{
    SetMessageAnswerer(answerWithForms);
}

} // namespace vmk
