// avupdate.exe: updates the signatures in "sigs" beside the program.
//   avupdate.exe --config=avupdate.conf --log=E:\UPDLOG.TXT
//   avupdate.exe --reindex      (writes idx/master.idx for the set in place)
// The panel builds its command line with no blank after the quoted program
// name, so an option can arrive glued to the program name: every argument,
// the first included, is searched for the options.
#include "UpdateConfig.h"
#include "UpdateLog.h"
#include "Updater.h"
#include "components/engine/EnginePath.h"

#include <QCoreApplication>
#include <QDir>

#include <cstdio>

namespace
{

QString optionValue(const QStringList& args, const QString& option)
{
    for (const QString& a : args) {
        const qsizetype at = a.indexOf(option);
        if (at >= 0)
            return a.mid(at + option.size()).trimmed();
    }
    return QString();
}

} // namespace

int main(int argc, char** argv)
{
    QCoreApplication app(argc, argv);
    const QStringList args = QCoreApplication::arguments();
    const QString folder = QCoreApplication::applicationDirPath();
    // The engine's scratch files and relative names resolve from the program folder.
    QDir::setCurrent(folder);

    using namespace vmk::avupdate;
    UpdateLog log;
    if (args.contains("--reindex")) {
        Updater updater(folder, log);
        QString error;
        if (!updater.writeIndex(error)) {
            std::fprintf(stderr, "avupdate: %s\n", error.toUtf8().constData());
            return 1;
        }
        return 0;
    }

    const QString logPath = optionValue(args, "--log=");
    const QString nativeLog
        = logPath.isEmpty() ? QDir(folder).filePath("UPDLOG.TXT") : vmk::engine::NativePathOf(logPath);
    if (!log.open(nativeLog))
        std::fprintf(stderr, "avupdate: cannot write the log %s\n", nativeLog.toUtf8().constData());
    log.line(QStringLiteral("avupdate started in %1").arg(folder));

    QString configName = optionValue(args, "--config=");
    if (configName.isEmpty())
        configName = QStringLiteral("avupdate.conf");
    QString error;
    const auto config = UpdateConfig::read(QDir(folder).absoluteFilePath(configName), error);
    if (!config) {
        log.line(QStringLiteral("Update error: ") + error);
        return 1;
    }
    Updater updater(folder, log);
    const Updater::Outcome outcome = updater.run(*config);
    return outcome == Updater::Failed ? 1 : 0;
}
