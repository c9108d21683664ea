#pragma once

#include <QByteArray>
#include <QList>
#include <QString>

#include <optional>

namespace vmk::scanner
{

// One line of the quarantine ledger QFP.txt: the sealed file's name, one "|",
// and the folder it came from with its final "\" ("run.exe|C:\Tools\").
struct LedgerLine {
    int Number = 0; // 1 for the first line of the file
    QByteArray Raw; // the line's bytes without its end; a rewrite keeps them as they stand
    QString Name; // what stands before the first "|"
    QString Folder; // what stands after it
    QString Problem; // why the line is damaged (a Spanish text of the table), "" when it is sound

    bool sound() const { return Problem.isEmpty(); }
    QString formerPath() const { return Folder + Name; }
};

// The ledger beside the program: one line per quarantined file, in the order of
// quarantining, ended by CR LF. Names and folders are logical text kept in the
// host's bytes (a Latin-1 name keeps its byte, see NativeName), so an old ledger
// and ours read alike. What a line cannot hold as bytes of its own, a line
// break or one of the namespace's private characters U+F000..U+F07F, is written
// as "/n", "/r" or "/xHH": "/" never stands in a logical path, so this form
// cannot meet a real name.
class QuarantineLedger
{
public:
    static constexpr qint64 kMaxBytes = 16 * 1024 * 1024; // a larger ledger is refused, not read

    // Host paths of program folder + "\QFP.txt" and + "\QFP.Tmp", an existing
    // spelling of another case being the same file.
    static QString ledgerPath();
    static QString temporaryPath();
    // The quarantine folder, program drive + #QuarenteneFolder, ending in "\".
    static QString quarantineFolder();
    // Where the sealed item of `name` lies: the quarantine folder + name.
    static QString sealedPath(const QString& name);
    // True when `path` lies in the program drive's #QuarenteneFolder (not case-sensitive).
    static bool holdsQuarantinePath(const QString& path);

    // The bytes of one line, without its end.
    static QByteArray lineFor(const QString& name, const QString& folder);
    // The lines of a ledger's bytes. Never fails: a damaged line (no "|", an empty
    // name, a folder that is no absolute folder, a NUL byte) comes back with its
    // Problem and its bytes, and the last line may lack its end.
    static QList<LedgerLine> parse(const QByteArray& bytes);

    // The ledger's lines; nothing, when it does not exist. A ledger that cannot
    // be read, or is larger than kMaxBytes, is told (naming the file) and gives nothing.
    static std::optional<QList<LedgerLine>> read();
    // Appends one line, creating the ledger when missing; the file is opened and
    // closed around the one line. A ledger that is a link is not written through.
    // False, after a message naming the ledger, when the line could not be written.
    static bool append(const QString& name, const QString& folder);
    // Puts `lines` (bytes without their ends) in the place of the ledger: they go
    // to QFP.Tmp, which then takes the ledger's name in one step, so a stop at any
    // moment leaves either the old ledger or the whole new one. False, after a
    // message naming the ledger, when it could not be done (the old one stays).
    static bool rewrite(const QList<QByteArray>& lines);
};

} // namespace vmk::scanner
