#pragma once

#include <QString>

namespace vmk
{

// Short 8.3 aliases of host names ("Mis Documentos" -> "MISDOC~1"), computed from
// the folder's entries in name order the way FAT numbers them. Used where the
// logic writes a short path (the reboot removal list) and to resolve it back.
class ShortNames
{
public:
    // True when the name already fits 8.3 and needs no alias.
    static bool isShortValid(const QString& name);
    // The alias of `name` among the entries of the native folder `folder`.
    static QString aliasFor(const QString& folder, const QString& name);
    // The entry of `folder` whose alias is `alias` (case-insensitive), or "".
    static QString resolve(const QString& folder, const QString& alias);
};

} // namespace vmk
