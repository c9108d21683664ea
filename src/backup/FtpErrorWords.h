#pragma once

#include "components/ftp/FtpError.h"

#include <QString>

namespace vmk
{

// What an FTP failure says to the user: its translated words, then what only it
// can tell (the server's reason, or the refused certificate's fingerprint) after
// ": ". The screen and `vmk ftp` both word their failures so.
QString FtpErrorWords(const ftp::FtpError& error);

} // namespace vmk
