#pragma once

#include <QFile>
#include <QString>

namespace vmk::avupdate
{

// UPDLOG.TXT: one dated line per step, CR LF, rewritten at each run. The panel
// judges only the last line ("Update finished", "Nothing to update", "error").
class UpdateLog
{
public:
    bool open(const QString& nativePath);
    void line(const QString& text);

private:
    QFile m_file;
};

} // namespace vmk::avupdate
