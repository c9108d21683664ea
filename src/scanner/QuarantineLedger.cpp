#include "scanner/QuarantineLedger.h"

#include "foundation/Globals.h"
#include "foundation/Messages.h"
#include "foundation/Settings.h"
#include "foundation/Translate.h"
#include "platform/DriveMap.h"
#include "platform/FileRemoval.h"
#include "platform/FileReplace.h"
#include "platform/LogicalPath.h"
#include "platform/NativeName.h"

#include <QFile>
#include <QFileInfo>

namespace vmk::scanner
{
namespace
{
QString besideProgram(const QString& name)
{
    QString folder = G().ProgramFolder;
    if (folder.isEmpty())
        folder = DriveMap::instance().logicalProgramFolder();
    return DriveMap::instance().toNative(LogicalPath::join(folder, name));
}

// What the line cannot hold as bytes of its own, in a "/" form, and back: a
// line break, and the namespace's private characters U+F000..U+F07F (its stand-ins
// for "\" and "|" in host names), whose UTF-8 bytes would read back as a host
// name's own private character.
constexpr char16_t kPrivateFirst = 0xF000;
constexpr char16_t kPrivateLast = 0xF07F;

QString escapeForLine(const QString& text)
{
    QString out;
    out.reserve(text.size());
    for (const QChar c : text) {
        if (c == u'\n')
            out += QStringLiteral("/n");
        else if (c == u'\r')
            out += QStringLiteral("/r");
        else if (c.unicode() >= kPrivateFirst && c.unicode() <= kPrivateLast)
            out += QStringLiteral("/x%1").arg(c.unicode() - kPrivateFirst, 2, 16, QChar(u'0'));
        else
            out += c;
    }
    return out;
}

int hexDigit(QChar c)
{
    const char16_t u = c.unicode();
    if (u >= u'0' && u <= u'9')
        return u - u'0';
    if (u >= u'a' && u <= u'f')
        return u - u'a' + 10;
    return -1;
}

QString unescapeLine(const QString& text)
{
    if (!text.contains(u'/'))
        return text;
    QString out;
    out.reserve(text.size());
    for (qsizetype i = 0; i < text.size(); ++i) {
        const QChar next = i + 1 < text.size() ? text.at(i + 1) : QChar();
        if (text.at(i) != u'/') {
            out += text.at(i);
        } else if (next == u'n' || next == u'r') {
            out += next == u'n' ? u'\n' : u'\r';
            ++i;
        } else if (next == u'x' && i + 3 < text.size() && hexDigit(text.at(i + 2)) >= 0 && hexDigit(text.at(i + 2)) < 8
            && hexDigit(text.at(i + 3)) >= 0) {
            out += QChar(char16_t(kPrivateFirst + hexDigit(text.at(i + 2)) * 16 + hexDigit(text.at(i + 3))));
            i += 3;
        } else {
            out += text.at(i);
        }
    }
    return out;
}

// An absolute folder of the namespace: a drive letter, ":\" and a final "\".
bool isAbsoluteFolder(const QString& folder)
{
    return folder.size() >= 3 && folder.at(0).isLetter() && folder.at(0).unicode() < 0x80 && folder.at(1) == u':'
        && folder.at(2) == u'\\' && folder.endsWith(u'\\');
}

LedgerLine parseLine(const QByteArray& raw, int number)
{
    LedgerLine line;
    line.Number = number;
    line.Raw = raw;
    const qsizetype bar = raw.indexOf('|');
    if (raw.contains('\0')) {
        line.Problem = QStringLiteral("La línea contiene un byte nulo");
        return line;
    }
    if (bar < 0) {
        line.Problem = QStringLiteral("La línea no tiene separador \"|\"");
        return line;
    }
    line.Name = unescapeLine(NativeName::fromBytes(raw.left(bar)));
    line.Folder = unescapeLine(NativeName::fromBytes(raw.mid(bar + 1)));
    if (line.Name.isEmpty())
        line.Problem = QStringLiteral("La línea no tiene nombre de archivo");
    else if (line.Name.contains(u'\\'))
        line.Problem = QStringLiteral("El nombre de la línea contiene \"\\\"");
    else if (!isAbsoluteFolder(line.Folder))
        line.Problem = QStringLiteral("La carpeta de la línea no es una ruta completa terminada en \"\\\"");
    return line;
}

void tellLedger(const QString& words)
{
    ShowMessage(Translate(words) + QStringLiteral("\r\n") + QuarantineLedger::ledgerPath(), 0);
}
} // namespace

QString QuarantineLedger::ledgerPath()
{
    return besideProgram(QStringLiteral("QFP.txt"));
}

QString QuarantineLedger::temporaryPath()
{
    return besideProgram(QStringLiteral("QFP.Tmp"));
}

QString QuarantineLedger::quarantineFolder()
{
    return LogicalPath::withSlash(G().ProgramDrive + S().QuarenteneFolder);
}

QString QuarantineLedger::sealedPath(const QString& name)
{
    return quarantineFolder() + name;
}

bool QuarantineLedger::holdsQuarantinePath(const QString& path)
{
    // Without a program drive or a quarantine folder nothing is a quarantined item.
    if (G().ProgramDrive.isEmpty() || S().QuarenteneFolder.isEmpty())
        return false;
    return path.contains(G().ProgramDrive + S().QuarenteneFolder, Qt::CaseInsensitive);
}

QByteArray QuarantineLedger::lineFor(const QString& name, const QString& folder)
{
    return NativeName::toBytes(escapeForLine(name)) + '|' + NativeName::toBytes(escapeForLine(folder));
}

QList<LedgerLine> QuarantineLedger::parse(const QByteArray& bytes)
{
    QList<LedgerLine> lines;
    qsizetype start = 0;
    int number = 0;
    while (start < bytes.size()) {
        qsizetype end = bytes.indexOf('\n', start);
        const qsizetype next = end < 0 ? bytes.size() : end + 1;
        if (end < 0)
            end = bytes.size();
        // CR LF ends a line; a bare LF, as an editor may leave, is taken alike.
        qsizetype stop = end;
        if (stop > start && bytes.at(stop - 1) == '\r')
            --stop;
        lines.append(parseLine(bytes.mid(start, stop - start), ++number));
        start = next;
    }
    return lines;
}

std::optional<QList<LedgerLine>> QuarantineLedger::read()
{
    const QString path = ledgerPath();
    if (!FileRemoval::entryExists(path))
        return std::nullopt;
    QFile f(path);
    if (!QFileInfo(path).isFile() || !f.open(QIODevice::ReadOnly)) {
        tellLedger(QStringLiteral("¡No se pudo leer el registro de cuarentena!"));
        return std::nullopt;
    }
    if (f.size() > kMaxBytes) {
        tellLedger(QStringLiteral("¡El registro de cuarentena es demasiado grande!"));
        return std::nullopt;
    }
    // Read by the size found, one byte over to see growth past the limit: a read
    // of the limit itself would first take that much memory for every ledger.
    const QByteArray bytes = f.read(f.size() + 1);
    if (bytes.size() > kMaxBytes) {
        tellLedger(QStringLiteral("¡El registro de cuarentena es demasiado grande!"));
        return std::nullopt;
    }
    return parse(bytes);
}

bool QuarantineLedger::append(const QString& name, const QString& folder)
{
    const QString path = ledgerPath();
    const QByteArray line = lineFor(name, folder) + "\r\n";
    bool ok = !QFileInfo(path).isSymLink();
    if (ok) {
        QFile f(path);
        ok = f.open(QIODevice::WriteOnly | QIODevice::Append) && f.write(line) == line.size() && f.flush();
        f.close();
        ok = ok && f.error() == QFileDevice::NoError;
    }
    if (!ok)
        tellLedger(QStringLiteral("¡No se pudo escribir el registro de cuarentena!"));
    return ok;
}

bool QuarantineLedger::rewrite(const QList<QByteArray>& lines)
{
    QByteArray out;
    for (const QByteArray& line : lines)
        out += line + "\r\n";
    const QString temporary = temporaryPath();
    // Whatever stands under the temporary name (a leftover of a stopped run, a
    // link) is taken away first: the new file is made, never written through.
    FileRemoval::makeWritableAndRemove(temporary, false);
    QFile f(temporary);
    bool ok = !FileRemoval::entryExists(temporary) && f.open(QIODevice::NewOnly | QIODevice::WriteOnly)
        && f.write(out) == out.size() && f.flush();
    f.close();
    ok = ok && f.error() == QFileDevice::NoError && FileReplace::replace(temporary, ledgerPath());
    if (!ok) {
        FileRemoval::makeWritableAndRemove(temporary, false);
        tellLedger(QStringLiteral("¡No se pudo escribir el registro de cuarentena!"));
    }
    return ok;
}

} // namespace vmk::scanner
