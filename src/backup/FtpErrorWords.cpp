#include "backup/FtpErrorWords.h"

#include "foundation/Translate.h"

namespace vmk
{

QString FtpErrorWords(const ftp::FtpError& error)
{
    QString words = Translate(error.words());
    if (!error.detail().isEmpty())
        words += QStringLiteral(": ") + error.detail();
    return words;
}

} // namespace vmk
