#pragma once

#include <QByteArray>
#include <QString>
#include <QStringList>

namespace vmk
{

// The backup selection file: plain text of the user's naming, lines ended by CR LF,
// "[Add]", the ListAdd entries, "[Exclude]", the ListExc entries, and nothing else.
// Paths are neither quoted nor escaped; a name's bytes are written as the host
// has them (see NativeName), so a name that is not UTF-8 comes back exactly.
class SelectionFile
{
public:
    struct Lists {
        QStringList add;
        QStringList exclude;
        QString failure; // a message naming the file, or ""
    };

    // The file's bytes. An entry holding a line break cannot be written as a line:
    // it is left out and named in `leftOut`.
    static QByteArray Compose(const QStringList& listAdd, const QStringList& listExc, QStringList* leftOut = nullptr);
    // The entries of the two sections, in file order. Lines end in CR LF, LF or CR;
    // lines before the first section line and empty lines are ignored; "[Add]" and
    // "[Exclude]" are compared exactly.
    static Lists Parse(const QByteArray& bytes);

    // Writes the file (logical path) in one go, replacing it. Returns "" or a
    // message naming the file, and the entries left out, if any.
    static QString Save(const QString& path, const QStringList& listAdd, const QStringList& listExc);
    // Reads the file and keeps the entries whose file or folder still exists; the
    // others are dropped without a word. A file that cannot be read, or that is too
    // large to be a selection, gives empty lists and a message naming it.
    static Lists Load(const QString& path);

    // Larger files are refused: a selection is a few lines.
    static constexpr qint64 kMaxBytes = 16 * 1024 * 1024;
};

} // namespace vmk
