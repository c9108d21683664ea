#include "ErrorWords.h"

#include "CliFailure.h"

#include "components/cipher/CipherError.h"
#include "components/engine/EngineCode.h"
#include "components/zip/ZipCodes.h"

namespace ErrorWords
{
using vmk::cipher::CipherError;

QString cipher(int cipherError)
{
    switch (static_cast<CipherError>(cipherError)) {
    case CipherError::SourceUnreadable:
        return QStringLiteral("no se puede leer");
    case CipherError::TargetUnwritable:
        return QStringLiteral("no se puede escribir");
    case CipherError::NotSealedFile:
        return QStringLiteral("no es un archivo encriptado");
    case CipherError::UnsupportedFormat:
        return QStringLiteral("está encriptado en un formato que esta versión no conoce");
    case CipherError::WrongPassPhrase:
        return QStringLiteral("la contraseña no es la correcta (o la cabecera del archivo está dañada)");
    case CipherError::DamagedData:
        return QStringLiteral("el archivo está dañado o cortado: sus datos no superan la comprobación");
    case CipherError::Truncated:
        return QStringLiteral("el archivo está incompleto: termina antes de tiempo");
    case CipherError::DiskFull:
        return QStringLiteral("no queda espacio en el disco");
    default:
        return QStringLiteral("falló el encriptador");
    }
}

int cipherExitCode(int cipherError)
{
    switch (static_cast<CipherError>(cipherError)) {
    case CipherError::NotSealedFile:
    case CipherError::UnsupportedFormat:
    case CipherError::WrongPassPhrase:
    case CipherError::DamagedData:
    case CipherError::Truncated:
        return CliFailure::kRefused;
    default:
        return CliFailure::kError;
    }
}

QString zipResult(int zipResult)
{
    switch (zipResult) {
    case vmk::zip::ZipNothingToDo:
        return QStringLiteral("no hay ningún archivo que procesar");
    case vmk::zip::ZipAborted:
        return QStringLiteral("la operación se canceló");
    case vmk::zip::ZipArchiveUnreadable:
        return QStringLiteral("no es un archivo zip o está dañado");
    case vmk::zip::ZipTempFileFailed:
        return QStringLiteral("no se pudo crear el archivo temporal");
    case vmk::zip::ZipDestinationFailed:
        return QStringLiteral("no se puede escribir");
    case vmk::zip::ZipFilesSkipped:
        return QStringLiteral("algunos archivos no se extrajeron");
    case vmk::zip::ZipDestinationFull:
    case vmk::zip::ZipNoSpace:
        return QStringLiteral("no queda espacio en el disco");
    case vmk::zip::ZipOverlappingEntries:
        return QStringLiteral("sus entradas comparten sus datos, como las de una bomba zip");
    default:
        return QStringLiteral("falló el compresor");
    }
}

int zipExitCode(int zipResult)
{
    return zipResult == vmk::zip::ZipArchiveUnreadable || zipResult == vmk::zip::ZipFilesSkipped ? CliFailure::kRefused
                                                                                                 : CliFailure::kError;
}

QString zipSkip(int skipReason)
{
    switch (skipReason) {
    case vmk::zip::SkipAccessDenied:
        return QStringLiteral("no se puede leer");
    case vmk::zip::SkipNotFound:
        return QStringLiteral("no existe");
    case vmk::zip::SkipUnsafeName:
        return QStringLiteral("su nombre saldría de la carpeta de destino");
    case vmk::zip::SkipDamagedEntry:
        return QStringLiteral("la entrada está dañada");
    case vmk::zip::SkipDuplicateName:
        return QStringLiteral("nombre repetido: no se sobrescribe");
    case vmk::zip::SkipDestinationFailed:
        return QStringLiteral("no se puede escribir");
    case vmk::zip::SkipLinkInTarget:
        return QStringLiteral("hay un enlace en su camino: no se sigue");
    case vmk::zip::SkipDriveMissing:
        return QStringLiteral("su unidad no está presente");
    default:
        return QStringLiteral("se omitió");
    }
}

QString engine(int engineCode)
{
    switch (engineCode) {
    case vmk::engine::PathMissing:
        return QStringLiteral("no existe");
    case vmk::engine::PathIsFolder:
        return QStringLiteral("es una carpeta; se esperaba un archivo");
    case vmk::engine::NotRegularFile:
        return QStringLiteral("no es un archivo normal");
    case vmk::engine::Unreadable:
        return QStringLiteral("no se puede leer");
    case vmk::engine::BadPath:
        return QStringLiteral("ruta no válida");
    case vmk::engine::TempFolderUnusable:
        return QStringLiteral("no se puede usar la carpeta temporal");
    case vmk::engine::SignaturesMissing:
        return QStringLiteral("no hay archivos de firmas en la carpeta de firmas");
    case vmk::engine::SignaturesBroken:
        return QStringLiteral("los archivos de firmas están dañados");
    default:
        return QStringLiteral("falló el motor de análisis");
    }
}
} // namespace ErrorWords
