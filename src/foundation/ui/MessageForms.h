#pragma once

namespace vmk
{

// Makes the program's own message forms answer ShowMessage: kind 0 shows MsgboxFrm,
// any other kind MsgboxFrmYN, each modally and as a fresh instance.
void InstallMessageForms();

} // namespace vmk
