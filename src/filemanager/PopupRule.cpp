#include "filemanager/PopupRule.h"

#include "filemanager/TreeKey.h"
#include "foundation/Globals.h"
#include "foundation/Settings.h"

namespace vmk
{

bool PopupRule::InFolder(const QString& keyOrPath, const QString& folder)
{
    // An unset folder would make the bare drive match everything on it.
    if (folder.isEmpty() || G().ProgramDrive.isEmpty())
        return false;
    return keyOrPath.toUpper().startsWith((G().ProgramDrive + folder).toUpper());
}

QHash<QString, bool> PopupRule::Decide(const Input& in)
{
    QHash<QString, bool> items;
    for (const char* name : { "Copy", "Cut", "Delete" })
        items.insert(QLatin1String(name), true);
    for (const char* name : { "Paste", "PasteDecript", "PasteEncript", "pasteZ", "PasteUz" })
        items.insert(QLatin1String(name), false);

    const QString& k = in.key;
    if (in.marks == 0) {
        bool restore = false;
        if (in.side == 1) {
            const QString quarantine = G().ProgramDrive + S().QuarenteneFolder;
            restore = k.toUpper() != quarantine.toUpper() && InFolder(k, S().QuarenteneFolder);
        }
        items.insert(QStringLiteral("Restaura"), restore);
        items.insert(QStringLiteral("linea4"), restore);
        const bool folder = TreeKey::isFolder(k);
        items.insert(QStringLiteral("OpenF"), !folder);
        items.insert(QStringLiteral("NewFolder"), folder);
        if (in.side == 2)
            items.insert(QStringLiteral("linea"), !folder);
        for (const char* name : { "Properties", "Rename", "Linea1" })
            items.insert(QLatin1String(name), true);
    } else {
        for (const char* name :
            { "OpenF", "Rename", "Properties", "NewFolder", "linea", "Linea1", "linea2", "Restaura" })
            items.insert(QLatin1String(name), false);
    }

    if ((!in.sourcePath.isEmpty() || in.clipboard > 0) && in.marks == 0) {
        QString verb;
        if (InFolder(k, S().CompFileFolder))
            verb = QStringLiteral("pasteZ");
        else if (InFolder(k, S().EncriptFileFolder) || InFolder(k, S().QuarenteneFolder))
            verb = QStringLiteral("PasteEncript");
        else if (InFolder(in.sourcePath, S().CompFileFolder))
            verb = QStringLiteral("PasteUz");
        else if (!InFolder(in.sourcePath, S().EncriptFileFolder) && !InFolder(in.sourcePath, S().QuarenteneFolder))
            verb = QStringLiteral("Paste");
        else
            verb = QStringLiteral("PasteDecript");
        items.insert(verb, true);
    }
    return items;
}

QString PopupRule::DragMenu(const QString& dropKey, const QString& dragKey)
{
    if (InFolder(dropKey, S().CompFileFolder))
        return QStringLiteral("MenuDragZip");
    if (InFolder(dropKey, S().EncriptFileFolder))
        return QStringLiteral("MenuDragEnc");
    if (InFolder(dragKey, S().CompFileFolder))
        return QStringLiteral("MenuDragUzip");
    if (InFolder(dragKey, S().EncriptFileFolder))
        return QStringLiteral("MenuDragDec");
    return QStringLiteral("MenuDrag");
}

} // namespace vmk
