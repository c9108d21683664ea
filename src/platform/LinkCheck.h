#pragma once

#include <QString>

namespace vmk
{

// What a transfer must know of links before it reads through one or writes
// under a name: native paths, bytes that are not UTF-8 in NativeName's form.
class LinkCheck
{
public:
    // True when the entry itself is a symbolic link (dangling or not).
    static bool isLink(const QString& nativePath);
    // True when the entry itself, not followed, is a regular file.
    static bool isRegularFile(const QString& nativePath);
    // The path with every link resolved, as the kernel would reach it; "" when it
    // leads nowhere.
    static QString resolved(const QString& nativePath);
    // True when both paths reach the same file or folder (links followed).
    static bool sameEntry(const QString& nativeA, const QString& nativeB);
};

} // namespace vmk
