#pragma once

#include "backup/ArchiveRestore.h"

#include <QFrame>
#include <QString>

class QCheckBox;
class QLineEdit;
class QProgressBar;
class QPushButton;
class QRadioButton;
class QTreeWidget;

namespace vmk
{

namespace zip
{
class ZipArchiver;
}

// BackTree's restore panel (Frame5): the entries of one archive in SmartRestore,
// each with a check box, Check1 to check them all, the choice of destination
// (Option1 the places they came from, Option2 the folder in Text2, picked with
// Command13), Image3 "Restaurar" and Image4 "Cerrar". It shares BackTree's zip
// component: the run panel (Frame2) follows a restore through that component's
// progress, skip and completion events, in restore mode.
class RestorePanel : public QFrame
{
    Q_OBJECT
public:
    explicit RestorePanel(zip::ZipArchiver& zipControl, QWidget* parent = nullptr);

    QTreeWidget* SmartRestore() const { return m_smartRestore; }
    QCheckBox* Check1() const { return m_check1; }
    QRadioButton* Option1() const { return m_option1; }
    QRadioButton* Option2() const { return m_option2; }
    QLineEdit* Text2() const { return m_text2; }
    QPushButton* Command13() const { return m_command13; }
    QPushButton* Image3() const { return m_image3; }
    QPushButton* Image4() const { return m_image4; }
    QProgressBar* ProgressBar() const { return m_progressBar; }

    // Lists `archiveKey` (an archive's full path) into SmartRestore; Check1 shows,
    // unchecked, captioned `caption`. A damaged archive is named in a message.
    void RestorFiles_Click(const QString& archiveKey, const QString& caption);
    void Check1_Click();
    void Option1_Click();
    void Option2_Click();
    void Command13_Click();
    void Image3_Click();
    void Image4_Click();

    // Stored names of the checked rows, in row order.
    QStringList CheckedKeys() const;
    QString AltRestoreFolder() const { return m_restore.AltRestoreFolder(); }
    // What the last restore wrote and refused.
    const ArchiveRestore::Outcome& LastOutcome() const { return m_outcome; }

signals:
    // Image3 starts a restore: BackTree shows the run panel, in restore mode,
    // before the first entry is unpacked.
    void RestoreStarting();
    // The restore is over (also when nothing was checked).
    void RestoreFinished();
    // Image4: back to the panel of archives.
    void CloseRequested();

private:
    zip::ZipArchiver& m_zip;
    ArchiveRestore m_restore;
    ArchiveRestore::Outcome m_outcome;
    QString m_archive;
    QTreeWidget* m_smartRestore;
    QCheckBox* m_check1;
    QRadioButton* m_option1;
    QRadioButton* m_option2;
    QLineEdit* m_text2;
    QPushButton* m_command13;
    QPushButton* m_image3;
    QPushButton* m_image4;
    QProgressBar* m_progressBar;
};

} // namespace vmk
