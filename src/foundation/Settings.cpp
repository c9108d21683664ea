#include "foundation/Settings.h"

#include "components/cipher/ValueSeal.h"
#include "foundation/Globals.h"
#include "foundation/Messages.h"
#include "foundation/Translate.h"
#include "platform/DriveMap.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QSaveFile>
#include <QStringList>

#include <cmath>
#include <variant>

namespace vmk
{
namespace
{
using TextField = QString SettingsValues::*;
using IntField = int SettingsValues::*;

enum class Kind {
    Plain, // engine option, kept as written
    SealedText, // "#" key, clear text in memory
    SealedInt, // "#" key, 16-bit integer in memory
    Ignored, // written by the defaults, never read
    Compared, // "#UpdateFrom": recognised, no action at start
};

struct KeyInfo {
    const char* key;
    Kind kind;
    std::variant<std::monostate, TextField, IntField> field;
};

const QList<KeyInfo>& keyTable()
{
    static const QList<KeyInfo> table {
        { "ArchiveScan", Kind::Plain, &SettingsValues::ArchiveScan },
        { "ArchiveMaxSize", Kind::Plain, &SettingsValues::ArchiveMaxSize },
        { "ArchiveMaxRec", Kind::Plain, &SettingsValues::ArchiveMaxRec },
        { "MailboxScan", Kind::Plain, &SettingsValues::MailboxScan },
        { "HeurMacro", Kind::Plain, &SettingsValues::HeurMacro },
        { "HeurLevel", Kind::Plain, &SettingsValues::HeurLevel },
        { "ScanTimeout", Kind::Plain, &SettingsValues::ScanTimeout },
        { "Repair", Kind::Plain, &SettingsValues::Repair },
        { "SavapiNotifyOffice", Kind::Plain, &SettingsValues::SavapiNotifyOffice },
        { "SavapiNotifyOfficeMacro", Kind::Plain, &SettingsValues::SavapiNotifyOfficeMacro },
        { "DetectAdspy", Kind::Plain, &SettingsValues::DetectAdspy },
        { "DetectDial", Kind::Plain, &SettingsValues::DetectDial },
        { "DetectGame", Kind::Plain, &SettingsValues::DetectGame },
        { "DetectJoke", Kind::Plain, &SettingsValues::DetectJoke },
        { "DetectPck", Kind::Plain, &SettingsValues::DetectPck },
        { "DetectPhish", Kind::Plain, &SettingsValues::DetectPhish },
        { "DetectSpr", Kind::Plain, &SettingsValues::DetectSpr },
        { "UpdateProxy", Kind::Ignored, {} },
        { "#UpdateProxySettings", Kind::Ignored, {} },
        { "#ScanFilesOperations", Kind::SealedText, &SettingsValues::ScanFilesOperations },
        { "#CompFileFolder", Kind::SealedText, &SettingsValues::CompFileFolder },
        { "#CompAlgorithm", Kind::SealedInt, &SettingsValues::CompAlgorithm },
        { "#EncriptFileFolder", Kind::SealedText, &SettingsValues::EncriptFileFolder },
        { "#EncripAlgorithm", Kind::SealedInt, &SettingsValues::EncripAlgorithm },
        { "#DeleteFilesMode", Kind::SealedText, &SettingsValues::DeleteFilesMode },
        { "#UpdateFrom", Kind::Compared, &SettingsValues::UpdateFrom },
        { "#OtherLocation", Kind::SealedText, &SettingsValues::OtherLocation },
        { "#ScanBeforeBackup", Kind::SealedText, &SettingsValues::ScanBeforeBackup },
        { "#BackupsFolder", Kind::SealedText, &SettingsValues::BackupsFolder },
        { "#BCompAlgorithm", Kind::SealedInt, &SettingsValues::BCompAlgorithm },
        { "#ScanFilesAfterUpdate", Kind::SealedText, &SettingsValues::ScanFilesAfterUpdate },
        { "#QuarenteneFolder", Kind::SealedText, &SettingsValues::QuarenteneFolder },
        { "#DeleteFilesAfter", Kind::SealedInt, &SettingsValues::DeleteFilesAfter },
        { "#DeleteFilesOpt", Kind::SealedInt, &SettingsValues::DeleteFilesOpt },
        { "#DesinfectedFolder", Kind::SealedText, &SettingsValues::DesinfectedFolder },
        { "#FtpServer", Kind::SealedText, &SettingsValues::FtpServer },
        { "#FtpUserName", Kind::SealedText, &SettingsValues::FtpUserName },
        { "#FtpPassword", Kind::SealedText, &SettingsValues::FtpPassword },
    };
    return table;
}

const KeyInfo* findKey(const QString& key)
{
    for (const KeyInfo& k : keyTable()) {
        if (key == QLatin1String(k.key))
            return &k;
    }
    return nullptr;
}

// The order of WriteDefaultSettings, with the first values. Folder keys are
// written only for Spanish and English.
QList<QPair<QString, QString>> defaultLines()
{
    const int lang = G().LanguageIndex;
    auto folder = [lang](const char* es, const char* en) -> std::optional<QString> {
        if (lang == 0)
            return QString::fromUtf8(es);
        if (lang == 1)
            return QString::fromUtf8(en);
        return std::nullopt;
    };
    QList<QPair<QString, std::optional<QString>>> lines {
        { "ArchiveScan", "0" },
        { "ArchiveMaxSize", "0" },
        { "ArchiveMaxRec", "0" },
        { "MailboxScan", "0" },
        { "HeurMacro", "1" },
        { "HeurLevel", "2" },
        { "ScanTimeout", "0" },
        { "Repair", "0" },
        { "SavapiNotifyOffice", "1" },
        { "SavapiNotifyOfficeMacro", "1" },
        { "DetectAdspy", "1" },
        { "DetectDial", "1" },
        { "DetectGame", "1" },
        { "DetectJoke", "1" },
        { "DetectPck", "1" },
        { "DetectPhish", "1" },
        { "DetectSpr", "1" },
        { "UpdateProxy", "0" },
        { "#UpdateProxySettings", "" },
        { "#ScanFilesOperations", "1" },
        { "#CompFileFolder", folder("\\Documentos Comprimidos\\", "\\Compressed Documents\\") },
        { "#CompAlgorithm", "0" },
        { "#EncriptFileFolder", folder("\\Documentos Encriptados\\", "\\Encrypted Documents\\") },
        { "#EncripAlgorithm", "0" },
        { "#DeleteFilesMode", "0" },
        { "#UpdateFrom", "0" },
        { "#ScanBeforeBackup", "1" },
        { "#BackupsFolder", folder("\\Mis Documentos\\Respaldos\\", "\\My Documents\\Backups\\") },
        { "#BCompAlgorithm", "0" },
        { "#ScanFilesAfterUpdate", "0" },
        { "#QuarenteneFolder", folder("\\Mis Documentos\\Cuarentena\\", "\\My Documents\\Quarentene\\") },
        { "#DeleteFilesAfter", "60" },
        { "#DeleteFilesOpt", "1" },
        { "#DesinfectedFolder", folder("\\Mis Documentos\\", "\\My Documents\\") },
        { "#FtpServer", "" },
        { "#FtpUserName", "" },
        { "#FtpPassword", "" },
    };
    QList<QPair<QString, QString>> out;
    for (const auto& [key, value] : lines) {
        if (value)
            out << qMakePair(key, *value);
    }
    return out;
}

// The order of WriteSettings (the settings dialog).
const QStringList& dialogOrder()
{
    static const QStringList order {
        "ArchiveScan",
        "ArchiveMaxSize",
        "ScanTimeout",
        "ArchiveMaxRec",
        "MailboxScan",
        "HeurMacro",
        "HeurLevel",
        "Repair",
        "SavapiNotifyOffice",
        "SavapiNotifyOfficeMacro",
        "DetectAdspy",
        "DetectDial",
        "DetectGame",
        "DetectJoke",
        "DetectPck",
        "DetectPhish",
        "DetectSpr",
        "#ScanFilesOperations",
        "#CompFileFolder",
        "#CompAlgorithm",
        "#EncriptFileFolder",
        "#EncripAlgorithm",
        "#DeleteFilesMode",
        "#UpdateFrom",
        "#OtherLocation",
        "#ScanBeforeBackup",
        "#BackupsFolder",
        "#BCompAlgorithm",
        "#ScanFilesAfterUpdate",
        "#QuarenteneFolder",
        "#DeleteFilesAfter",
        "#DeleteFilesOpt",
        "#DesinfectedFolder",
        "#FtpServer",
        "#FtpUserName",
        "#FtpPassword",
    };
    return order;
}

QString clearValue(const KeyInfo& k)
{
    if (const auto* t = std::get_if<TextField>(&k.field))
        return S().*(*t);
    if (const auto* i = std::get_if<IntField>(&k.field))
        return QString::number(S().*(*i));
    return {};
}

// A 16-bit integer as the conversion of the original reads it: blanks allowed,
// fractions rounded half to even, anything else (also "") an error.
std::optional<int> toInt16(const QString& text)
{
    bool ok = false;
    const double v = text.trimmed().toDouble(&ok);
    if (!ok || !std::isfinite(v))
        return std::nullopt;
    const double r = std::nearbyint(v);
    if (r < -32768.0 || r > 32767.0)
        return std::nullopt;
    return static_cast<int>(r);
}

// The five keys that the reload compares with a trailing "=", so they never match.
bool keptOnReload(const QString& key)
{
    static const QStringList kept { "#DeleteFilesOpt", "#FtpServer", "#FtpUserName", "#FtpPassword",
        "#DesinfectedFolder" };
    return kept.contains(key);
}

bool applyLine(const QString& line, bool reload)
{
    const qsizetype p = line.indexOf(u'=');
    if (p < 0)
        return false;
    const QString key = line.left(p);
    const QString value = line.mid(p + 1);
    const KeyInfo* k = findKey(key);
    if (!k || (reload && keptOnReload(key)))
        return true;
    switch (k->kind) {
    case Kind::Plain:
        S().*std::get<TextField>(k->field) = value;
        return true;
    case Kind::SealedText:
        S().*std::get<TextField>(k->field) = UnsealValue(value);
        return true;
    case Kind::SealedInt: {
        const auto n = toInt16(UnsealValue(value));
        if (!n)
            return false;
        S().*std::get<IntField>(k->field) = *n;
        return true;
    }
    case Kind::Ignored:
    case Kind::Compared:
        return true;
    }
    return true;
}

// Lines of the file as the read loop sees them. std::nullopt when the file cannot
// be opened; an empty file gives no lines, which the readers treat as an error.
std::optional<QStringList> readLines()
{
    QFile f(SettingsFilePath());
    if (!f.open(QIODevice::ReadOnly))
        return std::nullopt;
    QString text = QString::fromUtf8(f.readAll());
    if (text.isEmpty())
        return QStringList();
    if (text.endsWith(u'\n'))
        text.chop(1);
    QStringList lines = text.split(u'\n');
    for (QString& l : lines) {
        if (l.endsWith(u'\r'))
            l.chop(1);
    }
    return lines;
}

bool readAll(bool reload, bool stopAtError)
{
    const auto lines = readLines();
    if (!lines || lines->isEmpty())
        return false;
    bool ok = true;
    for (const QString& line : *lines) {
        if (!applyLine(line, reload)) {
            ok = false;
            if (stopAtError)
                return false;
        }
    }
    return ok;
}

bool writeLines(const QList<QPair<QString, QString>>& lines)
{
    const QString path = SettingsFilePath();
    QDir().mkpath(QFileInfo(path).absolutePath());
    QSaveFile f(path);
    if (!f.open(QIODevice::WriteOnly))
        return false;
    QByteArray out;
    for (const auto& [key, value] : lines)
        out += key.toUtf8() + '=' + value.toUtf8() + "\r\n";
    f.write(out);
    return f.commit();
}

QString sealedIfNeeded(const QString& key, const QString& clear)
{
    return key.startsWith(u'#') ? SealValue(clear) : clear;
}
} // namespace

SettingsValues& S()
{
    static SettingsValues values;
    return values;
}

QString SettingsFilePath()
{
    QString folder = G().ProgramFolder;
    if (folder.isEmpty())
        folder = DriveMap::instance().logicalProgramFolder();
    while (folder.endsWith(u'\\'))
        folder.chop(1);
    return DriveMap::instance().toNative(folder + QStringLiteral("\\VMK.cnf"));
}

bool ApplySettingLine(const QString& line)
{
    return applyLine(line, false);
}

void ReadSettings()
{
    if (QFileInfo::exists(SettingsFilePath()) && readAll(false, true))
        return;
    // Missing, unreadable or damaged: replaced by the defaults without a word.
    WriteDefaultSettings();
    readAll(false, false);
}

bool WriteDefaultSettings()
{
    QList<QPair<QString, QString>> lines = defaultLines();
    for (auto& [key, value] : lines)
        value = sealedIfNeeded(key, value);
    return writeLines(lines);
}

bool WriteSettings()
{
    QList<QPair<QString, QString>> lines;
    for (const QString& key : dialogOrder())
        lines << qMakePair(key, sealedIfNeeded(key, clearValue(*findKey(key))));
    return writeLines(lines);
}

bool ReloadSettings()
{
    if (!QFileInfo::exists(SettingsFilePath()))
        WriteSettings();
    return readAll(true, true);
}

QList<QPair<QString, QString>> SettingsInDefaultOrder()
{
    QList<QPair<QString, QString>> out;
    for (const KeyInfo& k : keyTable()) {
        if (k.kind == Kind::Ignored || QLatin1String(k.key) == QLatin1String("#OtherLocation"))
            continue;
        out << qMakePair(QString::fromLatin1(k.key), clearValue(k));
    }
    out << qMakePair(QStringLiteral("#OtherLocation"), S().OtherLocation);
    return out;
}

QString BytesToHex(const QByteArray& bytes)
{
    return QString::fromLatin1(bytes.toHex()).toUpper();
}

QByteArray HexToBytes(const QString& hex)
{
    // Each pair is read as "&H" + pair: the leading hex digits count, others give 0.
    QByteArray out;
    for (qsizetype i = 0; i < hex.size(); i += 2) {
        const QString pair = hex.mid(i, 2);
        int value = 0;
        for (QChar c : pair) {
            const int d = QStringLiteral("0123456789ABCDEF").indexOf(c.toUpper());
            if (d < 0)
                break;
            value = value * 16 + d;
        }
        out.append(static_cast<char>(value));
    }
    return out;
}

QString SealValue(const QString& text)
{
    const auto sealed = cipher::ValueSeal::seal(text.toUtf8());
    if (!sealed) {
        ShowMessage(Translate(QStringLiteral("¡Error de encriptado!")) + QStringLiteral(" (")
                + QString::number(kSealErrorLibrary) + u')',
            0);
        return {};
    }
    return BytesToHex(*sealed);
}

QString UnsealValue(const QString& hex)
{
    const auto clear = cipher::ValueSeal::unseal(HexToBytes(hex));
    if (!clear) {
        ShowMessage(Translate(QStringLiteral("¡Error de decriptado!")) + QStringLiteral("\n(")
                + QString::number(kSealErrorDamaged) + u')',
            0);
        return {};
    }
    return QString::fromUtf8(*clear);
}

} // namespace vmk
