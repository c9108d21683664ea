#pragma once

#include "passwords/PswNodes.h"

#include <QByteArray>
#include <QString>
#include <QStringList>

#include <functional>

namespace vmk::passwords
{

// The records of the password manager: PSWADMON.cnf in the program folder, one
// record a line, each line the sealed form (the settings' seal, hexadecimal) of
// "site;user;password". In memory a record is three nodes of PswNodes: the site
// (Tag "main"), the user, and the mask "******" whose Tag is the password.

inline const QString kRecordTag = QStringLiteral("main");
inline const QString kPasswordMask = QStringLiteral("******");

// Module state shared by the password screens.
struct PasswordValues {
    // While FormNewlink is open: the index of the record under edit as decimal
    // text, or "" (new record, view). After its Aceptar: the finished plain line
    // waiting for agregalink.
    QString PendingLink;
};
PasswordValues& PV();

// Native path of PSWADMON.cnf beside the program.
QString PasswordStorePath();

// Adds the record of one plain line "site;user;password" at the end; a line that
// does not split into exactly three pieces adds nothing.
void agregalink(PswNodes& nodes, const QString& Line);
// The lines of the file as the reader takes them: each ended by CR LF (a bare LF
// or CR ends one too), a last line without an end kept; an empty file has none.
QStringList PasswordStoreLines(const QByteArray& file);
// Reads the file into `nodes`: each line unsealed (a line that does not unseal
// shows the seal's message and is passed over) and given to agregalink. A missing
// or empty file leaves the tree empty, without a word.
void LoadPasswordStore(PswNodes& nodes);
// Writes every record, in collection order, to a temporary file beside the store
// and renames it over the old one, so a pulled drive leaves the previous store
// whole. False, after a message naming the file, when it could not be written.
bool SavePasswordStore(const PswNodes& nodes);
// The index of the record node of a selected node: the node itself when its Tag
// is "main", otherwise its parent (0 when there is none).
int RecordOf(const PswNodes& nodes, int index);

// Test hook: called once the temporary file is written, before the rename; false
// stops the save there, as a drive pulled out at that moment would.
extern std::function<bool(const QString& temporaryFile)> g_afterTemporaryStore;

} // namespace vmk::passwords
