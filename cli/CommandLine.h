#pragma once

#include <QList>
#include <QMap>
#include <QString>
#include <QStringList>

// One option a command accepts: "--name", with or without a value after it.
struct CliOption {
    QString name;
    bool takesValue = false;
};

// The arguments of one command, split into options and operands. Options may
// stand before or after the operands; "--" ends them, so an operand may begin
// with "-". Every fault is thrown as a CliFailure that names the option.
class CommandLine
{
public:
    CommandLine(const QStringList& args, const QList<CliOption>& options);

    bool has(const QString& name) const { return m_values.contains(name); }
    QString value(const QString& name, const QString& fallback = {}) const { return m_values.value(name, fallback); }
    const QStringList& operands() const { return m_operands; }
    // A usage failure unless there are min to max operands (max -1: no limit);
    // `names` are the operands' names in the synopsis, to say which one is missing.
    void expectOperands(int min, int max, const QStringList& names) const;

    // Where a path given on the command line reads or writes: a host path, or a
    // logical one with a drive letter. Read paths are made absolute and canonical,
    // links and "." and ".." resolved, so a folder reached through a link is its
    // real self (its drive, its device). Write paths resolve all but their last
    // name, so writing never goes through a link that stands in the target's place.
    enum class PathUse { Read, Write };
    static QString hostPath(const QString& arg, PathUse use = PathUse::Read);
    // hostPath, and a failure naming `arg` unless it is a readable regular file.
    static QString inputFile(const QString& arg);
    // hostPath, and a failure naming `arg` unless it is a folder.
    static QString inputFolder(const QString& arg);
    // hostPath for a file to write: a failure naming `arg` when it is a folder or
    // its folder does not exist.
    static QString outputFile(const QString& arg);

private:
    QMap<QString, QString> m_values;
    QStringList m_operands;
};
