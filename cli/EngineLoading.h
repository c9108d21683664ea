#pragma once

#include <QString>

// Loads the engine from --db DIR or the sigs folder beside vmk; a failure names
// the signature folder and says what is wrong with it (thrown as a CliFailure).
void loadEngine(const QString& dbArg);
