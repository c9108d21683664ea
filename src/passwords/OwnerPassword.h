#pragma once

#include <QString>

namespace vmk::passwords
{

// The owner's password, the key of the lock (FrmPass). It is never kept in clear
// nor under the fixed seal: VMK.cnf holds only its verifier ("OwnerPassCheck",
// Argon2id with a random salt). Once the owner has typed it right, the run holds
// it as PassPhrase, which is also the pass phrase of the file stages.
class OwnerPassword
{
public:
    // True once a password has been chosen (a verifier is in the settings).
    static bool isChosen();
    // The lock's comparison: with PassPhrase whenever the run holds it (exactly,
    // with case); before that against the verifier, and on success the run holds
    // the typed text as PassPhrase.
    static bool check(const QString& typed);
    // Makes `password` the owner's: PassPhrase for the run, a new verifier in
    // memory and, when `store` is set, in VMK.cnf at once (the other lines as the
    // file holds them). False, after a message, when it could not be done.
    static bool choose(const QString& password, bool store);
    // A new verifier for the present PassPhrase, in memory only (the settings
    // dialog's Aceptar writes it with the rest).
    static bool renewCheck();
};

} // namespace vmk::passwords
