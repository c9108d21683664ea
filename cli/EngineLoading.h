#pragma once

#include <QString>

// Loads the engine from --db DIR or the sigs folder beside vmk; a failure is
// thrown as a CliFailure that names the signature folder and says what is wrong
// with it.
void loadEngine(const QString& dbArg);
