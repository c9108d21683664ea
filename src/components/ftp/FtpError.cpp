#include "components/ftp/FtpError.h"

#include "components/ftp/Fingerprint.h"

namespace vmk::ftp
{

QString FtpError::words() const
{
    switch (failure) {
    case FtpFailure::None:
        return {};
    case FtpFailure::BadName:
        return QStringLiteral("nombre no válido en el servidor");
    case FtpFailure::BadAddress:
        return QStringLiteral("dirección de servidor no válida");
    case FtpFailure::ConnectFailed:
        return QStringLiteral("no se pudo conectar con el servidor");
    case FtpFailure::LoginRefused:
        return QStringLiteral("el servidor rechazó el usuario o la contraseña");
    case FtpFailure::CertificateUntrusted:
        return QStringLiteral("el certificado del servidor no es de confianza");
    case FtpFailure::SecureConnectionFailed:
        return QStringLiteral("no se pudo establecer la conexión segura");
    case FtpFailure::NotFound:
        return QStringLiteral("no existe en el servidor");
    case FtpFailure::Refused:
        return QStringLiteral("el servidor rechazó la operación");
    case FtpFailure::Cancelled:
        return QStringLiteral("la operación se canceló");
    case FtpFailure::LocalUnreadable:
        return QStringLiteral("no se puede leer");
    case FtpFailure::LocalUnwritable:
        return QStringLiteral("no se puede escribir");
    case FtpFailure::ConnectionLost:
        return QStringLiteral("el servidor cortó la conexión");
    case FtpFailure::TransferFailed:
        break;
    }
    return QStringLiteral("falló la transferencia");
}

QString FtpError::detail() const
{
    if (failure == FtpFailure::CertificateUntrusted && !fingerprint.isEmpty())
        return QStringLiteral("SHA-256 ") + Fingerprint::text(fingerprint);
    return serverReply;
}

} // namespace vmk::ftp
