#pragma once

#include <QString>

namespace vmk
{

// Reads the first line of "<folder>\Language.cnf" (folder logical, e.g. the
// program folder) and gives the language index it names: "[Español]" 0,
// "[English]" 1, "[Duetsch]" 2, "[Português]" 3, "[Français]" 4, "[Italiano]" 5,
// "[Chinesse]" 6, compared exactly. A missing file gives 0; an unknown line
// leaves `current`.
int ReadLanguageFile(const QString& folder, int current = 0);

} // namespace vmk
