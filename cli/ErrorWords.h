#pragma once

#include <QString>

// What each number of the components means, in words (Spanish texts of the
// translation table), for the messages of vmk. A number without words of its
// own gives the component's generic failure.
namespace ErrorWords
{
QString cipher(int cipherError);
QString zipResult(int zipResult);
QString zipSkip(int skipReason);
QString engine(int engineCode);
// Exit code for a cipher or zip failure: 1 when the data was refused, 2 otherwise.
int cipherExitCode(int cipherError);
int zipExitCode(int zipResult);
} // namespace ErrorWords
