#include "filemanager/FileVerbs.h"

#include "foundation/Messages.h"
#include "foundation/Translate.h"
#include "platform/DriveMap.h"
#include "platform/EntryChange.h"

#include <QDirIterator>
#include <QFileInfo>
#include <QMimeDatabase>

namespace vmk
{
namespace
{
// The name as a message can show it: control characters as "?".
QString shown(const QString& name)
{
    QString s = name;
    for (QChar& c : s)
        if (c.category() == QChar::Other_Control)
            c = u'?';
    return u'"' + s + u'"';
}

void tellFailure(const char* words, const QString& path, int error)
{
    ShowMessage(Translate(QString::fromUtf8(words)) + QStringLiteral("\r\n") + path + QStringLiteral(" (")
        + QString::number(error) + u')');
}

bool refused(const QString& name)
{
    const QString why = FileVerbs::NameRefusal(name);
    if (why.isEmpty())
        return false;
    ShowMessage(Translate(QStringLiteral("¡Nombre no válido!")) + QStringLiteral("\r\n") + shown(name)
        + QStringLiteral("\r\n") + Translate(why));
    return true;
}

QString joined(const QString& parentFolder, const QString& name)
{
    return parentFolder.endsWith(u'\\') ? parentFolder + name : parentFolder + u'\\' + name;
}

QString permissionText(QFile::Permissions p)
{
    const std::pair<QFile::Permission, char> bits[9] = { { QFile::ReadOwner, 'r' }, { QFile::WriteOwner, 'w' },
        { QFile::ExeOwner, 'x' }, { QFile::ReadGroup, 'r' }, { QFile::WriteGroup, 'w' }, { QFile::ExeGroup, 'x' },
        { QFile::ReadOther, 'r' }, { QFile::WriteOther, 'w' }, { QFile::ExeOther, 'x' } };
    QString text;
    for (const auto& [bit, letter] : bits)
        text += (p & bit) ? QChar::fromLatin1(letter) : u'-';
    return text;
}
} // namespace

QString FileVerbs::NameRefusal(const QString& name)
{
    if (name == u'.' || name == QLatin1String(".."))
        return QStringLiteral("Un nombre no puede ser . ni ..");
    for (QChar c : name) {
        if (c == u'\\' || c == u'/' || c == u'|')
            return QStringLiteral("Un nombre no puede contener \\, / ni |");
        if (c.category() == QChar::Other_Control)
            return QStringLiteral("Un nombre no puede contener saltos de línea ni otros caracteres de control");
    }
    return {};
}

QString FileVerbs::NativeChild(const QString& parentFolder, const QString& name)
{
    QString folder = DriveMap::instance().toNative(parentFolder);
    if (folder.isEmpty())
        return {};
    if (!folder.endsWith(u'/'))
        folder += u'/';
    return folder + DriveMap::decodeName(name);
}

bool FileVerbs::RenameItem(const QString& path, const QString& parentFolder, const QString& newName)
{
    if (refused(newName))
        return false;
    QString from = path;
    if (from.endsWith(u'\\') && from.size() > 3)
        from.chop(1);
    const QString nativeFrom = DriveMap::instance().toNative(from);
    const QString nativeTo = NativeChild(parentFolder, newName);
    int error = 0;
    switch (EntryChange::rename(nativeFrom, nativeTo, &error)) {
    case EntryChange::Outcome::Done:
        return true;
    case EntryChange::Outcome::Exists:
        ShowMessage(Translate(QStringLiteral("¡Ya existe un archivo o carpeta con ese nombre!"))
            + QStringLiteral("\r\n") + joined(parentFolder, newName));
        return false;
    case EntryChange::Outcome::Failed:
        break;
    }
    tellFailure("¡No se pudo renombrar!", from, error);
    return false;
}

bool FileVerbs::MakeFolder(const QString& parentFolder, const QString& name)
{
    if (refused(name))
        return false;
    int error = 0;
    switch (EntryChange::makeFolder(NativeChild(parentFolder, name), &error)) {
    case EntryChange::Outcome::Done:
        return true;
    case EntryChange::Outcome::Exists:
        ShowMessage(Translate(QStringLiteral("¡Ya existe un archivo o carpeta con ese nombre!"))
            + QStringLiteral("\r\n") + joined(parentFolder, name));
        return false;
    case EntryChange::Outcome::Failed:
        break;
    }
    tellFailure("¡No se pudo crear la carpeta!", joined(parentFolder, name), error);
    return false;
}

FileVerbs::Facts FileVerbs::ReadFacts(const QString& path)
{
    Facts f;
    f.path = path;
    QString logical = path;
    if (logical.endsWith(u'\\') && logical.size() > 3)
        logical.chop(1);
    const QString native = DriveMap::hasDriveLetter(logical) ? DriveMap::instance().toNative(logical) : QString();
    if (native.isEmpty())
        return f;
    const QFileInfo info(native);
    f.link = info.isSymLink();
    if (!info.exists() && !f.link)
        return f;
    f.exists = true;
    f.folder = info.isDir();
    if (f.folder) {
        f.type = QStringLiteral("Carpeta");
        f.bytes = 0;
        qint64 seen = 0;
        QDirIterator it(native, QDir::AllEntries | QDir::NoDotAndDotDot | QDir::Hidden | QDir::System,
            QDirIterator::Subdirectories);
        while (it.hasNext()) {
            it.next();
            if (++seen > kFolderWalkLimit) {
                f.partial = true;
                break;
            }
            const QFileInfo entry = it.fileInfo();
            if (entry.isFile() && !entry.isSymLink()) {
                f.bytes += entry.size();
                ++f.files;
            }
        }
    } else {
        f.type = QMimeDatabase().mimeTypeForFile(info).comment();
        f.bytes = info.isFile() ? info.size() : -1;
    }
    f.created = info.birthTime();
    f.modified = info.lastModified();
    f.accessed = info.lastRead();
    f.permissions = permissionText(info.permissions());
    f.owner = info.owner();
    f.group = info.group();
    return f;
}

QString FileVerbs::SizeWords(qint64 bytes)
{
    if (bytes < 0)
        return QStringLiteral("-----");
    const QString words = QString::number(bytes) + QStringLiteral(" Bytes");
    if (bytes > 1024)
        return QString::number(bytes / 1024) + QStringLiteral("KB, ") + words;
    return words;
}

} // namespace vmk
