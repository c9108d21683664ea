#pragma once

#include <QString>

namespace vmk
{

// The fonts a device carries (fonts/ beside the program, with a fontconfig file
// of their own: a Latin and a CJK-capable family) stand in for the host's only
// on a host that has no font configuration at all. Where the host has one, its
// fonts, caches and the user's choices are kept.
//
// Debian's Qt finds fonts through fontconfig on every platform plugin (xcb and
// offscreen alike); QT_QPA_FONTDIR is read only by Qt's fontconfig-less font
// database, so it is fontconfig that is pointed at the device, through
// FONTCONFIG_FILE, before the first window reads the font list.
class DeviceFonts
{
public:
    // The fontconfig file to use: the device's when the host has none (neither
    // FONTCONFIG_FILE nor FONTCONFIG_PATH set, no `hostConfig` file) and the
    // device carries one; "" otherwise.
    static QString configToUse(
        const QString& programFolder, const QString& hostConfig = QStringLiteral("/etc/fonts/fonts.conf"));
    // Sets FONTCONFIG_FILE when configToUse() names the device's file; to be
    // called before the QApplication is built.
    static void useWhenHostHasNone();
};

} // namespace vmk
