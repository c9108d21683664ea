// idx/master.idx, the index the updater writes and the panel reads back for the
// age of the signatures.
#include "FuzzSandbox.h"

#include "panel/SignatureDate.h"

#include <QDate>

#include <cstdint>

using namespace vmk;

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    fuzz::FuzzSandbox::init();
    fuzz::FuzzSandbox::writeDeviceFile(QStringLiteral("idx/master.idx"),
        QByteArray(reinterpret_cast<const char*>(data), static_cast<qsizetype>(size)));
    const QString caption
        = panel::SignatureDate::ReadSignatureDate(fuzz::FuzzSandbox::device() + QStringLiteral("/idx/master.idx"));
    // A caption that is no date (the digits as written) must read as no age.
    const QDate date = panel::SignatureDate::DateFromCaption(caption);
    if (!date.isValid() && panel::SignatureDate::DaysOld(caption, QDate(2026, 1, 1)) != -1)
        abort();
    panel::SignatureDate::NeedsUpdateWarning(caption, QDate(2026, 1, 1));
    return 0;
}
