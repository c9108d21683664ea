// QFP.txt, the quarantine ledger, as a user or another program may have left it
// beside the program. Each input is read, each sound line must survive being
// written and read again, and Restaura runs over it for one item whose sealed
// file is gone (the decrypt stage has a target of its own): nothing may come
// back, and the ledger must stay byte for byte.
#include "FuzzSandbox.h"

#include "filemanager/Restaura.h"
#include "foundation/Settings.h"
#include "scanner/QuarantineLedger.h"

#include <QFile>

#include <cstdint>
#include <cstdlib>

using namespace vmk;
using scanner::LedgerLine;
using scanner::QuarantineLedger;

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    fuzz::FuzzSandbox::init();
    fuzz::FuzzSandbox::clearDevice();
    S().QuarenteneFolder = QStringLiteral("\\Cuarentena\\");
    const QByteArray bytes(reinterpret_cast<const char*>(data), static_cast<qsizetype>(size));
    fuzz::FuzzSandbox::writeDeviceFile(QStringLiteral("QFP.txt"), bytes);
    fuzz::FuzzSandbox::writeDeviceFile(QStringLiteral("Cuarentena/other.bin"), "another item");
    fuzz::FuzzSandbox::writeDeviceFile(QStringLiteral("Docs/keep.txt"), "k");

    const QList<LedgerLine> parsed = QuarantineLedger::parse(bytes);
    const auto read = QuarantineLedger::read();
    if (!read || read->size() != parsed.size())
        abort();
    for (const LedgerLine& line : parsed) {
        if (!line.sound())
            continue;
        const QList<LedgerLine> again = QuarantineLedger::parse(QuarantineLedger::lineFor(line.Name, line.Folder));
        if (again.size() != 1 || again[0].Name != line.Name || again[0].Folder != line.Folder || !again[0].sound())
            abort();
    }
    const RestoreOutcome outcome = Restaura(QStringLiteral("|E:\\Cuarentena\\a.bin"));
    if (outcome.Restored != 0)
        abort();
    QFile ledger(QuarantineLedger::ledgerPath());
    if (!ledger.open(QIODevice::ReadOnly) || ledger.readAll() != bytes)
        abort();
    return 0;
}
