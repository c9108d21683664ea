#pragma once

#include <QString>

namespace vmk
{

// Why the zip component left a file out of a run, in words, translated: "Acceso
// denegado" for an unreadable file, and words of their own for every other reason
// code, so that the list of skipped files says each time why. An unknown code
// gives "Omitido" and the number.
QString SkipReason(int reasonCode);

} // namespace vmk
