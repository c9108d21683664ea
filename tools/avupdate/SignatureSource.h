#pragma once

#include <QString>

namespace vmk::avupdate
{

// One place new signature files come from: a folder, or an http:// or ftp://
// address of a folder (through libcurl).
class SignatureSource
{
public:
    SignatureSource(const QString& location, const QString& programFolder, int timeoutSeconds);

    enum Result { Fetched, Missing, Failed };
    // Copies file `name` of the source to `destination`; `error` says why on Failed.
    Result fetch(const QString& name, const QString& destination, QString& error) const;
    QString location() const { return m_location; }

private:
    QString m_location;
    QString m_programFolder;
    int m_timeout;
};

} // namespace vmk::avupdate
