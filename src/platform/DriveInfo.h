#pragma once

#include <QChar>
#include <QString>

namespace vmk
{

// One lettered drive of the namespace.
struct DriveInfo {
    QChar letter; // upper case, 'C'..'Z'
    QString root; // native folder the letter stands for, e.g. "/" or "/media/ana/VORMAK"
    QString label; // volume label when the host knows one
    QString fsType; // filesystem type, empty for a folder drive
    bool isDevice = false;

    QString drive() const { return QString(letter) + u':'; } // "E:"
    // "e: [VORMAK]": the letter and the label, or the mount point when there is no label.
    QString display() const
    {
        return QString(letter.toLower()) + QStringLiteral(": [") + (label.isEmpty() ? root : label) + u']';
    }
};

} // namespace vmk
