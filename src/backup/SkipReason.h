#pragma once

#include <QString>

namespace vmk
{

// Why the zip component left a file out of a run, in words (Spanish, translated
// where shown): "Acceso denegado" for an unreadable file, and words of its own for
// every other reason code, so that the list of skipped files says each time why.
QString SkipReason(int reasonCode);

} // namespace vmk
