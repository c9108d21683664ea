#pragma once

#include <QString>
#include <QStringList>

#include <optional>

namespace vmk::avupdate
{

// avupdate.conf: "key=value" lines, "#" comments; keys source (repeatable),
// files (blank-separated names) and timeout (seconds).
struct UpdateConfig {
    QStringList sources;
    QStringList files;
    int timeoutSeconds = 60;

    static std::optional<UpdateConfig> read(const QString& path, QString& error);
};

} // namespace vmk::avupdate
