#include "passwords/OwnerPassword.h"

#include "components/cipher/PassPhraseVerifier.h"
#include "foundation/Globals.h"
#include "foundation/Messages.h"
#include "foundation/Settings.h"
#include "foundation/Translate.h"

namespace vmk::passwords
{
namespace
{
const QString kCheckKey = QStringLiteral("OwnerPassCheck");
}

bool OwnerPassword::isChosen()
{
    return !S().OwnerPassCheck.isEmpty();
}

bool OwnerPassword::check(const QString& typed)
{
    if (!G().PassPhrase.isEmpty())
        return typed == G().PassPhrase;
    if (!cipher::PassPhraseVerifier::matches(typed.toUtf8(), S().OwnerPassCheck))
        return false;
    G().PassPhrase = typed;
    return true;
}

bool OwnerPassword::renewCheck()
{
    const auto verifier = cipher::PassPhraseVerifier::make(G().PassPhrase.toUtf8());
    if (!verifier) {
        ShowMessage(Translate(QStringLiteral("¡Error de encriptado!")) + QStringLiteral(" (1)"));
        return false;
    }
    S().OwnerPassCheck = *verifier;
    return true;
}

bool OwnerPassword::choose(const QString& password, bool store)
{
    const QString before = G().PassPhrase;
    G().PassPhrase = password;
    if (!renewCheck()) {
        G().PassPhrase = before;
        return false;
    }
    if (store && !StoreSettingInFile(kCheckKey)) {
        ShowMessage(Translate(QStringLiteral("¡No se pudo guardar la contraseña del propietario en VMK.cnf!"))
            + QStringLiteral("\r\n") + SettingsFilePath());
        return false;
    }
    return true;
}

} // namespace vmk::passwords
