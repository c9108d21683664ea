#pragma once

#include <QString>

// The pass phrase of sealed files: the first line of `passFile`, or, without one,
// typed on the terminal without echo or the first line piped in. Never from the
// command line, where other users could read it. Failures are thrown as CliFailure.
QString readPassPhrase(const QString& passFile);
