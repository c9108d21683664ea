#pragma once

#include <QString>

namespace vmk {

// Every setting of VMK.cnf as a process-wide variable, named as its key without "#".
// Plain keys are the engine's options, kept as the text the file holds.
struct SettingsValues {
    QString ArchiveScan, ArchiveMaxSize, ArchiveMaxRec, MailboxScan, HeurMacro, HeurLevel, ScanTimeout, Repair,
        SavapiNotifyOffice, SavapiNotifyOfficeMacro, DetectAdspy, DetectDial, DetectGame, DetectJoke, DetectPck,
        DetectPhish, DetectSpr;
    QString ScanFilesOperations;
    QString CompFileFolder;
    int CompAlgorithm = 0;
    QString EncriptFileFolder;
    int EncripAlgorithm = 0;
    QString DeleteFilesMode;
    QString UpdateFrom;
    QString OtherLocation;
    QString ScanBeforeBackup;
    QString BackupsFolder;
    int BCompAlgorithm = 0;
    QString ScanFilesAfterUpdate;
    QString QuarenteneFolder;
    int DeleteFilesAfter = 0;
    int DeleteFilesOpt = 0;
    QString DesinfectedFolder;
    QString FtpServer, FtpUserName, FtpPassword;
};

SettingsValues& S();

// VMK.cnf beside the executable (G().ProgramFolder).
void ReadSettings();
bool ApplySettingLine(const QString& line);
void WriteDefaultSettings();
void WriteSettings();
void ReloadSettings();

QString SealValue(const QString& text);
QString UnsealValue(const QString& hex);
QString BytesToHex(const QByteArray& bytes);
QByteArray HexToBytes(const QString& hex);

}  // namespace vmk
