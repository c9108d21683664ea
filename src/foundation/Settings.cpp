#include "foundation/Settings.h"

#include "components/cipher/ValueSeal.h"
#include "foundation/Globals.h"
#include "foundation/Messages.h"
#include "foundation/SettingKey.h"
#include "foundation/Translate.h"
#include "platform/DriveMap.h"
#include "platform/LogicalPath.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QSaveFile>
#include <QStringList>

#include <cmath>
#include <optional>

namespace vmk
{
namespace
{
// A line of the file: the key and its value, sealed for the "#" keys.
QPair<QString, QString> fileLine(const SettingKey& k, const QString& clear)
{
    return qMakePair(QString::fromLatin1(k.Name), k.sealed() ? SealValue(clear) : clear);
}

std::optional<QString> unsealQuietly(const QString& hex)
{
    const auto clear = cipher::ValueSeal::unseal(HexToBytes(hex));
    if (!clear)
        return std::nullopt;
    return QString::fromUtf8(*clear);
}

} // namespace

std::optional<int> SettingInt16(const QString& text)
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

namespace
{

// A sealed value that does not unseal: the key takes its first value for the
// present language, and the user is told which key it was. The file is left as
// it stands, so nothing is written over what may still be recovered.
QString unsealOrDefault(const SettingKey& k, const QString& hex)
{
    if (auto clear = unsealQuietly(hex))
        return *clear;
    ShowMessage(Translate(QStringLiteral("¡Valor dañado en VMK.cnf! Se usa el valor por defecto de la clave:"))
            + QStringLiteral("\r\n") + QString::fromLatin1(k.Name),
        0);
    return k.defaultFor(G().LanguageIndex).value_or(QString());
}

bool applyLine(const QString& line, bool reload)
{
    const qsizetype p = line.indexOf(u'=');
    if (p < 0)
        return false;
    const QString key = line.left(p);
    const QString value = line.mid(p + 1);
    const SettingKey* k = FindSettingKey(key);
    if (!k || !k->ReadAtStart || (reload && k->KeptOnReload))
        return true;
    const QString clear = k->sealed() ? unsealOrDefault(*k, value) : value;
    if (k->TextVariable) {
        S().*(k->TextVariable) = clear;
        return true;
    }
    if (k->IntVariable) {
        const auto n = SettingInt16(clear);
        if (!n)
            return false;
        S().*(k->IntVariable) = *n;
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
    return DriveMap::instance().toNative(LogicalPath::join(folder, QStringLiteral("VMK.cnf")));
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
    // The folder keys have no line in the languages without a first value for them.
    QList<QPair<QString, QString>> lines;
    for (const SettingKey* k : SettingKeysBy(&SettingKey::DefaultOrder)) {
        if (const auto clear = k->defaultFor(G().LanguageIndex))
            lines << fileLine(*k, *clear);
    }
    return writeLines(lines);
}

bool WriteSettings()
{
    QList<QPair<QString, QString>> lines;
    for (const SettingKey* k : SettingKeysBy(&SettingKey::SaveOrder))
        lines << fileLine(*k, k->clearText(S()));
    return writeLines(lines);
}

bool ReloadSettings()
{
    if (!QFileInfo::exists(SettingsFilePath()))
        WriteSettings();
    return readAll(true, true);
}

bool StoreSettingInFile(const QString& name)
{
    const SettingKey* k = FindSettingKey(name);
    if (!k)
        return false;
    // Without a file there are no other lines to keep: the whole settings go.
    const auto existing = readLines();
    if (!existing)
        return WriteSettings();
    QList<QPair<QString, QString>> lines;
    bool found = false;
    for (const QString& line : *existing) {
        const qsizetype p = line.indexOf(u'=');
        if (p >= 0 && line.left(p) == name) {
            if (!found)
                lines << fileLine(*k, k->clearText(S()));
            found = true;
        } else {
            lines << qMakePair(line.left(p < 0 ? line.size() : p), p < 0 ? QString() : line.mid(p + 1));
        }
    }
    if (!found)
        lines << fileLine(*k, k->clearText(S()));
    return writeLines(lines);
}

QList<QPair<QString, QString>> SettingsInDefaultOrder()
{
    QList<QPair<QString, QString>> out;
    for (const SettingKey& k : SettingKeys()) {
        if (k.form() != SettingForm::None)
            out << qMakePair(QString::fromLatin1(k.Name), k.clearText(S()));
    }
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
    const auto clear = unsealQuietly(hex);
    if (!clear) {
        ShowMessage(Translate(QStringLiteral("¡Error de decriptado!")) + QStringLiteral("\n(")
                + QString::number(kSealErrorDamaged) + u')',
            0);
        return {};
    }
    return *clear;
}

} // namespace vmk
