#pragma once

#include <QString>

namespace vmk::zip
{

// Where the component's interface names (the drive-letter namespace, "\") meet
// host paths. Every translation of the component goes through here.
class ZipPaths
{
public:
    static QString toNative(const QString& logical);
    static QString toLogical(const QString& native);
    // "E:..." or "\...": a name that says where it lives by itself.
    static bool isRooted(const QString& name);
    // True when any piece of the name between separators is "..".
    static bool hasParentStep(const QString& name);
    // Stored form ("/" inside the archive) and interface form ("\").
    static QString toStored(const QString& name);
    static QString toInterface(const QString& stored);
};

} // namespace vmk::zip
