#pragma once

#include <QList>
#include <QPair>
#include <QString>

#include <optional>

namespace vmk
{

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
    // The fingerprint of the server certificate the owner accepted, or "".
    QString FtpCertificate;
    // Proof of the owner's password (Argon2id with its salt), never the password.
    QString OwnerPassCheck;
};

SettingsValues& S();

// VMK.cnf beside the executable (G().ProgramFolder), UTF-8 with CR LF. Files are
// replaced through a temporary file and a rename, so a pulled drive never leaves
// half a file. The writers return false when the file could not be written.
QString SettingsFilePath(); // native path of VMK.cnf
void ReadSettings();
// False when the line is malformed (no "=") or an integer setting is not a
// number: ReadSettings then replaces the file by the defaults. A sealed value
// that does not unseal is no such error: its key takes its first value for the
// present language and a message names the key. The keys and their facts are
// the table of SettingKey.h.
bool ApplySettingLine(const QString& line);
// The value of a 16-bit integer setting as the settings are read: blanks allowed,
// fractions rounded half to even; nullopt for anything else (also "").
std::optional<int> SettingInt16(const QString& text);
bool WriteDefaultSettings();
bool WriteSettings();
// Re-reads the file (cancel in the settings dialog). Unlike ReadSettings it keeps
// in memory "#DeleteFilesOpt", "#FtpServer", "#FtpUserName", "#FtpPassword" and
// "#DesinfectedFolder". False when a line could not be applied.
bool ReloadSettings();
// Writes one key's present value into VMK.cnf, the other lines left as the file
// holds them (a line is added when the key has none); a missing file is written
// whole. False when the file could not be written.
bool StoreSettingInFile(const QString& name);

// Every setting with its clear value, in the order WriteDefaultSettings writes
// them (keys without a variable left out), then "#OtherLocation".
QList<QPair<QString, QString>> SettingsInDefaultOrder();

// Upper-case hexadecimal of the value sealed under the suite's fixed pass phrase;
// "" after an error, which is shown as "¡Error de encriptado!" with its number.
QString SealValue(const QString& text);
// The clear text; "" after an error, shown as "¡Error de decriptado!" with its number.
QString UnsealValue(const QString& hex);
QString BytesToHex(const QByteArray& bytes);
QByteArray HexToBytes(const QString& hex);

// Numbers shown with the seal messages.
constexpr int kSealErrorLibrary = 1; // the cipher library could not be used
constexpr int kSealErrorDamaged = 2; // not sealed by us, damaged or truncated

} // namespace vmk
