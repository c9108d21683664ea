#include "foundation/WalkGuard.h"

#include "foundation/Globals.h"
#include "foundation/Messages.h"
#include "foundation/Translate.h"
#include "platform/DriveMap.h"
#include "platform/FileSearch.h"
#include "platform/LinkCheck.h"
#include "platform/MountTable.h"
#include "platform/PathForm.h"

namespace vmk
{
namespace
{
// Through the platform's byte form, so a folder whose name is not UTF-8 is judged too.
QString canonical(const QString& native)
{
    return LinkCheck::resolved(native);
}

bool strictlyBelow(const QString& path, const QString& root)
{
    return path != root && MountTable::isUnder(path, root);
}
} // namespace

WalkGuard::Refusal WalkGuard::check(const QString& logicalFolder, QString* nativeFolder)
{
    return checkOn(logicalFolder, nativeFolder, false);
}

WalkGuard::Refusal WalkGuard::checkChosen(const QString& logicalFolder, QString* nativeFolder)
{
    return checkOn(logicalFolder, nativeFolder, true);
}

WalkGuard::Refusal WalkGuard::checkOn(const QString& logicalFolder, QString* nativeFolder, bool anyDrive)
{
    if (!DriveMap::hasDriveLetter(logicalFolder))
        return logicalFolder.trimmed().isEmpty() ? NoFolder : OutsideDevice;
    const QString below = logicalFolder.mid(2);
    if (below.isEmpty())
        return NoFolder;
    if (PathForm::hasDotComponent(below))
        return DotComponent;
    const DriveMap& map = DriveMap::instance();
    const auto device = anyDrive ? map.drive(logicalFolder[0]) : map.device();
    if (!device || logicalFolder[0].toUpper() != device->letter.toUpper())
        return OutsideDevice;
    if (below.split(QLatin1Char('\\'), Qt::SkipEmptyParts).isEmpty())
        return DeviceRoot;
    const QString native = map.toNative(logicalFolder);
    if (LinkCheck::isLink(native))
        return Link;
    const QString real = canonical(native);
    const quint32 attributes = real.isEmpty() ? quint32(AttrInvalid) : FileSearch::attributesOfNative(real);
    if (attributes == AttrInvalid || !(attributes & AttrDirectory))
        return Missing;
    // Compared as the kernel resolves them, so that no link on the way (the
    // folder's own or one of its parents) can lead the walk off the device.
    const QString root = canonical(device->root);
    if (root.isEmpty() || real == root)
        return DeviceRoot;
    if (!strictlyBelow(real, root))
        return OutsideDevice;
    const QString program = canonical(map.toNative(G().ProgramFolder));
    if (!program.isEmpty() && MountTable::isUnder(program, real))
        return HoldsProgram;
    if (nativeFolder)
        *nativeFolder = real;
    return Accepted;
}

std::optional<QString> WalkGuard::folderForDeletingWalk(const QString& logicalFolder, const QString& key)
{
    QString native;
    return tell(check(logicalFolder, &native), native, logicalFolder, key);
}

std::optional<QString> WalkGuard::chosenFolderForDeletingWalk(const QString& logicalFolder, const QString& key)
{
    QString native;
    return tell(checkChosen(logicalFolder, &native), native, logicalFolder, key);
}

std::optional<QString> WalkGuard::tell(
    Refusal refusal, const QString& native, const QString& logicalFolder, const QString& key)
{
    if (refusal == Accepted)
        return native;
    if (refusal != Missing)
        ShowMessage(Translate(refusalText(refusal)) + QStringLiteral("\r\n") + key + QStringLiteral(": \"")
                + logicalFolder + u'"',
            0);
    return std::nullopt;
}

QString WalkGuard::refusalText(Refusal refusal)
{
    switch (refusal) {
    case NoFolder:
        return QStringLiteral("¡No hay carpeta indicada, no se borra nada!");
    case DeviceRoot:
        return QStringLiteral("¡La carpeta es la raíz del dispositivo, no se borra nada!");
    case DotComponent:
        return QStringLiteral("¡La carpeta contiene «.» o «..», no se borra nada!");
    case OutsideDevice:
        return QStringLiteral("¡La carpeta está fuera del dispositivo, no se borra nada!");
    case Link:
        return QStringLiteral("¡La carpeta es un enlace, no se borra nada!");
    case HoldsProgram:
        return QStringLiteral("¡La carpeta contiene el programa, no se borra nada!");
    case Missing:
        return QStringLiteral("¡La carpeta no existe!");
    case Accepted:
        break;
    }
    return {};
}

} // namespace vmk
