#include "backup/SkipReason.h"

#include "components/zip/ZipCodes.h"
#include "foundation/Translate.h"

namespace vmk
{

namespace
{
QString words(int reasonCode)
{
    using namespace zip;
    switch (reasonCode) {
    case SkipAccessDenied:
        return QStringLiteral("Acceso denegado");
    case SkipNotFound:
        return QStringLiteral("No existe");
    case SkipUnsafeName:
        return QStringLiteral("Nombre no seguro: saldría de la carpeta");
    case SkipDamagedEntry:
        return QStringLiteral("La entrada está dañada");
    case SkipBelowMinimumSize:
        return QStringLiteral("Menor que el tamaño mínimo");
    case SkipDuplicateName:
        return QStringLiteral("Nombre repetido: no se sobrescribe");
    case SkipDestinationFailed:
        return QStringLiteral("No se puede escribir");
    case SkipLinkInTarget:
        return QStringLiteral("Un enlace ocupa su lugar en el destino");
    case SkipDanglingLink:
        return QStringLiteral("Enlace roto: su destino no existe");
    case SkipFifo:
        return QStringLiteral("Tubería con nombre (FIFO): no se lee");
    case SkipSocket:
        return QStringLiteral("Socket: no se lee");
    case SkipDevice:
        return QStringLiteral("Dispositivo: no se lee");
    default:
        return {};
    }
}
} // namespace

QString SkipReason(int reasonCode)
{
    const QString text = words(reasonCode);
    if (text.isEmpty())
        return Translate(QStringLiteral("Omitido")) + QStringLiteral(" (") + QString::number(reasonCode) + u')';
    return Translate(text);
}

} // namespace vmk
