#pragma once

#include <QString>
#include <QStringList>

#include <optional>

namespace vmk
{

// A file-backed stand-in for the keys of HKEY_CLASSES_ROOT that the suite touches
// (the shell verbs "Folder\shell\..." and "*\shell\..."). Keys are compared without
// regard to case, as the registry does; a key can be deleted only when it has no
// subkeys. Each call reads the file and each change rewrites it whole through a
// temporary file, so two processes never see half a file.
class Registry
{
public:
    // Where the keys are kept; by default "Vormak/classes-root.reg" in the user's
    // configuration folder.
    static void setFile(const QString& nativePath);
    static QString file();

    static bool keyExists(const QString& key);
    // Creates the key and any missing parents; true when it exists afterwards.
    static bool createKey(const QString& key);
    // False when the key is missing, has subkeys, or the file cannot be written.
    static bool deleteKey(const QString& key);
    static bool setDefaultValue(const QString& key, const QString& value);
    static std::optional<QString> defaultValue(const QString& key);
    static QStringList keys();
};

} // namespace vmk
