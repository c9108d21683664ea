#pragma once

#include "components/ftp/RemoteEntry.h"

#include <QByteArray>
#include <QByteArrayView>
#include <QDate>
#include <QList>

#include <optional>

// Readers of what a server sends for a folder: MLSD's machine format, and the
// free-form LIST of Unix-like servers ("-rw-r--r-- 1 u g 5 Nov 23 14:00 name")
// and of DOS-like ones ("11-23-26  02:15PM  <DIR>  name"). Every name comes
// back exactly as the server wrote it; "." and "..", empty names and names
// holding "/" are left out, as no operation could reach them.
namespace vmk::ftp::ListingParser
{

// One MLSD line ("type=file;size=5;modify=20261123140000; name").
std::optional<RemoteEntry> parseMlsdLine(QByteArrayView line);
// One LIST line in either format; nullopt for "total N" and lines of neither.
// `today` dates Unix lines that give a time instead of a year.
std::optional<RemoteEntry> parseListLine(QByteArrayView line, QDate today = QDate::currentDate());

// A whole reply, lines ended by CR LF or LF.
QList<RemoteEntry> parseMlsd(const QByteArray& listing);
QList<RemoteEntry> parseList(const QByteArray& listing, QDate today = QDate::currentDate());

} // namespace vmk::ftp::ListingParser
