#include "CommandLine.h"

#include "CliFailure.h"

#include "platform/DriveMap.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>

CommandLine::CommandLine(const QStringList& args, const QList<CliOption>& options)
{
    bool optionsEnded = false;
    for (qsizetype i = 0; i < args.size(); ++i) {
        const QString& a = args.at(i);
        if (optionsEnded || a == QLatin1String("-") || !a.startsWith(u'-')) {
            m_operands << a;
            continue;
        }
        if (a == QLatin1String("--")) {
            optionsEnded = true;
            continue;
        }
        // "--name=value" is the same as "--name value".
        const qsizetype eq = a.indexOf(u'=');
        const QString name = eq > 0 ? a.left(eq) : a;
        const CliOption* known = nullptr;
        for (const CliOption& o : options) {
            if (o.name == name)
                known = &o;
        }
        if (!known)
            throw CliFailure::usage(name, QStringLiteral("opción desconocida"));
        if (!known->takesValue) {
            if (eq > 0)
                throw CliFailure::usage(name, QStringLiteral("esta opción no lleva valor"));
            m_values.insert(name, QString());
        } else if (eq > 0) {
            m_values.insert(name, a.mid(eq + 1));
        } else if (i + 1 < args.size()) {
            m_values.insert(name, args.at(++i));
        } else {
            throw CliFailure::usage(name, QStringLiteral("falta el valor de la opción"));
        }
    }
}

void CommandLine::expectOperands(int min, int max, const QStringList& names) const
{
    if (m_operands.size() < min) {
        const QString missing = names.value(m_operands.size(), names.isEmpty() ? QString() : names.last());
        throw CliFailure::usage(missing, QStringLiteral("falta este operando"));
    }
    if (max >= 0 && m_operands.size() > max)
        throw CliFailure::usage(m_operands.at(max), QStringLiteral("sobra este operando"));
}

QString CommandLine::hostPath(const QString& arg, PathUse use)
{
    QString native = arg;
    if (vmk::DriveMap::hasDriveLetter(arg)) {
        native = vmk::DriveMap::instance().toNative(arg);
        if (native.isEmpty())
            throw CliFailure(arg, QStringLiteral("no existe esa unidad"));
    }
    // Resolved one name at a time: "link/.." is the folder above the link's
    // target, as the filesystem sees it, not the folder that holds the link.
    // (QFileInfo::absoluteFilePath would fold the ".." away by text.)
    const QString absolute = native.startsWith(u'/') ? native : QDir::currentPath() + u'/' + native;
    const QStringList names = absolute.split(u'/', Qt::SkipEmptyParts);
    QString path = QStringLiteral("/");
    bool resolving = true;
    for (qsizetype i = 0; i < names.size(); ++i) {
        const QString& name = names.at(i);
        if (name == QLatin1String("."))
            continue;
        if (name == QLatin1String("..")) {
            path = QFileInfo(path).path();
            continue;
        }
        const QString next = path == QLatin1String("/") ? u'/' + name : path + u'/' + name;
        const bool lastToWrite = use == PathUse::Write && i == names.size() - 1;
        if (resolving && !lastToWrite) {
            const QString real = QFileInfo(next).canonicalFilePath();
            if (!real.isEmpty()) {
                path = real;
                continue;
            }
            resolving = false; // the names after a missing one stay as written
        }
        path = next;
    }
    return path;
}

QString CommandLine::inputFile(const QString& arg)
{
    const QString path = hostPath(arg);
    const QFileInfo fi(path);
    if (!fi.exists())
        throw CliFailure(arg, QStringLiteral("no existe"));
    if (fi.isDir())
        throw CliFailure(arg, QStringLiteral("es una carpeta; se esperaba un archivo"));
    if (!fi.isFile())
        throw CliFailure(arg, QStringLiteral("no es un archivo normal"));
    QFile probe(path);
    if (!probe.open(QIODevice::ReadOnly))
        throw CliFailure(arg, QStringLiteral("no se puede leer"));
    return path;
}

QString CommandLine::inputFolder(const QString& arg)
{
    const QString path = hostPath(arg);
    const QFileInfo fi(path);
    if (!fi.exists())
        throw CliFailure(arg, QStringLiteral("no existe"));
    if (!fi.isDir())
        throw CliFailure(arg, QStringLiteral("no es una carpeta"));
    return path;
}

QString CommandLine::outputFile(const QString& arg)
{
    const QString path = hostPath(arg, PathUse::Write);
    const QFileInfo fi(path);
    if (fi.isDir() && !fi.isSymLink())
        throw CliFailure(arg, QStringLiteral("es una carpeta; se esperaba un archivo"));
    if (!QFileInfo(fi.path()).isDir())
        throw CliFailure(arg, QStringLiteral("no existe su carpeta"));
    return path;
}
