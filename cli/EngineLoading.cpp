#include "EngineLoading.h"

#include "CliFailure.h"
#include "CommandLine.h"
#include "ErrorWords.h"

#include "components/engine/Engine.h"
#include "components/engine/EngineCode.h"
#include "components/engine/EngineService.h"

#include <QCoreApplication>
#include <QDir>
#include <QFileInfo>

void loadEngine(const QString& dbArg)
{
    const QString folder = dbArg.isEmpty()
        ? QDir(QCoreApplication::applicationDirPath()).filePath(QStringLiteral("sigs"))
        : CommandLine::hostPath(dbArg);
    const QString named = dbArg.isEmpty() ? folder : dbArg;
    vmk::engine::EngineService::instance().setSignatureFolder(folder);
    const int code = vmk::engine::LoadEngine();
    if (code == 0)
        return;
    if (code == vmk::engine::SignaturesMissing && !QFileInfo(folder).isDir())
        throw CliFailure(named, QStringLiteral("no existe la carpeta de firmas"), code);
    if (code == vmk::engine::TempFolderUnusable)
        throw CliFailure(QDir::tempPath(), ErrorWords::engine(code), code);
    throw CliFailure(named, ErrorWords::engine(code), code);
}
