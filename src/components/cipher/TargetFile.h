#pragma once

#include "components/cipher/CipherError.h"

#include <QFile>
#include <QString>
#include <QTemporaryFile>

namespace vmk::cipher
{

// The output of one file operation: written to a temporary file beside the target
// and renamed over it only by commit(), so a failed or abandoned operation leaves
// no target and an existing target untouched. Unlike QSaveFile it does not force
// the data to disk before the rename: a sealed gigabyte would otherwise wait for
// the whole device write at every file.
class TargetFile
{
public:
    explicit TargetFile(const QString& target);
    bool open();
    qint64 write(const char* data, qint64 len)
    {
        m_lastWrite = len;
        return m_temp.write(data, len);
    }
    // Overwrites bytes already written (a header known only at the end) and goes
    // back to the end.
    bool rewrite(qint64 pos, const char* data, qint64 len);
    bool commit();
    // Why a write, rewrite or commit failed: a full disk, or any other failure.
    CipherError failure() const;

private:
    QString m_target;
    QTemporaryFile m_temp;
    qint64 m_lastWrite = 0;
};

} // namespace vmk::cipher
