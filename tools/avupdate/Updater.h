#pragma once

#include "UpdateConfig.h"
#include "UpdateLog.h"

#include <QString>

namespace vmk::avupdate
{

// Fetches newer signature files, proves that the new set loads in the engine,
// and only then swaps it in for "sigs" and rewrites "idx/master.idx". Any
// failure, or an interruption at any point, leaves the old set working: the new
// set is built in "sigs.new" and the swap is two renames that a later run
// completes or undoes.
class Updater
{
public:
    enum Outcome { Updated, NothingNew, Failed };

    Updater(const QString& programFolder, UpdateLog& log);

    Outcome run(const UpdateConfig& config);
    // Writes idx/master.idx for the set in "sigs"; the first line reads
    // "Signatures=" date "_" version "_" signature count.
    bool writeIndex(QString& error);

private:
    QString path(const QString& name) const;
    void recoverInterruptedSwap();
    Outcome fail(const QString& reason);

    QString m_folder;
    UpdateLog& m_log;
};

} // namespace vmk::avupdate
