#include "backup/ArchiveRestore.h"

#include "components/zip/ZipArchiver.h"
#include "components/zip/ZipCodes.h"

#include <optional>
#include <utility>

namespace vmk
{

namespace
{
// Puts a handler back as it was when the call ends, however it ends.
template<class Handler> class HandlerSwap
{
public:
    HandlerSwap(Handler& slot, Handler replacement)
        : m_slot(slot)
        , m_saved(std::exchange(slot, std::move(replacement)))
    {
    }
    ~HandlerSwap() { m_slot = std::move(m_saved); }
    HandlerSwap(const HandlerSwap&) = delete;
    HandlerSwap& operator=(const HandlerSwap&) = delete;
    const Handler& saved() const { return m_saved; }

private:
    Handler& m_slot;
    Handler m_saved;
};
} // namespace

ArchiveRestore::ArchiveRestore(zip::ZipArchiver& zipControl)
    : m_zip(zipControl)
{
}

int ArchiveRestore::ListArchive(const QString& archive, QList<RestoreRow>& rows)
{
    rows.clear();
    m_zip.setAbort(false);
    m_zip.setFilesToExclude(QString());
    m_zip.setFilesToProcess(QString());
    m_zip.setArchiveName(archive);
    using Listing = decltype(m_zip.events().listingFile);
    HandlerSwap<Listing> listing(m_zip.events().listingFile, [&rows](const QString& storedName, qint64 size) {
        if (!storedName.endsWith('\\'))
            rows << RestoreRow::FromStoredName(storedName, size);
    });
    const int result = m_zip.listArchive();
    if (result != zip::ZipOk)
        rows.clear();
    return result;
}

void ArchiveRestore::UnzipPreprocessingFile(
    const QString& altRestoreFolder, const QString& storedName, QString& destination)
{
    if (altRestoreFolder.isEmpty())
        return;
    const QString name = storedName.endsWith('\\') ? storedName.chopped(1) : storedName;
    destination = altRestoreFolder + name.split('\\').last();
}

ArchiveRestore::Outcome ArchiveRestore::Restore(
    const QString& archive, const QStringList& checkedKeys, const QString& altRestoreFolder)
{
    Outcome outcome;
    m_altRestoreFolder = altRestoreFolder;
    if (!m_altRestoreFolder.isEmpty() && !m_altRestoreFolder.endsWith('\\'))
        m_altRestoreFolder += '\\';
    m_zip.setArchiveName(archive);
    m_zip.setFilesToProcess(QString());
    m_zip.setFilesToExclude(QString());
    for (const QString& key : checkedKeys) {
        // The alternative route drops the folders, so a folder entry has nothing to give.
        if (!(key.endsWith('\\') && !m_altRestoreFolder.isEmpty()))
            m_zip.addFileToProcess(key);
    }
    if (m_zip.filesToProcess().isEmpty()) {
        outcome.result = zip::ZipNothingToDo;
        return outcome;
    }
    // The chosen folder is the one every entry is written beneath; on the default
    // route each entry is written beneath the root of its own drive.
    m_zip.setExtractFolder(m_altRestoreFolder);

    // An entry that reached its destination event is written unless a skip for it
    // follows before the next entry begins.
    std::optional<Restored> pending;
    using Destination = decltype(m_zip.events().unzipPreprocessingFile);
    using Skipping = decltype(m_zip.events().skippingFile);
    const QString folder = m_altRestoreFolder;
    HandlerSwap<Destination> destinations(m_zip.events().unzipPreprocessingFile,
        [&outcome, &pending, folder](const QString& storedName, QString& destination) {
            if (pending)
                outcome.restored << *pending;
            UnzipPreprocessingFile(folder, storedName, destination);
            pending = Restored { storedName, destination };
        });
    Skipping& skipSlot = m_zip.events().skippingFile;
    HandlerSwap<Skipping> skips(skipSlot, Skipping());
    const Skipping& owners = skips.saved();
    skipSlot = [&outcome, &pending, &owners](const QString& name, int reason) {
        outcome.refused << Refusal { name, reason };
        if (pending && pending->entry == name)
            pending.reset();
        if (owners)
            owners(name, reason);
    };
    outcome.result = m_zip.extract();
    // After an abort the last entry begun is not counted: it may have been cancelled half-way.
    if (pending && outcome.result != zip::ZipAborted)
        outcome.restored << *pending;
    return outcome;
}

} // namespace vmk
