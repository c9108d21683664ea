#pragma once

#include "filemanager/FileVerbs.h"

#include <QDialog>

class QLabel;

namespace vmk
{

// The properties of a file or folder, in a dialog of our own (the desktop offers
// no properties sheet to hand over to): path, type, size, the three dates, the
// permissions and the owner.
class frmProperties : public QDialog
{
    Q_OBJECT
public:
    explicit frmProperties(const FileVerbs::Facts& facts, QWidget* parent = nullptr);

    // The value shown beside a caption, by the caption's object name
    // ("LblPath", "LblType", "LblSize", "LblCreated", "LblModified", "LblAccessed",
    // "LblPermissions", "LblOwner").
    QString value(const char* name) const;
};

// Shows the properties of `path` (logical, bars removed); when there is nothing
// there, says "Error, el archivo o carpeta no existe" instead. The dialog is
// modeless and deletes itself on closing; null when nothing was shown.
frmProperties* ShowFileProperties(const QString& path, QWidget* parent = nullptr);

} // namespace vmk
