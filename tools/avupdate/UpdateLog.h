#pragma once

#include <QFile>
#include <QString>

namespace vmk::avupdate
{

// UPDLOG.TXT: one dated line per step, CR LF, rewritten at each run. The last
// line of a run is exactly "Update finished" or "Nothing to update" after the
// date when it succeeded (exit status 0), and "Update error: <reason>" when it
// failed (exit status 1); the panel judges the exit status and that line.
class UpdateLog
{
public:
    bool open(const QString& nativePath);
    void line(const QString& text);

private:
    QFile m_file;
};

} // namespace vmk::avupdate
