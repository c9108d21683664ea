#include "passwords/PasswordStore.h"

#include "foundation/Globals.h"
#include "foundation/Messages.h"
#include "foundation/Settings.h"
#include "foundation/Translate.h"
#include "platform/DriveMap.h"
#include "platform/FileRemoval.h"
#include "platform/FileReplace.h"
#include "platform/LogicalPath.h"

#include <QFile>

namespace vmk::passwords
{

std::function<bool(const QString&)> g_afterTemporaryStore;

PasswordValues& PV()
{
    static PasswordValues values;
    return values;
}

QString PasswordStorePath()
{
    QString folder = G().ProgramFolder;
    if (folder.isEmpty())
        folder = DriveMap::instance().logicalProgramFolder();
    return DriveMap::instance().toNative(LogicalPath::join(folder, QStringLiteral("PSWADMON.cnf")));
}

void agregalink(PswNodes& nodes, const QString& Line)
{
    const QStringList pieces = Line.split(u';');
    if (pieces.size() != 3)
        return;
    const int record = nodes.Add(0, pieces[0]);
    nodes.SetTag(record, kRecordTag);
    nodes.Add(record, pieces[1]);
    nodes.SetTag(nodes.Add(record, kPasswordMask), pieces[2]);
}

QStringList PasswordStoreLines(const QByteArray& file)
{
    QStringList lines;
    qsizetype start = 0;
    while (start < file.size()) {
        qsizetype end = start;
        while (end < file.size() && file[end] != '\r' && file[end] != '\n')
            ++end;
        lines << QString::fromLatin1(file.mid(start, end - start));
        if (end + 1 < file.size() && file[end] == '\r' && file[end + 1] == '\n')
            ++end;
        start = end + 1;
    }
    return lines;
}

void LoadPasswordStore(PswNodes& nodes)
{
    QFile f(PasswordStorePath());
    if (!f.open(QIODevice::ReadOnly))
        return;
    for (const QString& line : PasswordStoreLines(f.readAll()))
        agregalink(nodes, UnsealValue(line));
}

bool SavePasswordStore(const PswNodes& nodes)
{
    QByteArray out;
    for (int i = 1; i <= nodes.Count() - 1; i += 3) {
        const QString line = nodes.Text(i) + u';' + nodes.Text(i + 1) + u';' + nodes.Tag(i + 2);
        out += SealValue(line).toLatin1() + "\r\n";
    }
    const QString target = PasswordStorePath();
    const QString temporary = target + QStringLiteral(".new");
    QFile f(temporary);
    bool ok = f.open(QIODevice::WriteOnly | QIODevice::Truncate) && f.write(out) == out.size() && f.flush();
    f.close();
    if (ok && g_afterTemporaryStore && !g_afterTemporaryStore(temporary))
        return false;
    ok = ok && FileReplace::replace(temporary, target);
    if (!ok) {
        FileRemoval::makeWritableAndRemove(temporary, false);
        ShowMessage(Translate(QStringLiteral("¡No se pudo guardar el archivo de contraseñas!")) + QStringLiteral("\r\n")
            + target);
    }
    return ok;
}

int RecordOf(const PswNodes& nodes, int index)
{
    if (nodes.Tag(index) == kRecordTag)
        return index;
    return nodes.Parent(index);
}

} // namespace vmk::passwords
