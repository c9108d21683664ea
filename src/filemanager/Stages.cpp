#include "filemanager/Stages.h"

#include "components/cipher/Encryptor.h"
#include "components/zip/ZipArchiver.h"
#include "components/zip/ZipCodes.h"
#include "filemanager/StageValues.h"
#include "foundation/Globals.h"
#include "foundation/Messages.h"
#include "foundation/Progress.h"
#include "foundation/Settings.h"
#include "foundation/Translate.h"
#include "platform/DriveMap.h"
#include "platform/Pump.h"

#include <QStringList>

#include <optional>

namespace vmk
{
namespace
{
// The stages speak drive-letter paths; a host path (the scratch copies of the
// scanner, in the host's temporary folder) passes as it is.
QString hostPath(const QString& path)
{
    return DriveMap::instance().nativeOfArgument(path);
}

// The file manager's handlers on its zip control: the bar follows the file, and
// an extracted entry takes ArchiveEntryName when the transfer set one.
void attachStageHandlers(zip::ZipArchiver& zipControl)
{
    zipControl.events().fileProgress = [](const QString&, int percent) { ProgressBarF(percent); };
    zipControl.events().unzipPreprocessingFile = [](const QString&, QString& destination) {
        if (SV().ArchiveEntryName.isEmpty())
            return;
        const QStringList parts = destination.split('\\');
        QString rebuilt;
        for (qsizetype i = 0; i + 1 < parts.size(); ++i)
            rebuilt += parts[i] + '\\';
        destination = rebuilt + SV().ArchiveEntryName;
    };
}

void setMethodByIndex(zip::ZipArchiver& zipControl)
{
    const int method = CompressionMethodForIndex(S().CompAlgorithm);
    if (method != 0)
        zipControl.setCompressionMethod(method);
}

cipher::FileCipher::Progress stageProgress()
{
    // Keeps the screens painted; a stage is not cancelled midway.
    return [](int percent) {
        ProgressBarF(percent);
        DoEvents();
        return true;
    };
}

// The values every encryption stage starts from.
void resetSetup()
{
    SV().CipherIndex = S().EncripAlgorithm;
    SV().EncryptionMode = 0;
    SV().PaddingMethod = 0;
    SV().KeyBits = 256;
}
} // namespace

int CompressionMethodForIndex(int index)
{
    switch (index) {
    case 0:
        return 18;
    case 1:
        return 12;
    case 2:
        return 8;
    default:
        return 0;
    }
}

bool CompressFile(const QString& source, const QString& archive, zip::ZipArchiver& zipControl)
{
    attachStageHandlers(zipControl);
    zipControl.setArchiveName(archive);
    zipControl.setCompressionLevel(9);
    setMethodByIndex(zipControl);
    zipControl.setPreservePaths(false);
    zipControl.setReplaceArchive(true);
    zipControl.setFilesToProcess(QString());
    zipControl.setFilesToExclude(QString());
    zipControl.addFileToProcess(source);
    const int result = zipControl.compress();
    if (result != 0)
        ShowMessage(Translate("¡Error de compresión!") + " (" + QString::number(result) + ")", 0);
    return result == 0;
}

bool DecompressFile(const QString& archive, const QString& targetFolder, zip::ZipArchiver& zipControl, int* error)
{
    attachStageHandlers(zipControl);
    zipControl.setArchiveName(archive);
    zipControl.setCompressionLevel(9);
    zipControl.setExtractFolder(targetFolder);
    zipControl.setPreservePaths(false);
    setMethodByIndex(zipControl);
    // The lists are not emptied: a name left by an earlier compress stays beside
    // the mask, which makes it harmless.
    zipControl.addFileToProcess(QStringLiteral("*"));
    const int result = zipControl.extract();
    if (error)
        *error = result;
    QString why;
    if (result == zip::ZipNoSpace) {
        const zip::ZipArchiver::SpaceShortage s = zipControl.spaceShortage();
        why = "\n"
            + Translate("No hay espacio suficiente en %1: se necesitan %2 bytes y quedan %3 bytes libres")
                  .arg(s.folder, QString::number(s.needed), QString::number(s.available));
    } else if (result == zip::ZipOverlappingEntries) {
        why = "\n"
            + Translate("Las entradas del archivo comprimido comparten sus datos; no se descomprime: %1").arg(archive);
    }
    // The words of a refusal come before its number.
    if (result != 0)
        ShowMessage(Translate("¡Error de descompresión!") + why + " (" + QString::number(result) + ")", 0);
    return result == 0;
}

bool SetupEncryptor(cipher::Encryptor& encryption)
{
    int err = encryption.setCipherIndex(SV().CipherIndex);
    if (err == 0)
        err = encryption.setHashSize(SV().HashSize);
    if (err == 0)
        err = encryption.setSecretKeyFromPassPhrase(G().PassPhrase, SV().KeyBits);
    if (err == 0)
        err = encryption.setEncryptionMode(SV().EncryptionMode);
    if (err == 0)
        err = encryption.setPaddingMethod(SV().PaddingMethod);
    if (err != 0) {
        // This one text is shown as it stands, untranslated.
        ShowMessage(QStringLiteral("¡Error iniciando encriptador!") + "(" + QString::number(err) + ")", 0);
        return false;
    }
    return true;
}

namespace
{
// Sets an encryptor up as the settings say and runs one direction of it with the
// stage's progress. Nothing when the setup failed (already told); else the
// component's code, 0 when all went well.
template<typename Work> std::optional<int> runEncryptor(Work work, int* error)
{
    resetSetup();
    cipher::Encryptor encryption;
    if (!SetupEncryptor(encryption)) {
        if (error)
            *error = encryption.lastError();
        return std::nullopt;
    }
    encryption.setProgress(stageProgress());
    const int err = work(encryption);
    if (error)
        *error = err;
    return err;
}
} // namespace

bool EncryptFile(const QString& source, const QString& target, int* error)
{
    const std::optional<int> err
        = runEncryptor([&](cipher::Encryptor& e) { return e.encryptFile(hostPath(source), hostPath(target)); }, error);
    if (err && *err != 0)
        ShowMessage(Translate("¡Error de encriptado!") + " (" + QString::number(*err) + ")" + "\n" + source, 0);
    return err == 0;
}

bool DecryptFile(const QString& source, const QString& target, int* error)
{
    const std::optional<int> err
        = runEncryptor([&](cipher::Encryptor& e) { return e.decryptFile(hostPath(source), hostPath(target)); }, error);
    if (err && *err != 0)
        ShowMessage(Translate("¡Error de decriptado!") + "\n" + "(" + QString::number(*err) + ")", 0);
    return err == 0;
}

} // namespace vmk
